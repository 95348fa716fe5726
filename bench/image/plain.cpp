// What a programmer writes instead of the point operations: the models' plain loops, for each level.
#include "bench/peers.h"
#include "model/points.h"

namespace bench {

extern const PeerFunction QVR_PEER_PASTE(plain_image_, QVR_BENCH_LEVEL)[];
const PeerFunction QVR_PEER_PASTE(plain_image_, QVR_BENCH_LEVEL)[] = {
    QVR_MODEL(qvriAddC_8u_C1IRSfs),       QVR_MODEL(qvriAddC_16u_C1IRSfs),
    QVR_MODEL(qvriSet_16u_C1R),           QVR_MODEL(qvriCopy_16u_C1MR),
    QVR_MODEL(qvriConvert_8u16u_C1R),     QVR_MODEL(qvriConvert_8u16s_C1R),
    QVR_MODEL(qvriLUTPalette_8u_C1R),     QVR_MODEL(qvriLUTPalette_8u32u_C1R),
    QVR_MODEL(qvriLUTPalette_16u8u_C1R),  QVR_MODEL(qvriLUTPalette_16u32u_C1R),
    QVR_MODEL(qvriBlockMinMax_16s_C1R),   QVR_MODEL(qvriSplitRow_TIFF_16u8u_C1),
    QVR_MODEL(qvriJoinRow_TIFF_8u16u_C1), {nullptr, nullptr},
};

} // namespace bench
