// Rows of the floating-point arithmetic.
#include "bench/vector/rows.h"

using namespace bench;

namespace {

constexpr const char* kGroup = "arithmetic";

ROW(qvrsAdd_32f, kGroup, binary<float>(), (a, b, d, n), VOLK(volk_32f_x2_add_32f(d, a, b, n)))
ROW(qvrsAdd_32f_I, kGroup, inPlaceFrom<float>(Data::tiny), (a, d, n), VOLK(volk_32f_x2_add_32f(d, d, a, n)))
ROW(qvrsSub_32f, kGroup, binary<float>(), (a, b, d, n), VOLK(volk_32f_x2_subtract_32f(d, b, a, n)))
ROW(qvrsSub_32f_I, kGroup, inPlaceFrom<float>(Data::tiny), (a, d, n), VOLK(volk_32f_x2_subtract_32f(d, d, a, n)))
ROW(qvrsMul_32f, kGroup, binary<float>(), (a, b, d, n), VOLK(volk_32f_x2_multiply_32f(d, a, b, n)))
ROW(qvrsMul_32f_I, kGroup, inPlaceFrom<float>(Data::signs), (a, d, n), VOLK(volk_32f_x2_multiply_32f(d, d, a, n)))
ROW(qvrsMul_64f_I, kGroup, inPlaceFrom<double>(Data::signs), (a, d, n), VOLK(volk_64f_x2_multiply_64f(d, d, a, n)))
ROW(qvrsMul_64fc, kGroup, limitedBy(Unit::add32, 12, binary<qvr64fc>()), (a, b, d, n))
ROW(qvrsDiv_32f, kGroup, limitedBy(Unit::divide32, 1, binary<float>()), (a, b, d, n),
    VOLK(volk_32f_x2_divide_32f(d, b, a, n)))

ROW(qvrsAddC_32f, kGroup, unary<float>(), (a, 0.75f, d, n), VOLK(volk_32f_s32f_add_32f(d, a, 0.75f, n)))
ROW(qvrsAddC_32f_I, kGroup, inPlace<float>(), (0x1p-70f, d, n), VOLK(volk_32f_s32f_add_32f(d, d, 0x1p-70f, n)))
ROW(qvrsAddC_64f_I, kGroup, inPlace<double>(), (0x1p-70, d, n))
ROW(qvrsSubC_32f, kGroup, unary<float>(), (a, 0.75f, d, n), VOLK(volk_32f_s32f_add_32f(d, a, -0.75f, n)))
ROW(qvrsSubC_32f_I, kGroup, inPlace<float>(), (0x1p-70f, d, n), VOLK(volk_32f_s32f_add_32f(d, d, -0x1p-70f, n)))
ROW(qvrsSubCRev_32f, kGroup, unary<float>(), (a, 0.75f, d, n))
ROW(qvrsMulC_32f, kGroup, unary<float>(), (a, 0.75f, d, n), VOLK(volk_32f_s32f_multiply_32f(d, a, 0.75f, n)))
ROW(qvrsMulC_32f_I, kGroup, inPlace<float>(), (-1.0f, d, n), VOLK(volk_32f_s32f_multiply_32f(d, d, -1.0f, n)))
ROW(qvrsMulC_64f_I, kGroup, inPlace<double>(), (-1.0, d, n))
ROW(qvrsDivC_32f, kGroup, unary<float>(), (a, 0.75f, d, n), VOLK(volk_32f_s32f_multiply_32f(d, a, 1 / 0.75f, n)))
ROW(qvrsDivC_32f_I, kGroup, inPlace<float>(), (-1.0f, d, n), VOLK(volk_32f_s32f_normalize(d, -1.0f, n)))
ROW(qvrsDivCRev_32f, kGroup, limitedBy(Unit::divide32, 1, unary<float>()), (a, 0.75f, d, n))
ROW(qvrsDivCRev_32f_I, kGroup, limitedBy(Unit::divide32, 1, inPlace<float>()), (1.5f, d, n))

ROW(qvrsAbs_32f, kGroup, unary<float>(), (a, d, n))
ROW(qvrsAbs_32f_I, kGroup, inPlace<float>(), (d, n))
ROW(qvrsSqr_32f_I, kGroup, inPlace<float>(Data::signs), (d, n), VOLK(volk_32f_x2_multiply_32f(d, d, d, n)))
ROW(qvrsSqrt_32f, kGroup, limitedBy(Unit::root32, 1, unary<float>(Data::positive)), (a, d, n),
    VOLK(volk_32f_sqrt_32f(d, a, n)))
ROW(qvrsCeil_32f, kGroup, unary<float>(Data::samples), (a, d, n))
ROW(qvrsFloor_32f, kGroup, unary<float>(Data::samples), (a, d, n))
ROW(qvrsMinEvery_32f_I, kGroup, inPlaceFrom<float>(Data::mixed), (a, d, n), VOLK(volk_32f_x2_min_32f(d, d, a, n)))
ROW(qvrsMaxEvery_32f_I, kGroup, inPlaceFrom<float>(Data::mixed), (a, d, n), VOLK(volk_32f_x2_max_32f(d, d, a, n)))

} // namespace
