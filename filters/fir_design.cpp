// Windowed-sinc design of low-pass, high-pass, band-pass and band-stop taps.
//
// With n taps and h = n / 2, the first half is taps[h - 1 - i] at m = i + 1 for odd n and m = i + 0.5 for even n; odd n
// has a centre tap between the halves. s(f) = sin(2 pi f m):
//
//               centre               odd n                      even n
//   low-pass    2 f                  s(f) / (pi m)              s(f) / (pi m)
//   high-pass   1 - 2 f              -s(f) / (pi m)             cos(2 pi f m) / (pi m)
//   band-pass   2 (fh - fl)          (s(fh) - s(fl)) / (pi m)   (s(fh) - s(fl)) / (pi m)
//   band-stop   1 - 2 (fh - fl)      (s(fl) - s(fh)) / (pi m)   ((-1)^i + s(fl) - s(fh)) / (pi m)
//
// The other half mirrors it, with the sign changed in the high-pass of even n.
#include "filters/fir.h"
#include "filters/functions.h"
#include "fourier/sines.h"
#include "frame/memory.h"

namespace {

constexpr double kPi = 3.14159265358979323846;

enum class Band { low, high, pass, stop };

struct Design {
    Band band;
    Index n, h;
    bool odd;
    double low, high; // edges; low-pass and high-pass have one in `low`

    double at(Index i) const { return static_cast<double>(i) + (odd ? 1.0 : 0.5); }
    bool twoEdges() const { return band == Band::pass || band == Band::stop; }
};

// The waves of the design in the work vectors: of the edge `low`, and of `high` where there are two.
void layOutWaves(const Design& d, double* lowWave, double* highWave)
{
    const bool cosine = d.band == Band::high && !d.odd;
    for (Index i = 0; i < d.h; i++) {
        const double angle = 2 * kPi * d.low * d.at(i);
        lowWave[i] = cosine ? qvrCosine(angle) : qvrSine(angle);
        if (d.twoEdges())
            highWave[i] = qvrSine(2 * kPi * d.high * d.at(i));
    }
}

double idealTap(const Design& d, Index i, const double* lowWave, const double* highWave)
{
    const double over = kPi * d.at(i);
    switch (d.band) {
    case Band::low:
        return lowWave[i] / over;
    case Band::high:
        return (d.odd ? -lowWave[i] : lowWave[i]) / over;
    case Band::pass:
        return (highWave[i] - lowWave[i]) / over;
    default:
        return ((d.odd ? 0.0 : i % 2 == 0 ? 1.0 : -1.0) + lowWave[i] - highWave[i]) / over;
    }
}

double idealCentre(const Design& d)
{
    switch (d.band) {
    case Band::low:
        return 2 * d.low;
    case Band::high:
        return 1 - 2 * d.low;
    case Band::pass:
        return 2 * (d.high - d.low);
    default:
        return 1 - 2 * (d.high - d.low);
    }
}

// The weight of tap i in the first half; the centre has none. Unknown windows are rectangular.
double weight(int window, Index i, Index n)
{
    const double last = static_cast<double>(n - 1), x = static_cast<double>(i);
    if (window == qvrFirBartlett)
        return x * (2 / last);
    const double w = 2 * kPi * x / last;
    if (window == qvrFirBlackman) {
        const double root = 0.5 / qvrCosine(kPi / last), alpha = -(root * root);
        return (alpha + 1) / 2 - 0.5 * qvrCosine(w) - alpha / 2 * qvrCosine(2 * w);
    }
    if (window == qvrFirHamming)
        return 0.54 - 0.46 * qvrCosine(w);
    return window == qvrFirHann ? 0.5 - 0.5 * qvrCosine(w) : 1;
}

// The gain at the reference frequency: 0 for low-pass and band-stop, 0.5 for high-pass, the middle of a band-pass.
double gain(const Design& d, const double* taps)
{
    double sum = 0;
    for (Index i = 0; i < d.h; i++) {
        if (d.band == Band::high)
            sum += i % 2 == 0 ? -taps[i] : taps[i];
        else if (d.band == Band::pass)
            sum += taps[d.h - 1 - i] * qvrCosine(2 * kPi * ((d.low + d.high) / 2) * d.at(i));
        else
            sum += taps[i];
    }
    const double centre = d.odd ? taps[d.h] : 0;
    const double whole = 2 * sum + (d.band == Band::high && d.h % 2 == 0 ? -centre : centre);
    return whole < 0 ? -whole : whole;
}

bool outside(double f)
{
    return f <= 0 || f >= 0.5;
}

qvrStatus design(double* taps, int tapsLen, int window, int normalize, Band band, double low, double high)
{
    if (taps == nullptr)
        return qvrErrNullPointer;
    const Design d = {band, tapsLen, tapsLen / 2, tapsLen % 2 != 0, low, high};
    if (tapsLen < 5 || outside(low) || (d.twoEdges() && (outside(high) || low >= high)))
        return qvrErrBadSize;
    // A half of taps and a wave or two; where they cannot be had, the status is that of a null pointer.
    const int work = static_cast<int>(d.h) + 1;
    const Index bytes = Index{work} * 8;
    double* lowWave = bytes <= INT32_MAX ? allocate<double>(work) : nullptr;
    double* highWave = lowWave != nullptr && d.twoEdges() ? allocate<double>(work) : nullptr;
    if (lowWave == nullptr || (d.twoEdges() && highWave == nullptr)) {
        release(lowWave);
        return qvrErrNullPointer;
    }
    layOutWaves(d, lowWave, highWave);
    // The first half is made in the work vector behind the waves that it no longer needs: the caller's array may start
    // at any byte.
    double* half = lowWave;
    for (Index i = 0; i < d.h; i++)
        half[i] = idealTap(d, i, lowWave, highWave);
    for (Index i = 0; 2 * i < d.h - 1; i++) {
        const double t = half[i];
        half[i] = half[d.h - 1 - i];
        half[d.h - 1 - i] = t;
    }
    for (Index i = 0; i < d.h; i++)
        half[i] *= weight(window, i, d.n);
    if (d.odd)
        half[d.h] = idealCentre(d);
    if (normalize != 0) {
        const double factor = 1 / gain(d, half);
        for (Index i = 0; i < (d.n + 1) / 2; i++)
            half[i] *= factor;
    }
    const bool antisymmetric = band == Band::high && !d.odd;
    for (Index i = 0; i < d.h; i++) {
        put(taps, i, half[i]);
        put(taps, d.n - 1 - i, antisymmetric ? -half[i] : half[i]);
    }
    if (d.odd)
        put(taps, d.h, half[d.h]);
    release(highWave);
    release(lowWave);
    return qvrOk;
}

} // namespace

extern "C" {

qvrStatus SLOT(qvrsFIRGenLowpass_64f)(qvr64f* taps, int tapsLen, int windowType, int normalize, qvr64f rFreq)
{
    return design(taps, tapsLen, windowType, normalize, Band::low, rFreq, 0);
}

qvrStatus SLOT(qvrsFIRGenHighpass_64f)(qvr64f* taps, int tapsLen, int windowType, int normalize, qvr64f rFreq)
{
    return design(taps, tapsLen, windowType, normalize, Band::high, rFreq, 0);
}

qvrStatus SLOT(qvrsFIRGenBandpass_64f)(qvr64f* taps, int tapsLen, int windowType, int normalize, qvr64f rLowFreq,
                                       qvr64f rHighFreq)
{
    return design(taps, tapsLen, windowType, normalize, Band::pass, rLowFreq, rHighFreq);
}

qvrStatus SLOT(qvrsFIRGenBandstop_64f)(qvr64f* taps, int tapsLen, int windowType, int normalize, qvr64f rLowFreq,
                                       qvr64f rHighFreq)
{
    return design(taps, tapsLen, windowType, normalize, Band::stop, rLowFreq, rHighFreq);
}

} // extern "C"
