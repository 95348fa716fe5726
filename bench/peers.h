// Peers that are functions with the prototype of an export: plain loops, compiled for each slot's level, and wrappers
// of header libraries. Each is found by the export's name; a variant of a peer has a suffix behind a slash.
#ifndef QVR_BENCH_PEERS_H
#define QVR_BENCH_PEERS_H

#include "bench/bench.h"

namespace bench {

struct PeerFunction {
    const char* name; // null ends a table
    void (*function)();
};

// The plain loop for the level of the slot in force, or null.
void (*findPlain(const std::string& name))();
// The wrapper of Eigen, or null. Eigen's code is inline and may exist once only, so it is compiled for the widest level
// and a peer of that slot alone.
void (*findEigen(const std::string& name))();

// Whether the slot in force is what this machine chooses, so that peers that choose by the machine may join.
bool ownSlot();
extern int chosenSlot; // set at the start of main, before any option changes the slot

// Calls visit(peer's name, name of the function it stands beside) for every table entry.
void visitPeerFunctions(const std::function<void(const char*, const char*)>& visit);

// Highway's sort, where it is installed; held to AVX2.
void sortByHighway(float* p, int n);
void sortByHighway(double* p, int n);

} // namespace bench

// One entry of a peer table; the peer is a function of that name with the export's prototype.
#define QVR_PEER(name)                                                                                                 \
    bench::PeerFunction                                                                                                \
    {                                                                                                                  \
        #name, reinterpret_cast<void (*)()>(static_cast<decltype(&Morven_##name)>(name))                               \
    }

// The same by the model of that name.
#define QVR_MODEL(name)                                                                                                \
    bench::PeerFunction                                                                                                \
    {                                                                                                                  \
        #name, reinterpret_cast<void (*)()>(static_cast<decltype(&Morven_##name)>(model::name))                        \
    }

#define QVR_PEER_PASTE2(a, b) a##b
#define QVR_PEER_PASTE(a, b) QVR_PEER_PASTE2(a, b)

#endif
