/// @file
/// One edge line in a horizontal band near the bottom of an image: per row of the band the
/// column of the strongest edge, and from those a median position that must be agreed on.
#pragma once

#include <nuv/core/Point.h>
#include <nuv/core/image/Image.h>

namespace nuv::cv {

/// One edge line in a horizontal band near the bottom of an image.
class LineDetector {
public:
    /// The edges looked for.
    enum Dir {
        Vertical = 0,    ///< vertical edges: a line running up the image
        Horizontal = 1,  ///< horizontal edges
    };

    /// A detector with threshold, band start and band height 0.
    LineDetector() = default;

    /// Edge strengths below the threshold are ignored; above 255 counts as 255.
    void setThreshold(unsigned int threshold);
    /// Rows between the image's bottom and the band's lower end.
    void setSearchStart(unsigned int rows);
    /// The band's height in rows.
    void setSearchHeight(unsigned int rows);

    /// The Gray edge image of `image` (vertical edges for Vertical, horizontal ones else), with
    /// strengths below the threshold zeroed, and *point at the line found: the median of the
    /// rows' strongest-edge columns (the leftmost of equal strengths), in the band's middle
    /// row. More than half the band's rows must have an edge and their columns a mean
    /// deviation from the median of at most 50; otherwise *point is (-1, -1). The band's two
    /// limits are attached to the result as lines when the band fits the image, and a cross
    /// at the point when one is found. `point` must not be null.
    nuv::core::image::Image findLine(nuv::core::image::Image const& image, Dir dir,
                                     nuv::core::Point* point) const;

private:
    unsigned int _threshold = 0;
    unsigned int _searchStart = 20;
    unsigned int _searchHeight = 20;
};

}  // namespace nuv::cv
