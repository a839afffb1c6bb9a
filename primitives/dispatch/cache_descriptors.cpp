#include "primitives/dispatch/cache_descriptors.h"

#include <cstring>

namespace nuv::prim::dispatch {

bool Leaf2Bytes::contains(unsigned char descriptor) const {
    for (int i = 1; i <= count; ++i)
        if (bytes[i] == descriptor) return true;
    return false;
}

Leaf2Bytes readLeaf2() {
    Leaf2Bytes leaf2;
    Ipp32u regs[4];
    nuvCpuid(2, 0, regs);
    if ((regs[0] & 0xFF) != 1) return leaf2;
    int laid = 0;
    for (int r = 0; r < 4; ++r) {
        // A register with bit 31 set holds no descriptors.
        const Ipp32u value = (regs[r] & 0x80000000u) ? 0 : regs[r];
        if (value == 0) continue;
        std::memcpy(leaf2.bytes + laid, &value, 4);
        laid += 4;
        leaf2.count += r == 0 ? 3 : 4;
    }
    return leaf2;
}

}  // namespace nuv::prim::dispatch
