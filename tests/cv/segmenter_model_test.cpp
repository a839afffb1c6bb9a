// Segmenter::doSegmentation against a plain model of the algorithm on random pictures:
// classes tried one by one instead of the mask table, one pixel at a time, regions kept in a
// list with a map of iterators and erased by the selection. Sequences of frames on one
// object cover changing sizes, regions of interest and new class lists between frames.
#include <nuv/core.h>
#include <nuv/cv/Segmenter.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <list>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

using nuv::core::Color;
using nuv::core::Line;
using nuv::core::Point;
using nuv::core::Roi;
using nuv::core::Size;
using nuv::core::image::Image;
using nuv::core::image::ImageInfo;
using ImageSegment = nuv::core::image::Segment;

class Model {
public:
    void configure(nuv::cv::SegmentList const& list) {
        _classes.clear();
        for (auto it = list.constBegin(); it != list.constEnd() && _classes.size() < 32; ++it)
            _classes.push_back(*it);
    }

    // Pixels packed, three bytes each.
    std::vector<ImageSegment> segment(std::vector<std::uint8_t> const& pixels, int width,
                                      int height) {
        const unsigned minRun = _minRun;
        if (width != _width || height != _height) {
            _width = width;
            _height = height;
            _cells.assign(static_cast<std::size_t>(width * height) + 1, Cell());
            _rowCells.assign(static_cast<std::size_t>(width), -1);
            _minRun = width > 349 ? 4 : 2;
        }
        if (_classes.empty()) return {};

        _rowCells.assign(static_cast<std::size_t>(width), -1);
        unsigned previous = 255;
        _current = 0;
        _cells[0] = Cell();
        _cellIndex = 0;
        int column = 0, row = 0;
        for (int i = 0; i < width * height; ++i) {
            const unsigned cls = classify(&pixels[3 * static_cast<std::size_t>(i)]);
            Cell& c = _cells[_current];
            if (cls != 255) {
                if (cls == previous) {
                    c.length = static_cast<std::uint16_t>(c.length + 1);
                } else {
                    flush(minRun);
                    Cell& n = _cells[_current];
                    n.x = column;
                    n.y = row;
                    n.length = 1;
                    n.label = -1;
                    n.segment = cls;
                }
            } else {
                _rowCells[static_cast<std::size_t>(column)] = -1;
            }
            ++column;
            unsigned thisClass = cls;
            if (column == width) {
                flush(minRun);
                ++row;
                column = 0;
                Cell& n = _cells[_current];
                n.x = 0;
                n.y = row;
                n.label = -1;
                n.length = 0;
                thisClass = 255;
            }
            previous = thisClass;
        }

        long long count = _cellIndex;
        if (_cells[_current].length == 0) --count;
        if (count < 0) count = 0;

        std::list<ImageSegment> segmentList;
        std::map<unsigned, std::list<ImageSegment>::iterator> regionMap;
        int region = -1;
        for (long long i = 0; i < count; ++i) {
            Cell& c = _cells[static_cast<std::size_t>(i)];
            const Line line(c.x, c.y, c.x + c.length - 1, c.y);
            const std::uint32_t sx = (static_cast<std::uint32_t>(c.x) + c.length / 2u) * c.length;
            const std::uint32_t sy = static_cast<std::uint32_t>(c.y) * c.length;
            if (c.label == -1) {
                if (++region > 1999) break;
                c.label = region;
                ImageSegment s;
                s.color = _classes[c.segment].meanColor();
                s.name = _classes[c.segment].name();
                s.lines.append(line);
                s.pixelCount = c.length;
                s.segmentIndex = static_cast<int>(c.segment);
                s.center = Point(static_cast<int>(sx), static_cast<int>(sy));
                regionMap[static_cast<unsigned>(region)] = segmentList.insert(segmentList.end(), s);
            } else {
                const int n = _cells[static_cast<std::size_t>(c.label)].label;
                auto found = regionMap.find(static_cast<unsigned>(n));
                if (found == regionMap.end()) {
                    ADD_FAILURE() << "broken chain at cell " << i;
                    return {};
                }
                c.label = n;
                ImageSegment& s = *found->second;
                s.pixelCount += c.length;
                s.lines.append(line);
                s.center = Point(static_cast<int>(static_cast<std::uint32_t>(s.center.x()) + sx),
                                 static_cast<int>(static_cast<std::uint32_t>(s.center.y()) + sy));
            }
        }

        std::map<unsigned, unsigned> area;
        for (ImageSegment const& s : segmentList)
            if (area[static_cast<unsigned>(s.segmentIndex)] < s.pixelCount)
                area[static_cast<unsigned>(s.segmentIndex)] = s.pixelCount;
        for (auto it = segmentList.begin(); it != segmentList.end();) {
            if (area[static_cast<unsigned>(it->segmentIndex)] > it->pixelCount) {
                it = segmentList.erase(it);
                continue;
            }
            it->center = Point(
                static_cast<int>(static_cast<std::uint32_t>(it->center.x()) / it->pixelCount),
                static_cast<int>(static_cast<std::uint32_t>(it->center.y()) / it->pixelCount));
            ++it;
        }

        std::vector<ImageSegment> result;
        for (nuv::cv::Segment const& cls : _classes) {
            auto it = segmentList.begin();
            while (it != segmentList.end() && it->color != cls.meanColor()) ++it;
            if (it != segmentList.end()) {
                result.push_back(*it);
            } else {
                ImageSegment missing;
                missing.color = cls.meanColor();
                missing.name = cls.name();
                result.push_back(missing);
            }
        }
        return result;
    }

private:
    struct Cell {
        int label = -1;
        std::uint16_t length = 0;
        unsigned segment = 0;
        int x = 0, y = 0;
    };

    unsigned classify(std::uint8_t const* pixel) const {
        for (unsigned s = 0; s < _classes.size(); ++s) {
            bool accepted = true;
            for (unsigned c = 0; c < 3; ++c)
                if (_classes[s].channelUsed(c) && !_classes[s].colorIndex(c).at(pixel[c]))
                    accepted = false;
            if (accepted) return s;
        }
        return 255;
    }

    void flush(unsigned minRun) {
        Cell& c = _cells[_current];
        if (minRun > c.length) {
            for (int i = 0; i < c.length; ++i) _rowCells[static_cast<std::size_t>(c.x + i)] = -1;
            return;
        }
        for (int i = 0; i < c.length;) {
            while (i < c.length && _rowCells[static_cast<std::size_t>(c.x + i)] == -1) ++i;
            if (i >= c.length) break;
            const int a = _rowCells[static_cast<std::size_t>(c.x + i)];
            if (_cells[static_cast<std::size_t>(a)].segment == c.segment) connect(c, a);
            i = _cells[static_cast<std::size_t>(a)].x + _cells[static_cast<std::size_t>(a)].length -
                c.x;
        }
        for (int i = 0; i < c.length; ++i)
            _rowCells[static_cast<std::size_t>(c.x + i)] = static_cast<int>(_cellIndex);
        ++_current;
        ++_cellIndex;
    }

    int root(int index) const {
        while (_cells[static_cast<std::size_t>(index)].label != -1)
            index = _cells[static_cast<std::size_t>(index)].label;
        return index;
    }

    void connect(Cell& c, int a) {
        const int r = c.label;
        const int p = _cells[static_cast<std::size_t>(a)].label;
        if (r == -1) {
            c.label = p == -1 ? a : p;
        } else if (p == -1) {
            _cells[static_cast<std::size_t>(a)].label = r;
        } else if (r > p) {
            const int q = root(p);
            _cells[static_cast<std::size_t>(r)].label = q;
            c.label = q;
        } else if (r < p) {
            const int q = root(r);
            _cells[static_cast<std::size_t>(p)].label = q;
            _cells[static_cast<std::size_t>(a)].label = q;
        }
    }

    std::vector<nuv::cv::Segment> _classes;
    std::vector<Cell> _cells;
    std::vector<int> _rowCells;
    std::size_t _current = 0;
    unsigned _cellIndex = 0;
    unsigned _minRun = 4;
    int _width = 0;
    int _height = 0;
};

std::string describe(ImageSegment const& segment) {
    std::ostringstream text;
    text << segment.name << " #" << segment.segmentIndex << " colour " << std::hex
         << segment.color.argb() << std::dec << " pixels " << segment.pixelCount << " centre ("
         << segment.center.x() << "," << segment.center.y() << ") lines";
    for (auto it = segment.lines.constBegin(); it != segment.lines.constEnd(); ++it)
        text << " (" << it->x0() << "," << it->y0() << ")-(" << it->x1() << "," << it->y1() << ")";
    return text.str();
}

// Eight colours; the classes accept some of their channel values, so that classes overlap
// and a pixel may be taken by an earlier class.
const std::uint8_t palette[8][3] = {{20, 30, 40},   {20, 90, 40},  {200, 30, 40}, {60, 60, 60},
                                    {200, 90, 150}, {60, 30, 150}, {120, 120, 0}, {0, 0, 0}};

nuv::cv::SegmentList randomClasses(std::mt19937& rng) {
    std::uniform_int_distribution<int> count(1, 5), colour(0, 7), coin(0, 3);
    nuv::cv::SegmentList list;
    const int n = count(rng);
    for (int s = 0; s < n; ++s) {
        nuv::cv::Segment segment;
        segment.setName("class" + std::to_string(s));
        const int colours = 1 + coin(rng) % 2;
        for (int k = 0; k < colours; ++k) {
            std::uint8_t const* p = palette[colour(rng)];
            segment.addColor(Color::fromRgba(p[0], p[1], p[2]));
        }
        for (unsigned c = 0; c < 3; ++c)
            if (coin(rng) == 0) segment.setChannelUsed(c, false);
        // Now and then two classes share a mean colour.
        if (s > 0 && coin(rng) == 0) segment.setMeanColor(list.last().meanColor());
        list.append(segment);
    }
    return list;
}

// Rectangles of palette colours on a palette background, with scattered single pixels.
Image randomPicture(std::mt19937& rng, int width, int height) {
    Image image(ImageInfo(static_cast<unsigned>(width), static_cast<unsigned>(height),
                          nuv::core::image::BGR));
    std::uniform_int_distribution<int> colour(0, 7), percent(0, 99);
    std::vector<int> index(static_cast<std::size_t>(width * height), colour(rng));
    const int rectangles = 1 + percent(rng) % 12;
    for (int r = 0; r < rectangles; ++r) {
        const int x0 = percent(rng) * width / 100, y0 = percent(rng) * height / 100;
        const int x1 = x0 + percent(rng) * width / 100, y1 = y0 + percent(rng) * height / 100;
        const int c = colour(rng);
        for (int y = y0; y < height && y <= y1; ++y)
            for (int x = x0; x < width && x <= x1; ++x)
                index[static_cast<std::size_t>(y * width + x)] = c;
    }
    const int noise = percent(rng) % 20;
    for (int& i : index)
        if (percent(rng) < noise) i = colour(rng);
    unsigned char* p = image.data();
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < 3; ++c)
                p[y * static_cast<int>(image.step()) + 3 * x + c] =
                    palette[index[static_cast<std::size_t>(y * width + x)]][c];
    return image;
}

// The region's pixels packed, as the segmenter's work image holds them.
std::vector<std::uint8_t> packedRegion(Image const& image, Roi const& roi) {
    std::vector<std::uint8_t> pixels;
    for (unsigned y = 0; y < roi.size().height(); ++y) {
        unsigned char const* row =
            image.constData() + (roi.offset().y() + y) * image.step() + 3 * roi.offset().x();
        pixels.insert(pixels.end(), row, row + 3 * roi.size().width());
    }
    return pixels;
}

// Returns the number of classes found, so that the caller can tell the pictures are not
// all empty.
int expectSame(Image const& result, std::vector<ImageSegment> const& expected) {
    const nuv::core::image::SegmentList list = nuv::core::image::segmentList(result);
    EXPECT_EQ(list.size(), static_cast<int>(expected.size()));
    if (list.size() != static_cast<int>(expected.size())) return 0;
    std::size_t i = 0;
    int found = 0;
    for (auto it = list.constBegin(); it != list.constEnd(); ++it, ++i) {
        EXPECT_EQ(describe(*it), describe(expected[i])) << "entry " << i;
        EXPECT_TRUE(*it == expected[i]) << "entry " << i;
        if (it->pixelCount > 0) ++found;
    }
    return found;
}

TEST(SegmenterModel, RandomFrameSequencesMatchThePlainModel) {
    std::mt19937 rng(0x5e9);
    std::uniform_int_distribution<int> narrow(1, 70), tall(1, 40), wide(340, 380), percent(0, 99);
    int found = 0, entries = 0, multiRun = 0;
    for (int trial = 0; trial < 150; ++trial) {
        SCOPED_TRACE("trial " + std::to_string(trial));
        nuv::cv::Segmenter segmenter;
        Model model;
        nuv::cv::SegmentList list = randomClasses(rng);
        segmenter.setColorSegments(list);
        model.configure(list);

        int width = narrow(rng), height = tall(rng);
        for (int frame = 0; frame < 5; ++frame) {
            SCOPED_TRACE("frame " + std::to_string(frame));
            const int choice = percent(rng);
            if (choice < 30) {
                width = percent(rng) < 15 ? wide(rng) : narrow(rng);
                height = tall(rng);
            } else if (choice < 40) {
                list = randomClasses(rng);
                segmenter.setColorSegments(list);
                model.configure(list);
            }
            // Half the frames cut a region out of a larger picture.
            const bool cut = percent(rng) < 50;
            const int marginX = cut ? 1 + percent(rng) % 9 : 0;
            const int marginY = cut ? 1 + percent(rng) % 5 : 0;
            Image image = randomPicture(rng, width + 2 * marginX, height + 2 * marginY);
            const Roi roi(Point(marginX, marginY), Size(width, height));
            if (cut) nuv::core::image::setRoi(image, roi);

            const Image result = segmenter.doSegmentation(image);

            ASSERT_EQ(result.info().width, static_cast<unsigned>(width));
            const std::vector<ImageSegment> expected =
                model.segment(packedRegion(image, roi), width, height);
            found += expectSame(result, expected);
            entries += static_cast<int>(expected.size());
            for (ImageSegment const& s : expected)
                if (s.lines.size() > 1) ++multiRun;
            if (HasFailure()) return;
        }
    }
    // The pictures are to exercise the linking, not only the entries for classes not found.
    EXPECT_GT(found, entries / 3);
    EXPECT_GT(multiRun, entries / 4);
}

}  // namespace
