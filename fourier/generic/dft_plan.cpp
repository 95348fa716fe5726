// Objects of the transforms of any length: factors, stages, tables.
//
// Factored lengths are mixed-radix transforms (Singleton, IEEE Trans. Audio Electroacoust. 17, 1969); lengths with a
// large prime factor are convolutions with a chirp (Bluestein, IEEE Trans. Audio Electroacoust. 18, 1970).
#include "fourier/functions.h"
#include "fourier/generic/dft.h"
#include "fourier/quarter.h"
#include "frame/memory.h"
#include "frame/status.h"

namespace {

constexpr int W = kLanes<float>;

// Lengths that the chirp form transforms by; above them, powers of two.
constexpr int16_t kGoodLengths[] = {128,  144,  160,  192,  200,  256,  288,  320,  384,  400,  512,
                                    576,  640,  768,  800,  1024, 1152, 1280, 1536, 1600, 2048, 2304,
                                    2560, 3072, 3200, 4096, 4608, 5120, 6144, 6400, 8192};

int64_t goodLength(int64_t least)
{
    for (const int16_t good : kGoodLengths)
        if (good >= least)
            return good;
    int64_t power = 8192;
    while (power < least)
        power *= 2;
    return power;
}

int orderOf(int64_t power)
{
    return __builtin_ctzll(static_cast<uint64_t>(power));
}

float* allocateTable(int64_t floats)
{
    return floats * 4 <= INT32_MAX ? allocate<float>(static_cast<int>(floats)) : nullptr;
}

// exp(-2 pi i k / n), k = 0 .. n - 1, each from a sine and a cosine of its own.
float* makeRoots(int64_t n)
{
    float* roots = allocateTable(2 * n);
    if (roots == nullptr)
        return nullptr;
    const double h = kTwoPi / static_cast<double>(n);
    for (int64_t k = 0; k < n; k++) {
        roots[2 * k] = static_cast<float>(qvrCosine(static_cast<double>(k) * h));
        roots[2 * k + 1] = static_cast<float>(-qvrSine(static_cast<double>(k) * h));
    }
    return roots;
}

// ---- Factors and stages ---------------------------------------------------------------------------------------------

// Fours and a two first, then odd factors while they are worth a search; whether the rest is small enough to be the
// last one.
bool factorise(qvrsDFTSpec& spec)
{
    int32_t rest = spec.points, count = 0;
    const auto add = [&](int32_t f) { spec.factors[count++] = {f, nullptr, nullptr}; };
    const int twos = __builtin_ctz(static_cast<uint32_t>(rest));
    rest >>= twos;
    if (twos % 2 != 0)
        add(2);
    for (int i = 0; i < twos / 2; i++)
        add(4);
    if (rest >= 9)
        for (int32_t f = 3; f * f <= rest && f <= kFactorMost; f += 2)
            while (rest % f == 0) {
                add(f);
                rest /= f;
            }
    if (count == 0 || rest > kFactorMost)
        return false;
    if (rest > 1)
        add(rest);
    spec.lastFactorIndex = count - 1;
    return true;
}

struct Counts {
    int of[kFactorMost + 1];

    // The factors of a composite radix, if they are all there.
    bool has(int radix) const
    {
        Counts need = {};
        split(radix, need);
        for (int f = 2; f <= kFactorMost; f++)
            if (need.of[f] > of[f])
                return false;
        return true;
    }
    void remove(int radix)
    {
        Counts need = {};
        split(radix, need);
        for (int f = 2; f <= kFactorMost; f++)
            of[f] -= need.of[f];
    }
    static void split(int radix, Counts& need)
    {
        for (; radix % 4 == 0; radix /= 4)
            need.of[4]++;
        for (int f = 2; f <= kFactorMost && radix > 1; f++)
            for (; radix % f == 0; radix /= f)
                need.of[f]++;
    }
};

Counts countsOf(const qvrsDFTSpec& spec)
{
    Counts counts = {};
    for (int i = 0; i <= spec.lastFactorIndex; i++)
        counts.of[spec.factors[i].factor]++;
    return counts;
}

// Results of a first stage that are kept.
int columnsOf(const qvrsDFTSpec& spec, int first)
{
    return spec.odd ? (first + 1) / 2 : first;
}

// The first stage gets the factors that fill vectors of so many lanes best.
int firstRadix(const qvrsDFTSpec& spec, const Counts& counts, int lanes)
{
    int first = 0;
    double best = 0;
    for (int radix = 5; radix <= kFactorMost; radix++) {
        const bool single = counts.of[radix] > 0 && radix % 2 != 0;
        if (radix >= spec.points || !(single || (firstKernel(radix) && counts.has(radix))))
            continue;
        if (spec.odd && radix % 2 == 0)
            continue;
        const int columns = columnsOf(spec, radix), rows = spec.points / radix;
        const double filled = static_cast<double>(columns) / qvrAlignUp(columns, lanes);
        // Fewer rows than lanes leave some empty. A radix without a kernel costs about its own square.
        const double worth = filled * (rows < lanes ? rows : lanes) / (firstKernel(radix) ? 1 : 4);
        if (worth >= best) {
            best = worth;
            first = radix;
        }
    }
    return first;
}

// Bytes that a factored plan works in: four arrays of rows of whole vectors.
int64_t factoredWork(const qvrsDFTSpec& spec, int first, int lanes)
{
    return spec.points / first * qvrAlignUp(columnsOf(spec, first), lanes) * int64_t{16} + 64;
}

// The other stages get what saves passes.
void planStages(qvrsDFTSpec& spec)
{
    Counts counts = countsOf(spec);
    const int first = firstRadix(spec, counts, W);
    counts.remove(first);
    spec.columns = columnsOf(spec, first);
    spec.pitch = qvrAlignUp(spec.columns, W);
    spec.stages[spec.stageCount++].radix = first;
    const auto stage = [&](int radix) {
        counts.remove(radix);
        spec.stages[spec.stageCount++].radix = radix;
    };
    for (int f = kFactorMost; f >= 5; f--)
        while (counts.of[f] > 0)
            stage(f);
    while (counts.of[3] > 1)
        stage(9);
    if (counts.of[3] > 0 && counts.of[2] > 0)
        stage(6);
    if (counts.of[4] > 0 && counts.of[2] > 0)
        stage(8);
    while (counts.of[4] > 0)
        stage(4);
    if (counts.of[3] > 0)
        stage(3);
    if (counts.of[2] > 0)
        stage(2);
}

// Twiddles of all stages from the roots of `points`.
bool makeStages(qvrsDFTSpec& spec, const float* roots)
{
    const int64_t n = spec.points;
    const auto root = [&](int64_t k, int64_t of, float* to, int64_t imAt, float scale) {
        const float* r = roots + 2 * (k % of * (n / of));
        to[0] = scale * r[0];
        to[imAt] = scale * r[1];
    };
    int64_t left = n;
    for (int i = 0; i < spec.stageCount; i++) {
        DftStage& stage = spec.stages[i];
        const int R = stage.radix;
        const int64_t legs = left / R;
        const int64_t results = i == 0 ? spec.columns : R;
        float* tw = allocateTable(i == 0 ? groupsOf(legs) * 2 * W * (results - 1) : legs * 2 * (results - 1));
        stage.twiddle = tw;
        spec.factors[i].pTwiddle = tw;
        if (tw == nullptr)
            return false;
        if (i == 0) {
            // The real form halves its results here.
            const float scale = spec.odd ? 0.5f : 1.0f;
            for (int64_t g = 0; g < groupsOf(legs); g++)
                for (int64_t k = 1; k < results; k++, tw += 2 * W)
                    for (int l = 0; l < W; l++)
                        root((groupStart(g, legs) + l) * k, left, tw + l, W, scale);
        } else {
            for (int64_t p = 0; p < legs; p++)
                for (int64_t k = 1; k < results; k++, tw += 2)
                    root(p * k, left, tw, 1, 1.0f);
        }
        if (i == 0 ? !firstKernel(R) : !laterKernel(R)) {
            float* own = allocateTable(2 * R);
            stage.roots = own;
            spec.factors[i].pRoots = own;
            if (own == nullptr)
                return false;
            for (int k = 0; k < R; k++)
                root(k, R, own + 2 * k, 1, 1.0f);
        }
        left = legs;
    }
    return true;
}

// ---- Forms ----------------------------------------------------------------------------------------------------------

// cos and sin of 2 pi j k / n, rows j = 1 .. h of k = 1 .. h, h = (n - 1) / 2; each row padded to whole vectors.
bool makeDirect(qvrsDFTSpec& spec, const float* roots)
{
    const int n = spec.points, h = (n - 1) / 2, pitch = qvrAlignUp(h, W);
    float* table = spec.pDirectTable = allocateTable(int64_t{2} * h * pitch);
    if (table == nullptr)
        return false;
    for (int j = 1; j <= h; j++, table += 2 * pitch)
        for (int k = 0; k < pitch; k++) {
            const float* r = roots + 2 * (j * (k + 1) % n);
            table[k] = k < h ? r[0] : 0;
            table[pitch + k] = k < h ? -r[1] : 0;
        }
    return true;
}

qvrStatus makeChirp(qvrsDFTSpec& spec)
{
    const int64_t n = spec.points, length = goodLength(2 * n - 1);
    if (const qvrStatus status =
            SLOT(ownqvrsDFTInitAlloc_C_32fc)(&spec.pInnerDFT, static_cast<int>(length), qvrFftNoDiv, qvrHintNone))
        return status;
    float* chirp = spec.pChirp = allocateTable(2 * n);
    float* spectrum = spec.pChirpSpectrum = allocateTable(2 * length);
    if (chirp == nullptr || spectrum == nullptr)
        return qvrErrNoMemory;
    __builtin_memset(spectrum, 0, static_cast<size_t>(length) * 8);
    const double h = kTwoPi / static_cast<double>(2 * n);
    const float scale = 1.0f / static_cast<float>(length);
    // k k mod 2n, by differences.
    for (int64_t k = 0, square = 0; k < n; k++) {
        const double angle = static_cast<double>(square) * h;
        chirp[2 * k] = static_cast<float>(qvrCosine(angle));
        chirp[2 * k + 1] = static_cast<float>(-qvrSine(angle));
        const int64_t mirror = k == 0 ? 0 : length - k;
        spectrum[2 * k] = spectrum[2 * mirror] = chirp[2 * k];
        spectrum[2 * k + 1] = spectrum[2 * mirror + 1] = -chirp[2 * k + 1];
        square += 2 * k + 1;
        square %= 2 * n;
    }
    if (const qvrStatus status = SLOT(ownqvrsDFTFwd_CToC_32fc)(spectrum, spectrum, spec.pInnerDFT, nullptr))
        return status;
    for (int64_t i = 0; i < 2 * length; i++)
        spectrum[i] *= scale;
    const int64_t work = 8 * length + 64 + spec.pInnerDFT->workSize;
    if (work > INT32_MAX)
        return qvrErrNoMemory;
    spec.workSize = static_cast<int32_t>(work);
    return qvrOk;
}

bool makeRecombination(qvrsDFTSpec& spec)
{
    const int64_t half = spec.len / 2, entries = (half + 1) / 2;
    float *fwd = spec.pRecombFwd = allocateTable(2 * entries), *inv = spec.pRecombInv = allocateTable(2 * entries);
    if (fwd == nullptr || inv == nullptr)
        return false;
    const double h = kTwoPi / static_cast<double>(spec.len);
    for (int64_t k = 0; k < entries; k++) {
        const double c = qvrCosine(static_cast<double>(k) * h), s = qvrSine(static_cast<double>(k) * h);
        fwd[2 * k] = static_cast<float>(0.5 * c);
        fwd[2 * k + 1] = static_cast<float>(0.5 - 0.5 * s);
        inv[2 * k] = static_cast<float>(c);
        inv[2 * k + 1] = static_cast<float>(-s);
    }
    return true;
}

// The real object runs half of an even length.
void setLength(qvrsDFTSpec& spec, int len, bool real)
{
    spec.len = len;
    spec.odd = real && len % 2 != 0;
    spec.points = real && len % 2 == 0 ? len / 2 : len;
}

bool isPower(int len)
{
    return (len & (len - 1)) == 0;
}

int directMost(const qvrsDFTSpec& spec)
{
    return spec.odd ? kDirectMostOddReal : kDirectMost;
}

// What a length that is no power of two fails by, found before anything is made. A factored one is refused on every
// slot alike if its work memory would pass 31 bits on any, with four lanes or with eight.
qvrStatus judge(int len, bool real)
{
    qvrsDFTSpec spec = {};
    setLength(spec, len, real);
    if (len > kLengthMost)
        return qvrErrBadSize;
    if (spec.points <= kStraightMost)
        return qvrOk;
    if (!factorise(spec))
        return spec.points <= kChirpMost ? qvrOk : qvrErrBadSize;
    const Counts counts = countsOf(spec);
    const auto fits = [&](int lanes) {
        return factoredWork(spec, firstRadix(spec, counts, lanes), lanes) <= INT32_MAX;
    };
    return fits(4) && fits(8) ? qvrOk : qvrErrNoMemory;
}

qvrStatus makePlan(qvrsDFTSpec& spec)
{
    if (spec.points <= kStraightMost)
        return qvrOk;
    const bool factored = factorise(spec);
    if (!factored && spec.points > directMost(spec))
        return makeChirp(spec);
    float* roots = makeRoots(spec.points);
    if (roots == nullptr)
        return qvrErrNoMemory;
    bool made;
    int64_t work;
    if (factored) {
        spec.isFactored = 1;
        planStages(spec);
        made = makeStages(spec, roots);
        work = factoredWork(spec, spec.stages[0].radix, W);
    } else {
        made = makeDirect(spec, roots);
        work = int64_t{8} * spec.points + 64;
    }
    release(roots);
    if (!made || work > INT32_MAX)
        return qvrErrNoMemory;
    spec.workSize = static_cast<int32_t>(work);
    return qvrOk;
}

qvrStatus makePower(qvrsDFTSpec& spec, bool real, int flag)
{
    spec.isPow2 = 1;
    // A complex transform is the inner one of twice the real length.
    const int order = orderOf(spec.len) + (real ? 0 : 1);
    if (const qvrStatus status = SLOT(qvrsFFTInitAlloc_R_32f)(&spec.pPow2Spec, order, flag, spec.hint))
        return status;
    int32_t size;
    SLOT(ownqvrsFFTGetBufSize_R_32f)(spec.pPow2Spec, &size);
    spec.workSize = size;
    return qvrOk;
}

void freeAll(qvrsDFTSpec* spec)
{
    spec->tag = 0;
    if (spec->pPow2Spec != nullptr)
        SLOT(qvrsFFTFree_R_32f)(spec->pPow2Spec);
    if (spec->pInnerDFT != nullptr)
        freeAll(spec->pInnerDFT);
    for (const DftFactor& factor : spec->factors) {
        release(factor.pTwiddle);
        release(factor.pRoots);
    }
    release(spec->pDirectTable);
    release(spec->pRecombFwd);
    release(spec->pRecombInv);
    release(spec->pChirp);
    release(spec->pChirpSpectrum);
    release(spec);
}

// 1/n, or the root of it by the processor's estimate and one Newton step.
float normalisation(int len, int flag)
{
    const float n = static_cast<float>(len);
    if (flag == qvrFftNoDiv)
        return 0;
    if (flag != qvrFftDivBySqrtN)
        return 1.0f / n;
    const float r = reciprocalRootEstimate(n);
    return (r * -0.5f) * ((n * r) * r - 3.0f);
}

qvrStatus initAlloc(qvrsDFTSpec** ppSpec, int len, int flag, int hint, bool real)
{
    if (ppSpec == nullptr)
        return qvrErrNullPointer;
    if (len < 1)
        return qvrErrBadSize;
    qvrsDFTSpec* spec = reinterpret_cast<qvrsDFTSpec*>(allocate<char>(sizeof(qvrsDFTSpec)));
    if (spec == nullptr)
        return qvrErrNoMemory;
    *spec = {};
    spec->tag = real ? kTagDftReal : kTagDftComplex;
    spec->len = spec->points = len;
    spec->hint = hint;
    qvrStatus status = qvrOk;
    if (flag != qvrFftNoDiv && flag != qvrFftDivBySqrtN && flag != qvrFftDivFwdByN && flag != qvrFftDivInvByN) {
        status = qvrErrFFTFlag;
    } else {
        spec->doFwdScale = flag == qvrFftDivFwdByN || flag == qvrFftDivBySqrtN;
        spec->doInvScale = flag == qvrFftDivInvByN || flag == qvrFftDivBySqrtN;
        spec->normFactor = normalisation(len, flag);
        if (len <= kStraightMost) {
            // No tables.
        } else if (isPower(len)) {
            status = makePower(*spec, real, flag);
        } else {
            setLength(*spec, len, real);
            status = judge(len, real);
            if (status == qvrOk && real && len % 2 == 0 && !makeRecombination(*spec))
                status = qvrErrNoMemory;
            if (status == qvrOk)
                status = makePlan(*spec);
        }
    }
    if (status != qvrOk) {
        freeAll(spec);
        return status;
    }
    *ppSpec = spec;
    return qvrOk;
}

qvrStatus freeObject(qvrsDFTSpec* spec, int tag)
{
    if (const qvrStatus status = checkState(spec, static_cast<uint32_t>(tag)))
        return status;
    freeAll(spec);
    return qvrOk;
}

// With room to align a caller's buffer.
qvrStatus bufferSize(const qvrsDFTSpec* spec, int32_t* pSize, int tag)
{
    if (anyNull(spec, pSize))
        return qvrErrNullPointer;
    if (spec->tag != tag)
        return qvrErrBadContext;
    *pSize = spec->workSize;
    return qvrOk;
}

} // namespace

extern "C" {

qvrStatus SLOT(ownqvrsDFTJudge)(int len, bool real)
{
    return len <= kStraightMost || isPower(len) ? qvrOk : judge(len, real);
}
qvrStatus SLOT(ownqvrsDFTInitAlloc_R_32f)(qvrsDFTSpec_R_32f** ppSpec, int len, int flag, int hint)
{
    return initAlloc(ppSpec, len, flag, hint, true);
}
qvrStatus SLOT(ownqvrsDFTInitAlloc_C_32fc)(qvrsDFTSpec_C_32fc** ppSpec, int len, int flag, int hint)
{
    return initAlloc(ppSpec, len, flag, hint, false);
}
qvrStatus SLOT(ownqvrsDFTFree_R_32f)(qvrsDFTSpec_R_32f* pSpec)
{
    return freeObject(pSpec, kTagDftReal);
}
qvrStatus SLOT(ownqvrsDFTFree_C_32fc)(qvrsDFTSpec_C_32fc* pSpec)
{
    return freeObject(pSpec, kTagDftComplex);
}
qvrStatus SLOT(ownqvrsDFTGetBufSize_R_32f)(const qvrsDFTSpec_R_32f* pSpec, int32_t* pSize)
{
    return bufferSize(pSpec, pSize, kTagDftReal);
}
qvrStatus SLOT(ownqvrsDFTGetBufSize_C_32fc)(const qvrsDFTSpec_C_32fc* pSpec, int32_t* pSize)
{
    return bufferSize(pSpec, pSize, kTagDftComplex);
}

} // extern "C"
