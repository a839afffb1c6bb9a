// The passes over the runs: chains of runs become regions, each class keeps its largest
// region, and the result list holds one record per configured class.
//
// Region sizes and centre sums are gathered in a plain array first, and segment records with
// their run lines are built only for the regions that are reported. The result is the same as
// building a record for every region and erasing the smaller ones, without an allocation per
// run for regions that are thrown away.
#include <nuv/cv/Segmenter.h>

#include <nuv/core/Line.h>

#include <cassert>
#include <cstdint>
#include <string>
#include <vector>

namespace nuv::cv {

using nuv::core::Color;
using nuv::core::Line;
using nuv::core::Point;

namespace {

// Beyond this many regions the pass stops; later cells are ignored, also those that would
// have joined an earlier region.
constexpr int maxRegions = 2000;

// One region while the runs are walked.
struct Region {
    std::uint32_t pixelCount;
    // Sums of (x + length / 2) * length and y * length over the runs, wrapping as 32-bit
    // numbers do; the centre is their unsigned quotient by the pixel count.
    std::uint32_t sumX;
    std::uint32_t sumY;
    unsigned int segmentIndex;
    // Index of the region's record in the reported list, or -1.
    int reported;
};

inline std::uint32_t centreSumX(Segmenter::rlCell const& cell) {
    const std::uint32_t length = cell.length;
    return (static_cast<std::uint32_t>(cell.start.x()) + length / 2) * length;
}

inline std::uint32_t centreSumY(Segmenter::rlCell const& cell) {
    return static_cast<std::uint32_t>(cell.start.y()) * cell.length;
}

inline Line runLine(Segmenter::rlCell const& cell) {
    const int x = cell.start.x();
    const int y = cell.start.y();
    return Line(x, y, x + static_cast<int>(cell.length) - 1, y);
}

}  // namespace

nuv::core::image::SegmentList Segmenter::collectRegions(unsigned int cellCount) {
    // Region pass: a root starts a new region, any other cell joins the region of its parent,
    // which has a lower index and so already carries its region number. A parent without one
    // would be a broken chain, which the assertion stops.
    std::vector<Region> segmentList;
    segmentList.reserve(cellCount < unsigned(maxRegions) ? cellCount : unsigned(maxRegions));
    unsigned int visited = 0;
    for (; visited < cellCount; ++visited) {
        rlCell& cell = _cells[visited];
        if (cell.label == -1) {
            if (static_cast<int>(segmentList.size()) >= maxRegions) break;
            cell.label = static_cast<std::int32_t>(segmentList.size());
            segmentList.push_back(
                Region{cell.length, centreSumX(cell), centreSumY(cell), cell.segment, -1});
        } else {
            const std::int32_t n = _cells[cell.label].label;
            const auto iter = n >= 0 && n < static_cast<std::int32_t>(segmentList.size())
                                  ? segmentList.begin() + n
                                  : segmentList.end();
            assert(segmentList.end() != iter);
            cell.label = n;
            iter->pixelCount += cell.length;
            iter->sumX += centreSumX(cell);
            iter->sumY += centreSumY(cell);
        }
    }

    // Selection: per class, the regions of the largest pixel count survive; of those the first
    // created, whose first run comes first in raster order, is the one reported.
    std::uint32_t largest[32] = {};
    for (Region const& region : segmentList)
        if (largest[region.segmentIndex] < region.pixelCount)
            largest[region.segmentIndex] = region.pixelCount;

    // The records go by mean colour, the identity of a class: two classes of equal colour both
    // get the first surviving region of that colour, whichever class found it.
    nuv::core::Vector<Color> const& meanColors = _meanColors;
    nuv::core::Vector<std::string> const& names = _names;
    std::vector<nuv::core::image::Segment> records;
    records.reserve(_segmentCount);
    std::vector<int> recordOfClass(_segmentCount, -1);
    for (unsigned int s = 0; s < _segmentCount; ++s) {
        const Color color = meanColors[static_cast<int>(s)];
        for (std::size_t r = 0; r < segmentList.size(); ++r) {
            Region& region = segmentList[r];
            if (largest[region.segmentIndex] > region.pixelCount) continue;
            if (meanColors.value(static_cast<int>(region.segmentIndex)) != color) continue;
            if (region.reported < 0) {
                nuv::core::image::Segment record;
                record.pixelCount = region.pixelCount;
                record.color = meanColors.value(static_cast<int>(region.segmentIndex));
                record.name = names.value(static_cast<int>(region.segmentIndex));
                record.segmentIndex = static_cast<int>(region.segmentIndex);
                record.center = Point(static_cast<int>(region.sumX / region.pixelCount),
                                      static_cast<int>(region.sumY / region.pixelCount));
                region.reported = static_cast<int>(records.size());
                records.push_back(record);
            }
            recordOfClass[s] = region.reported;
            break;
        }
    }

    // The run lines of the reported regions, in cell order. Only the cells the region pass
    // reached belong to a region.
    if (!records.empty()) {
        for (unsigned int i = 0; i < visited; ++i) {
            rlCell const& cell = _cells[i];
            const int reported = segmentList[static_cast<std::size_t>(cell.label)].reported;
            if (reported >= 0)
                records[static_cast<std::size_t>(reported)].lines.append(runLine(cell));
        }
    }

    nuv::core::image::SegmentList result;
    for (unsigned int s = 0; s < _segmentCount; ++s) {
        if (recordOfClass[s] >= 0) {
            result.append(records[static_cast<std::size_t>(recordOfClass[s])]);
        } else {
            nuv::core::image::Segment missing;
            missing.color = meanColors[static_cast<int>(s)];
            missing.name = names[static_cast<int>(s)];
            result.append(missing);
        }
    }
    return result;
}

}  // namespace nuv::cv
