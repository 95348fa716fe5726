// Direct FIR loops as a programmer blocks them by hand, for the widest level alone, fused operations allowed.
#ifndef QVR_BENCH_FIR_PEERS_H
#define QVR_BENCH_FIR_PEERS_H

namespace bench {

// y[i] = sum over k below L of reversed[k] x[i + k], for i below n.
void blockedFir(const float* x, float* y, int n, const float* reversed, int L);
void blockedFir(const double* x, double* y, int n, const double* reversed, int L);

// One polyphase rate change from a fresh start: phases of taps laid out beforehand, phase q in row q of K.
void polyphase(const float* x, float* y, int outputs, const double* phases, int K, int up, int down);
void polyphase(const short* x, short* y, int outputs, const float* phases, int K, int up, int down, float scale);

} // namespace bench

#endif
