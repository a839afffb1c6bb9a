// The segments attached to an image by colour segmentation.
#pragma once

#include <nuv/core/List.h>
#include <nuv/core/image/Segment.h>

#include <initializer_list>

namespace nuv::core::image {

class SegmentList : public List<Segment> {
public:
    SegmentList() = default;
    SegmentList(std::initializer_list<Segment> values) : List<Segment>(values) {}
    ~SegmentList() override;
};

}  // namespace nuv::core::image
