// Working buffers of a few rows: a pass that needs a scratch copy of the region runs band by
// band through one small buffer, which stays in the cache between its passes and comes from
// the heap's bins, never from fresh pages.
#pragma once

#include <algorithm>

namespace nuv::cv {

// Rows of a band whose rows are rowBytes long: about 32 KiB of them, at least one.
inline int bandRows(long long rowBytes, int height) {
    constexpr long long bandBytes = 32 * 1024;
    const long long rows = rowBytes > 0 ? bandBytes / rowBytes : bandBytes;
    return static_cast<int>(std::clamp<long long>(rows, 1, std::max(height, 1)));
}

}  // namespace nuv::cv
