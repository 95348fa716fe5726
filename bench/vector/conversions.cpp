// Rows of the conversions.
#include "bench/vector/rows.h"

using namespace bench;

namespace {

constexpr const char* kGroup = "conversions";

ROW(qvrsConvert_16s32f, kGroup, (unary<int16_t, float>()), (a, d, n), VOLK(volk_16i_s32f_convert_32f(d, a, 1.0f, n)))
ROW(qvrsConvert_32f64f, kGroup, (unary<float, double>()), (a, d, n), VOLK(volk_32f_convert_64f(d, a, n)))
ROW(qvrsConvert_64f32f, kGroup, (unary<double, float>()), (a, d, n), VOLK(volk_64f_convert_32f(d, a, n)))
ROW(qvrsConvert_32s16s, kGroup, (unary<int32_t, int16_t>()), (a, d, n))
ROW(qvrsConvert_16s64f_Sfs, kGroup, (unary<int16_t, double>()), (a, d, n, 1))

// The scale factor 1 makes every path multiply.
constexpr auto kSamples32 = unary<float, int16_t>(Data::samples);
constexpr auto kSamples64 = unary<double, int16_t>(Data::samples);
VARIANT_ROW(qvrsConvert_32f16s_Sfs, "toward zero", kGroup, kSamples32, (a, d, n, qvrRoundTowardZero, 1))
VARIANT_ROW(qvrsConvert_32f16s_Sfs, "nearest", kGroup, kSamples32, (a, d, n, qvrRoundNearest, 1),
            VOLK(volk_32f_s32f_convert_16i(d, a, 0.5f, n)))
VARIANT_ROW(qvrsConvert_32f16s_Sfs, "half away", kGroup, kSamples32, (a, d, n, qvrRoundHalfAway, 1))
VARIANT_ROW(qvrsConvert_64f16s_Sfs, "toward zero", kGroup, kSamples64, (a, d, n, qvrRoundTowardZero, 1))
VARIANT_ROW(qvrsConvert_64f16s_Sfs, "nearest", kGroup, kSamples64, (a, d, n, qvrRoundNearest, 1))
VARIANT_ROW(qvrsConvert_64f16s_Sfs, "half away", kGroup, kSamples64, (a, d, n, qvrRoundHalfAway, 1))

ROW(qvrsNormalize_32f, kGroup, unary<float>(), (a, d, n, 0.5f, 1.5f))
ROW(qvrsNormalize_64f, kGroup, unary<double>(), (a, d, n, 0.5, 1.5))

// Frames of interleaved channels; a row's elements are samples.
void split(const Sink& sink)
{
    for (const int channels : {1, 2, 3, 6, 8}) {
        for (const int frames : {15, 1024, 65536, 4 << 20}) {
            const int perChannel = frames > 1024 ? frames / channels : frames;
            if (frames > 1 << 20 && !sink.memory)
                continue;
            const std::string label = std::to_string(channels) + " channels, " + std::to_string(perChannel);
            sink.add(label, [&](Case& c) {
                const int64_t samples = int64_t{channels} * perChannel;
                c.elements = static_cast<double>(samples);
                c.work = {2, 4};
                c.tolerance = 1e-4; // peers scale without the offset of half a step
                const int16_t* source = c.array<int16_t>(samples, Data::samples);
                auto rows = std::make_shared<std::vector<float*>>();
                for (int k = 0; k < channels; k++)
                    rows->push_back(c.array<float>(perChannel, Data::mixed, true));
                float** const out = rows->data();
                c.atEnd([rows] {});
                const auto call = [=](auto* f) { f(source, out, channels, perChannel); };
                sameCall(c, "qvrsSplitScaled_16s32f_D2L", Morven_qvrsSplitScaled_16s32f_D2L, call);
                using F = decltype(Morven_qvrsSplitScaled_16s32f_D2L);
                if (auto* const frameWise = reinterpret_cast<F*>(findPlain("qvrsSplitScaled_16s32f_D2L/by frames")))
                    c.peer("plain loop by frames", [=] { call(frameWise); });
                if (channels == 1) {
                    VOLK(volk_16i_s32f_convert_32f(out[0], source, 32767.5f, static_cast<unsigned>(perChannel)))
                }
                if (channels == 2) {
                    VOLK(volk_16ic_s32f_deinterleave_32f_x2(out[0], out[1], reinterpret_cast<const lv_16sc_t*>(source),
                                                            32767.5f, static_cast<unsigned>(perChannel)))
                }
            });
        }
    }
}
const bool splitRow = addRow({"qvrsSplitScaled_16s32f_D2L", "", "vector", kGroup, split});

} // namespace
