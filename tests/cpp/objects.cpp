// Owning objects, images, the allocator and errors of the C++ header against the library itself. Prints what fails.
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <vector>

#include <morvenqvr.hpp>

namespace {

int failures = 0;

#define EXPECT(condition)                                                                                              \
    do {                                                                                                               \
        if (!(condition)) {                                                                                            \
            std::printf("line %d: %s\n", __LINE__, #condition);                                                        \
            failures++;                                                                                                \
        }                                                                                                              \
    } while (0)

void transforms()
{
    qvr::FFTSpec_R_32f spec;
    EXPECT(!spec && spec.length() == 0);
    std::vector<float> signal(64), spectrum(66), back(64);
    EXPECT(qvr::checked::fftFwd(signal, spectrum, spec) == qvrErrNullPointer);
    EXPECT(spec.init(6) == qvrOk);
    EXPECT(spec && spec.length() == 64 && spec.spectrum() == 66);
    for (int i = 0; i < 64; i++)
        signal[i] = std::sin(0.3f * static_cast<float>(i));
    std::vector<qvr8u, qvr::Allocator<qvr8u>> buffer(static_cast<size_t>(spec.buffer(4)));
    EXPECT(qvr::checked::fftFwd(signal, spectrum, spec, buffer) == qvrOk);
    EXPECT(qvr::checked::fftInv(spectrum, back, spec) == qvrOk);
    for (int i = 0; i < 64; i++)
        EXPECT(std::fabs(back[i] - signal[i]) < 1e-6f);
    EXPECT(qvr::checked::fftFwd(signal, std::span(spectrum).first(65), spec) == qvrErrBadSize);
    EXPECT(qvr::checked::fftFwd(signal, spectrum, spec, std::span(buffer).first(131135)) == qvrErrBadSize);
    EXPECT(spec.init(99) == qvrErrFFTOrder && spec.length() == 64);

    // Order 0: a spectrum is two values.
    std::array<double, 2> two{};
    qvr::FFTSpec_R_64f one;
    EXPECT(one.init(0) == qvrOk && one.spectrum() == 2);
    EXPECT(qvr::checked::fftFwd(std::array{3.0}, two, one) == qvrOk && two[0] == 3 && two[1] == 0);

    qvrsFFTSpec_R_32f* const object = spec.get();
    qvr::FFTSpec_R_32f other(std::move(spec));
    EXPECT(other.get() == object && spec.get() == nullptr && spec.length() == 0);
    spec = std::move(other);
    EXPECT(spec.get() == object && spec.length() == 64 && !other);
    spec.reset();
    EXPECT(!spec);
}

// A stream in two blocks is the stream in one.
void filters()
{
    const std::vector<double> taps = {0.25, 0.5, 0.25};
    std::vector<float> signal(40), whole(40), parts(40), line(3);
    for (int i = 0; i < 40; i++)
        signal[i] = static_cast<float>((i * 7) % 11);
    qvr::FIRState64f_32f a, b;
    EXPECT(a.init(taps) == qvrOk && b.init(taps) == qvrOk && a.taps() == 3);
    EXPECT(qvr::checked::fir(signal, whole, a) == qvrOk);
    EXPECT(qvr::checked::fir(std::span(signal).first(13), std::span(parts).first(13), b) == qvrOk);
    EXPECT(qvr::checked::fir(std::span(signal).subspan(13), std::span(parts).subspan(13), b) == qvrOk);
    EXPECT(whole == parts && whole[2] == 0.25f * signal[2] + 0.5f * signal[1] + 0.25f * signal[0]);
    EXPECT(qvr::checked::firGetDlyLine(a, line) == qvrOk && line[0] == signal[39] && line[2] == signal[37]);
    EXPECT(qvr::checked::firSetDlyLine(a, {}) == qvrOk);
    EXPECT(qvr::checked::firSetDlyLine(a, std::span(line).first(2)) == qvrErrBadSize);
    EXPECT(a.init(taps, std::span(line).first(2)) == qvrErrBadSize && a.taps() == 3);

    std::array<double, 6> design{};
    EXPECT(qvr::checked::iirGenLowpass(2, design, qvrIirButterworth, 0.1, 0) == qvrOk);
    EXPECT(qvr::checked::iirGenLowpass(3, design, qvrIirButterworth, 0.1, 0) == qvrErrBadSize);
    EXPECT(qvr::checked::iirGenLowpass(99, design, qvrIirButterworth, 0.1, 0) == qvrErrBadFilterOrder);
    qvr::IIRState_64f low;
    EXPECT(low.init(design) == qvrOk);
    EXPECT(low.init(std::span(design).first(5)) == qvrErrBadSize);
    EXPECT(low.init(std::span(design).first(2)) == qvrErrBadOrder);
    std::vector<double> step(200, 1.0);
    EXPECT(qvr::checked::iir(step, step, low) == qvrOk && std::fabs(step[199] - 1) < 1e-9);

    const std::array low2 = {0.5f, 0.5f}, high2 = {0.5f, -0.5f};
    qvr::WTFwdState_32f forward;
    EXPECT(forward.init(low2, -1, high2, 3) == qvrOk && forward.delayLow() == 1 && forward.delayHigh() == 4);
    std::vector<float> lows(20), highs(20), held(4);
    EXPECT(qvr::checked::wtFwd(signal, lows, highs, forward) == qvrOk);
    EXPECT(lows[3] == (signal[6] + signal[7]) / 2);
    EXPECT(qvr::checked::wtFwdGetDlyLine(forward, std::span(held).first(1), held) == qvrOk && held[3] == signal[39]);

    // A channel whose history is empty takes an empty span.
    qvr::WTInvState_32f inverse;
    EXPECT(inverse.init(std::array{1.0f}, 0, std::array{1.0f}, 0) == qvrOk && inverse.delayLow() == 0);
    EXPECT(qvr::checked::wtInvSetDlyLine(inverse, {}, {}) == qvrOk &&
           qvr::checked::wtInvGetDlyLine(inverse, {}, {}) == qvrOk);
}

void images()
{
    std::vector<qvr8u> source(20 * 10, 7), target(10 * 5), buffer;
    const qvr::Image<qvr8u> from(source, {20, 10}), to(target, {10, 5});
    EXPECT(qvr::checked::resize(from, {0, 0, 20, 10}, to, {10, 5}, 0.5, 0.5, qvriInterLinear) == qvrOk);
    EXPECT(target == std::vector<qvr8u>(50, 7));
    EXPECT(qvr::checked::resize(from, {0, 0, 20, 10}, to, {11, 5}, 0.5, 0.5, qvriInterLinear) == qvrErrBadSize);
    EXPECT(qvr::checked::resize(from, {0, 0, 20, 10}, {std::span(target).first(49), {10, 5}}, {10, 5}, 0.5, 0.5,
                                qvriInterLinear) == qvrErrBadSize);
    int bytes = 0;
    EXPECT(qvr::checked::resizeGetBufSize({0, 0, 20, 10}, {0, 0, 10, 5}, 1, qvriInterCubic, bytes) == qvrOk);
    buffer.resize(static_cast<size_t>(bytes));
    EXPECT(qvr::checked::resizeSqrPixel(from, {0, 0, 20, 10}, to, {0, 0, 10, 5}, 0.5, 0.5, 0, 0, qvriInterCubic,
                                        buffer) == qvrOk);
    buffer.pop_back();
    EXPECT(qvr::checked::resizeSqrPixel(from, {0, 0, 20, 10}, to, {0, 0, 10, 5}, 0.5, 0.5, 0, 0, qvriInterCubic,
                                        buffer) == qvrErrBadSize);
    // A border that lies inside the region by next to nothing is treated one pixel outside of it.
    buffer.resize(1 << 20);
    EXPECT(qvr::checked::resizeSqrPixel(from, {0, 0, 20, 10}, to, {0, 0, 10, 5}, 0.5, 0.5, 1e-9, 0,
                                        qvriInterLinear | qvriEdgeBlend, buffer) == qvrErrBadSize);
    EXPECT(qvr::checked::resizeSqrPixel(from, {0, 0, 20, 10}, to, {0, 0, 10, 5}, 0.5, 0.5, 0.25, 0,
                                        qvriInterLinear | qvriEdgeBlend, buffer) == qvrOk);
    const qvr::Image<qvr8u> gaps(source, {16, 10}, 20), narrow(source, {20, 10}, 19);
    EXPECT(qvr::checked::addC(1, gaps, 0) == qvrOk && source[15] == 8 && source[16] == 7);
    EXPECT(qvr::checked::addC(1, narrow, 0) == qvrErrBadSize);
}

void memory()
{
    std::vector<double, qvr::Allocator<double>> aligned(1000, 1.5);
    EXPECT(reinterpret_cast<uintptr_t>(aligned.data()) % 64 == 0);
    aligned.resize(5000, 2.5);
    EXPECT(aligned[0] == 1.5 && aligned[4999] == 2.5);
    float mean = 0;
    EXPECT(qvr::checked::mean(std::array{1.0f, 2.0f, 3.0f}, mean) == qvrOk && mean == 2);
    // Longer than an int counts, where no element is touched.
    const std::span<const float> endless(static_cast<const float*>(nullptr), size_t{1} << 32 | 3);
    EXPECT(qvr::checked::mean(endless, mean) == qvrErrBadSize);
}

#if defined(__cpp_exceptions)
template<class F> qvrStatus thrown(const char* name, const char* function, F&& call)
{
    try {
        call();
    } catch (const qvr::Error& e) {
        EXPECT(std::string(e.function()) == function && std::string(e.name()) == name);
        EXPECT(e.what() == "qvr::" + std::string(function) + ": " + name);
        return e.status();
    }
    return 0;
}

void errors()
{
    std::vector<float> a(4, -1), b(5);
    EXPECT(thrown("qvrErrBadSize", "abs", [&] { qvr::abs(a, b); }) == qvrErrBadSize);
    EXPECT(thrown("qvrErrFFTOrder", "FFTSpec", [] { qvr::FFTSpec_R_64f spec(99); }) == qvrErrFFTOrder);
    EXPECT(thrown("qvrErrBadTapsLen", "FIRState", [] {
               const float tap = 1;
               qvr::FIRState_32f state{qvr::In<float>(&tap, size_t{0})};
           }) == qvrErrBadTapsLen);
    EXPECT(qvr::sqrt(a, a) == qvrWarnNegativeInput);
    const auto [value, index] = qvr::maxIndx(std::array{1.0f, 5.0f, 2.0f});
    EXPECT(value == 5 && index == 1);
    const auto [low, high] = qvr::minMax(std::array<qvr16s, 3>{4, -2, 9});
    EXPECT(low == -2 && high == 9);
    bool refused = false;
    try {
        std::vector<double, qvr::Allocator<double>> large(size_t{1} << 30);
    } catch (const std::bad_alloc&) {
        refused = true;
    }
    EXPECT(refused);
}
#else
void errors() {}
#endif

} // namespace

int main()
{
    transforms();
    filters();
    images();
    memory();
    errors();
    std::printf("%d failures\n", failures);
    return failures != 0;
}
