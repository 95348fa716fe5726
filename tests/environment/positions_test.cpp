// Element-wise exports: an element's result, and the flags that it raises, do not depend on where it stands. Each
// element is first done by a call of its own; then in arrays of every length, at several alignments, alone among its
// like and among others, past the thresholds of threads, in every slot and under every floating-point environment.
#include <array>
#include <string>

#include "calls/shapes.h"
#include "support/budget.h"
#include "support/environment.h"
#include "support/slots.h"
#include "support/values.h"

namespace {

using namespace environment;

constexpr unsigned kErrors = kInvalid | kDivide | kOverflow;

bool startsWith(const std::string& name, std::initializer_list<const char*> beginnings)
{
    for (const char* b : beginnings)
        if (name.starts_with(b))
            return true;
    return false;
}

// Of the usual shape, but with results that are not made of one element of each source.
bool isElementwise(const std::string& name)
{
    // The magnitude of floats has an exact root at its ends and an estimate between them.
    return !startsWith(name, {"qvrsWin", "qvrsSort", "qvrsMagnitude_32fc"});
}

// A block of these with an element that the formula cannot do goes another, more exact way as a whole.
bool dependsOnNeighbours(const std::string& name)
{
    return startsWith(name, {"qvrsSin_", "qvrsCos_", "qvrsTan_", "qvrsSinh_", "qvrsCosh_", "qvrsAtan2_", "qvrsPow"});
}

enum class Content { ordinary, large, hostile };

constexpr int kElements = 160;

template<class T> T valueOf(Content content, uint32_t seed, bool positive)
{
    // A few steps of a linear congruence: the engines of the standard library cost more than the calls.
    const auto draw = [&seed] {
        seed = (seed * 747796405u + 2891336453u) ^ seed >> 13;
        return seed >> 7;
    };
    draw();
    if constexpr (std::is_floating_point_v<T>) {
        if (content == Content::hostile && draw() % 3 == 0) {
            static const std::vector<T> all = specials<T>();
            return all[draw() % all.size()];
        }
        const T x = static_cast<T>((draw() % 4095 + 1) / 4096.0 * (content == Content::large ? 60 : 1));
        return positive || draw() % 2 ? x : -x;
    } else {
        return static_cast<T>(draw());
    }
}
template<> qvr32fc valueOf(Content content, uint32_t seed, bool positive)
{
    return {valueOf<float>(content, seed, positive), valueOf<float>(content, seed + 1000, positive)};
}
template<> qvr64fc valueOf(Content content, uint32_t seed, bool positive)
{
    return {valueOf<double>(content, seed, positive), valueOf<double>(content, seed + 1000, positive)};
}
template<> qvr16sc valueOf(Content content, uint32_t seed, bool positive)
{
    return {valueOf<qvr16s>(content, seed, positive), valueOf<qvr16s>(content, seed + 1000, positive)};
}

template<class T> bool same(T a, T b)
{
    return sameValue(a, b);
}
[[maybe_unused]] bool same(qvr32fc a, qvr32fc b)
{
    return sameValue(a.re, b.re) && sameValue(a.im, b.im);
}
[[maybe_unused]] bool same(qvr64fc a, qvr64fc b)
{
    return sameValue(a.re, b.re) && sameValue(a.im, b.im);
}
[[maybe_unused]] bool same(qvr16sc a, qvr16sc b)
{
    return memcmp(&a, &b, sizeof a) == 0;
}

template<class T> constexpr bool kIsSource = std::is_pointer_v<T> && std::is_const_v<std::remove_pointer_t<T>>;
template<class T> using Element = std::remove_const_t<std::remove_pointer_t<T>>;

// One source or scalar of a call, with room for alignment.
template<class T, bool = std::is_pointer_v<T>> struct Argument {
    std::vector<Element<T>> all, placed = std::vector<Element<T>>(6000);
};
template<class T> struct Argument<T, false> {
    T value;
};

// The scalars that a constant takes in turn.
constexpr int kScalars = 6;
template<class T> T scalarOf(int which)
{
    if constexpr (std::is_floating_point_v<T>) {
        const T values[kScalars] = {T(0.75),
                                    T(-2.5),
                                    std::numeric_limits<T>::infinity(),
                                    std::numeric_limits<T>::min() / 4,
                                    T(1e30),
                                    std::numeric_limits<T>::quiet_NaN()};
        return values[which];
    } else {
        const int values[kScalars] = {0, 3, -2, 1, 2, 7};
        return static_cast<T>(values[which]);
    }
}

template<class F> struct Positions;

template<class R, class... A> struct Positions<R (*)(A...)> {
    static constexpr int kLength = calls::lengthPosition<A...>();
    static constexpr size_t kCount = sizeof...(A);
    static constexpr size_t lastPointer()
    {
        size_t last = 0, i = 0;
        ((last = std::is_pointer_v<A> ? i : last, i++), ...);
        return last;
    }
    static constexpr size_t kOutput = lastPointer();
    using D = Element<std::tuple_element_t<kOutput, std::tuple<A...>>>;
    static constexpr bool kHasScalar = kCount > 1 + (0 + ... + (std::is_pointer_v<A> ? 1 : 0));

    R (*f)(A...);
    std::string name;
    std::tuple<Argument<A>...> arguments;
    std::vector<D> want = std::vector<D>(kElements);
    std::vector<unsigned> wantFlags = std::vector<unsigned>(kElements);

    void fill(Content content, int scalar, uint32_t seed, int uniform)
    {
        const bool positive = startsWith(name, {"qvrsPow"}) && content != Content::hostile;
        uint32_t which = 0;
        const auto one = [&](auto tag, auto& a) {
            using T = typename decltype(tag)::type;
            which++;
            if constexpr (std::is_pointer_v<T>) {
                a.all.resize(kElements);
                for (int i = 0; i < kElements; i++)
                    a.all[i] =
                        valueOf<Element<T>>(content, seed + 5000 * which + (uniform >= 0 ? uniform : i), positive);
            } else {
                a.value = scalarOf<T>(scalar);
            }
        };
        std::apply([&](auto&... a) { (one(std::type_identity<A>{}, a), ...); }, arguments);
    }

    // Elements from .. from + n - 1, over and over past kElements, with arrays at byte offsets; gives the flags.
    template<size_t... I>
    unsigned run(int from, int n, int srcOffset, int dstOffset, unsigned word, const D*& out, std::index_sequence<I...>)
    {
        const auto place = [&](auto tag, auto index, auto& a) {
            using T = typename decltype(tag)::type;
            if constexpr (std::is_pointer_v<T>) {
                const bool output = index == kOutput;
                Element<T>* p = a.placed.data() + (output ? dstOffset : srcOffset);
                for (int i = 0; i < n; i++)
                    p[i] = a.all[(from + i) % kElements];
                if constexpr (index == kOutput)
                    out = p;
                return T(p);
            } else {
                return static_cast<int>(index) == kLength ? T(n) : a.value;
            }
        };
        const std::tuple<A...> call{
            place(std::type_identity<A>{}, std::integral_constant<size_t, I>{}, std::get<I>(arguments))...};
        const Environment environment(word);
        std::apply(f, call);
        return environment.flags() & kErrors;
    }
    unsigned run(int from, int n, int srcOffset, int dstOffset, unsigned word, const D*& out)
    {
        return run(from, n, srcOffset, dstOffset, word, out, std::make_index_sequence<kCount>{});
    }

    bool check(int from, int n, int srcOffset, int dstOffset, unsigned word)
    {
        const D* out;
        const unsigned flags = run(from, n, srcOffset, dstOffset, word, out);
        unsigned expected = 0;
        for (int i = 0; i < n; i++) {
            const int k = (from + i) % kElements;
            expected |= wantFlags[k];
            if (!same(out[i], want[k])) {
                ADD_FAILURE() << name << ": element " << i << " of " << n << " from " << from << " at +" << srcOffset
                              << ", +" << dstOffset << " differs from a call of its own under " << std::hex << word;
                return false;
            }
        }
        if (flags & ~expected) {
            ADD_FAILURE() << name << ": flags " << flags << " of " << n << " elements from " << from << ", of each "
                          << expected << " under " << std::hex << word;
            return false;
        }
        return true;
    }

    // Each element by itself, then arrays. Of a uniform array one element stands for all.
    bool sweep(unsigned word, int most, bool thorough, bool uniform = false)
    {
        const int needed = thorough ? kElements : most + 7;
        for (int i = 0; i < needed; i++) {
            if (uniform && i > 0) {
                wantFlags[i] = wantFlags[0];
                want[i] = want[0];
                continue;
            }
            const D* out;
            wantFlags[i] = run(i, 1, 0, 0, word, out);
            want[i] = *out;
        }
        for (int n = 1; n <= most; n++) {
            if (!check(n % 7, n, 0, 0, word))
                return false;
            if (thorough &&
                !(check(n % 5, n, 1, 0, word) && check(n % 3, n, 0, 1, word) && check(n % 11, n, 3, 5, word)))
                return false;
        }
        return !thorough || (check(0, 131, 0, 0, word) && check(1, 300, 1, 3, word) && check(2, 4999, 0, 1, word));
    }

    void checkAll(const std::vector<unsigned>& words)
    {
        const bool neighbours = dependsOnNeighbours(name);
        for (unsigned word : words)
            for (int scalar = 0; scalar < (kHasScalar ? kScalars : 1); scalar++) {
                const bool first = scalar == 0;
                fill(Content::ordinary, scalar, 1, -1);
                if (!sweep(word, 70, first))
                    return;
                fill(Content::large, scalar, 2, -1);
                if (!sweep(word, first ? 40 : 9, false))
                    return;
                if (!neighbours) {
                    fill(Content::hostile, scalar, 3, -1);
                    if (!sweep(word, first ? 70 : 9, first))
                        return;
                }
                // Arrays of one element over and over.
                for (int uniform = 0; uniform < (first ? 24 : 6); uniform++) {
                    fill(Content::hostile, scalar, 4, uniform);
                    if (!sweep(word, 19, false, true))
                        return;
                }
            }
    }
};

template<class Name, class F> void checkPositions(const char* name, F f, const std::vector<unsigned>& words)
{
    if constexpr (requires { calls::Shape<Name>::kUsual; }) {
        if (isElementwise(name)) {
            Positions<F> positions{f, name, {}};
            positions.checkAll(words);
        }
    }
}

TEST(EveryElement, SameResultAndFlagsAnywhere)
{
    const Budget threads(2);
    const int32_t chosen = qvrCpuIndex;
    const char* const only = getenv("QVR_ONLY");
    std::vector<unsigned> words;
    for (unsigned rounding : {kNearest, kDown, kUp, kZero})
        for (unsigned denormals : {0u, kFlush, kDenormalsAreZero, kFlush | kDenormalsAreZero})
            words.push_back(kMasked | rounding | denormals);
    for (int slot = 0; slot < slots::kCount; slot++) {
        if (!slots::canRun(slot))
            continue;
        SCOPED_TRACE(slots::kNames[slot]);
        qvrCpuIndex = slot;
#define QVR_CHECK(name)                                                                                                \
    if (!only || strstr(#name, only))                                                                                  \
        checkPositions<calls::name>(#name, &Morven_##name, words);
#define QVR_SHARED(name)                                                                                               \
    if (slots::kShared[slot] == slot)                                                                                  \
    QVR_CHECK(name)
#define QVR_OWN(name) QVR_CHECK(name)
#include "frame/exports.def"
    }
    qvrCpuIndex = chosen;
}

} // namespace
