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

using Cell = Segmenter::rlCell;

// Region pass: a root starts a new region, any other cell joins the region of its parent,
// which has a lower index and so already carries its region number. A parent without one
// would be a broken chain, which the assertion stops. Returns the number of cells visited.
unsigned int gatherRegions(Cell* cells, unsigned int cellCount, std::vector<Region>& regions) {
    regions.reserve(cellCount < unsigned(maxRegions) ? cellCount : unsigned(maxRegions));
    unsigned int visited = 0;
    for (; visited < cellCount; ++visited) {
        Cell& cell = cells[visited];
        if (cell.label == -1) {
            if (static_cast<int>(regions.size()) >= maxRegions) break;
            cell.label = static_cast<std::int32_t>(regions.size());
            regions.push_back(
                Region{cell.length, centreSumX(cell), centreSumY(cell), cell.segment, -1});
        } else {
            const std::int32_t n = cells[cell.label].label;
            const auto iter = n >= 0 && n < static_cast<std::int32_t>(regions.size())
                                  ? regions.begin() + n
                                  : regions.end();
            assert(regions.end() != iter);
            cell.label = n;
            iter->pixelCount += cell.length;
            iter->sumX += centreSumX(cell);
            iter->sumY += centreSumY(cell);
        }
    }
    return visited;
}

// The classes of the result, with what their records are built from.
struct Classes {
    unsigned int count;
    nuv::core::Vector<Color> const& meanColors;
    nuv::core::Vector<std::string> const& names;
};

nuv::core::image::Segment recordOf(Region const& region, Classes const& classes) {
    const int index = static_cast<int>(region.segmentIndex);
    nuv::core::image::Segment record;
    record.pixelCount = region.pixelCount;
    record.color = classes.meanColors.value(index);
    record.name = classes.names.value(index);
    record.segmentIndex = index;
    record.center = Point(static_cast<int>(region.sumX / region.pixelCount),
                          static_cast<int>(region.sumY / region.pixelCount));
    return record;
}

// Selection: per class, the regions of the largest pixel count survive; of those the first
// created, whose first run comes first in raster order, is the one reported. The records go
// by mean colour, the identity of a class: two classes of equal colour both get the first
// surviving region of that colour, whichever class found it. Returns the record of each class,
// or -1.
std::vector<int> reportLargest(std::vector<Region>& regions, Classes const& classes,
                               std::vector<nuv::core::image::Segment>& records) {
    std::uint32_t largest[32] = {};
    for (Region const& region : regions)
        if (largest[region.segmentIndex] < region.pixelCount)
            largest[region.segmentIndex] = region.pixelCount;

    records.reserve(classes.count);
    std::vector<int> recordOfClass(classes.count, -1);
    for (unsigned int s = 0; s < classes.count; ++s) {
        const Color color = classes.meanColors[static_cast<int>(s)];
        for (Region& region : regions) {
            if (largest[region.segmentIndex] > region.pixelCount) continue;
            if (classes.meanColors.value(static_cast<int>(region.segmentIndex)) != color) continue;
            if (region.reported < 0) {
                region.reported = static_cast<int>(records.size());
                records.push_back(recordOf(region, classes));
            }
            recordOfClass[s] = region.reported;
            break;
        }
    }
    return recordOfClass;
}

// The run lines of the reported regions, in cell order. Only the cells the region pass
// reached belong to a region.
void appendRunLines(Cell const* cells, unsigned int visited, std::vector<Region> const& regions,
                    std::vector<nuv::core::image::Segment>& records) {
    if (records.empty()) return;
    for (unsigned int i = 0; i < visited; ++i) {
        Cell const& cell = cells[i];
        const int reported = regions[static_cast<std::size_t>(cell.label)].reported;
        if (reported >= 0) records[static_cast<std::size_t>(reported)].lines.append(runLine(cell));
    }
}

// One record per class in configured order; a class without a region gets an empty record
// with its colour and name.
nuv::core::image::SegmentList resultList(Classes const& classes,
                                         std::vector<int> const& recordOfClass,
                                         std::vector<nuv::core::image::Segment> const& records) {
    nuv::core::image::SegmentList result;
    for (unsigned int s = 0; s < classes.count; ++s) {
        if (recordOfClass[s] >= 0) {
            result.append(records[static_cast<std::size_t>(recordOfClass[s])]);
        } else {
            nuv::core::image::Segment missing;
            missing.color = classes.meanColors[static_cast<int>(s)];
            missing.name = classes.names[static_cast<int>(s)];
            result.append(missing);
        }
    }
    return result;
}

}  // namespace

nuv::core::image::SegmentList Segmenter::collectRegions(unsigned int cellCount) {
    std::vector<Region> regions;
    const unsigned int visited = gatherRegions(_cells, cellCount, regions);
    const Classes classes{_segmentCount, _meanColors, _names};
    std::vector<nuv::core::image::Segment> records;
    const std::vector<int> recordOfClass = reportLargest(regions, classes, records);
    appendRunLines(_cells, visited, regions, records);
    return resultList(classes, recordOfClass, records);
}

}  // namespace nuv::cv
