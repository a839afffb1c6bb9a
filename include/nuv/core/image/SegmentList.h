/// @file
/// The segments attached to an image by colour segmentation.
#pragma once

#include <nuv/core/List.h>
#include <nuv/core/image/Segment.h>

#include <initializer_list>

namespace nuv::core::image {

/// The segment records of an image, one per active class in configured order.
class SegmentList : public List<Segment> {
public:
    /// An empty list.
    SegmentList() = default;
    /// A list of these records in order.
    SegmentList(std::initializer_list<Segment> values) : List<Segment>(values) {}
    /// Lets go of the records.
    ~SegmentList() override;
};

}  // namespace nuv::core::image
