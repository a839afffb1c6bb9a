/// @file
/// One region found by colour segmentation, as it is attached to an image.
#pragma once

#include <nuv/core/Color.h>
#include <nuv/core/Line.h>
#include <nuv/core/List.h>
#include <nuv/core/Point.h>

#include <string>

namespace nuv::core::image {

/// One region found by colour segmentation, as it is attached to an image.
class Segment {
public:
    /// The region's pixels; 0 for a class that was not found.
    unsigned int pixelCount = 0;
    Color color;       ///< the class colour; transparent black until set
    Point center;      ///< (0, 0) until set
    List<Line> lines;  ///< the runs of the region, one line each
    /// The class's place in the configured list.
    int segmentIndex = 0;
    /// The class's name.
    std::string name;

    /// Memberwise; the colours of the centre and of the lines take no part, as for Point
    /// and Line.
    bool operator==(Segment const& other) const {
        return pixelCount == other.pixelCount && color == other.color && center == other.center &&
               lines == other.lines && segmentIndex == other.segmentIndex && name == other.name;
    }
    /// Whether any field differs.
    bool operator!=(Segment const& other) const { return !(*this == other); }
};

}  // namespace nuv::core::image
