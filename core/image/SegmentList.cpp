#include <nuv/core/image/SegmentList.h>

namespace nuv::core::image {

SegmentList::~SegmentList() = default;

}  // namespace nuv::core::image
