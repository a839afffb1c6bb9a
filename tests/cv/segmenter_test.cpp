// Segmenter on pictures drawn in the test: exact regions of small examples (runs, minimum
// run, the last stored run, connectivity, classification, the reported region, the region
// cap), the set-up of classes and buffers, and the images it accepts.
#include <nuv/cv.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <list>
#include <map>
#include <random>
#include <new>
#include <utility>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace nuv::core::image;
using nuv::core::Color;
using nuv::core::Point;
using nuv::core::Roi;
using nuv::core::Size;
using nuv::cv::Segmenter;
using Rows = std::vector<std::string>;

// Letters A..Y stand for the channel-0 values 10..250; any other character is a pixel that no
// class of these tests accepts.
unsigned char valueOf(char letter) {
    return letter >= 'A' && letter <= 'Y' ? static_cast<unsigned char>((letter - 'A' + 1) * 10) : 0;
}

// "A BA T": one class per word, accepting the channel-0 values of its letters and looking at
// no other channel, named after its first letter; "B=A" takes the first class's mean colour.
nuv::cv::SegmentList classes(std::string const& words) {
    nuv::cv::SegmentList list;
    std::istringstream stream(words);
    for (std::string letters; stream >> letters;) {
        nuv::cv::Segment segment;
        segment.setName(std::string(1, char(std::tolower(letters[0]))));
        for (char letter : letters.substr(0, letters.find('=')))
            segment.addColor(Color::fromRgba(valueOf(letter), 0, 0));
        if (letters.find('=') != std::string::npos) segment.setMeanColor(list.first().meanColor());
        segment.setChannelUsed(1, false);
        segment.setChannelUsed(2, false);
        list.append(segment);
    }
    return list;
}

// A packed three-channel picture, one string a row (rows shorter than the first are
// padded); channels 1 and 2 hold a position pattern that the classes ignore.
Image picture(Rows const& rows) {
    unsigned const width = static_cast<unsigned>(rows[0].size());
    Image image(ImageInfo(width, static_cast<unsigned>(rows.size()), BGR));
    for (unsigned y = 0; y < rows.size(); ++y)
        for (unsigned x = 0; x < width; ++x) {
            unsigned char* pixel = image.data() + y * image.step() + 3 * x;
            pixel[0] = x < rows[y].size() ? valueOf(rows[y][x]) : 0;
            pixel[1] = static_cast<unsigned char>(x * 37 + y * 11);
            pixel[2] = static_cast<unsigned char>(x * 5 + y * 71);
        }
    return image;
}

// Rows split at "|".
Image picture(std::string const& text) {
    Rows rows;
    std::istringstream stream(text);
    for (std::string row; std::getline(stream, row, '|');) rows.push_back(row);
    return picture(rows);
}

// An entry as "name#index pixels (centre) x0-x1/y ...", one run a line of the region.
std::string describe(Segment const& segment) {
    std::ostringstream text;
    text << segment.name << "#" << segment.segmentIndex << " " << segment.pixelCount << " ("
         << segment.center.x() << "," << segment.center.y() << ")";
    for (auto it = segment.lines.constBegin(); it != segment.lines.constEnd(); ++it) {
        text << " " << it->x0() << "-" << it->x1() << "/" << it->y0();
    }
    return text.str();
}

// The entries of a result joined by "; ", each checked to carry its class's mean colour.
std::string entries(Image const& result, nuv::cv::SegmentList const& list) {
    std::string text;
    auto cls = list.constBegin();
    SegmentList const found = segmentList(result);
    for (auto it = found.constBegin(); it != found.constEnd(); ++it, ++cls) {
        text += (text.empty() ? "" : "; ") + describe(*it);
        if (cls != list.constEnd()) {
            EXPECT_EQ(it->color, cls->meanColor()) << describe(*it);
        }
    }
    return text;
}

// The minimum run chosen for a size counts from the second frame of that size on.
Image secondFrame(Segmenter& segmenter, Image const& image) {
    segmenter.doSegmentation(image);
    return segmenter.doSegmentation(image);
}

// One class per word; rows of the picture split at "|". The rows show the region of each
// class in list order, the last stored run taking no part, a cell re-pointed twice leaving
// two roots, thin bridges, corners, other classes, shared values, centres, ties, classes of
// one mean colour reporting the first region of that colour, default entries, and the minimum run
// at widths 349 and 350.
TEST(SegmenterExamples, ExactRegions) {
    struct Case {
        char const* classes;
        std::string picture;
        char const* expected;
    } const cases[] = {
        {"A B", "AAA..BB.|.AAA.BB.|........|AA......",
         "a#0 6 (1,0) 0-2/0 1-3/1; b#1 4 (6,0) 5-6/0 5-6/1"},
        {"A",
         "....................AA|....AA....AAAAAA....AA|....AA....AA..AAAAAAAA|"
         "....AAAAAAAA..........|......................|AA....................",
         "a#0 20 (9,2) 4-5/1 10-15/1 4-5/2 10-11/2 4-11/3"},
        {"A T", "AAAAAA..|..A.....|AAAA....|........|......TT", "a#0 6 (3,0) 0-5/0; t#0 0 (0,0)"},
        {"A T", "AAAAAA..|..AA....|AAAA....|........|......TT",
         "a#0 12 (2,0) 0-5/0 2-3/1 0-3/2; t#0 0 (0,0)"},
        {"A", "AAAA..|......", "a#0 0 (0,0)"},
        {"A", "AAAAA|AAAAA", "a#0 5 (2,0) 0-4/0"},
        {"A", "AA..AA|AA..AA|AAAAAA", "a#0 8 (3,0) 0-1/0 4-5/0 0-1/1 4-5/1"},
        {"A T", "AAA.....|...AAAA.|........|TT......", "a#0 4 (5,1) 3-6/1; t#0 0 (0,0)"},
        {"A B T", "AAAA..AABB|BBBB......|AAAA......|..........|TT........",
         "a#0 4 (2,0) 0-3/0; b#1 4 (2,1) 0-3/1; t#0 0 (0,0)"},
        {"A T", "AA.AA.AA|AAAAAAAA|AA......|........|TT......",
         "a#0 16 (3,0) 0-1/0 3-4/0 6-7/0 0-7/1 0-1/2; t#0 0 (0,0)"},
        {"A BA T", "BBAABB|......|TTTT..", "a#0 2 (3,0) 2-3/0; b#1 2 (1,0) 0-1/0; t#0 0 (0,0)"},
        {"BA A T", "BBAABB|......|TTTT..", "b#0 6 (3,0) 0-5/0; a#0 0 (0,0); t#0 0 (0,0)"},
        {"A T", "AAAAAAAAAA..|............|TT..........", "a#0 10 (5,0) 0-9/0; t#0 0 (0,0)"},
        {"A B=A T", "..BB....|........|AAAAAA..|........|TT......",
         "b#1 2 (3,0) 2-3/0; b#1 2 (3,0) 2-3/0; t#0 0 (0,0)"},
        {"A T",
         "AAAAAAAAAA..........|............AAAAAAAA|AAAAAAAAAA..AAAAAAAA|AAAAAAAAAA..AAAAAAAA|"
         "AAAAAAAAAA..AAAAAAAA|AAAAAAAAAA..AAAAAAAA|....................|TT..................",
         "a#0 40 (16,3) 12-19/1 12-19/2 12-19/3 12-19/4 12-19/5; t#0 0 (0,0)"},
        {"A B T", "AAA...|......|TT....", "a#0 3 (1,0) 0-2/0; b#0 0 (0,0); t#0 0 (0,0)"},
        {"A B C D T", "A.BB.CCC.DDDD" + std::string(336, '.') + "||TTTT",
         "a#0 0 (0,0); b#1 2 (3,0) 2-3/0; c#2 3 (6,0) 5-7/0; d#3 4 (11,0) 9-12/0; t#0 0 (0,0)"},
        {"A B C D T", "A.BB.CCC.DDDD" + std::string(337, '.') + "||TTTT",
         "a#0 0 (0,0); b#0 0 (0,0); c#0 0 (0,0); d#3 4 (11,0) 9-12/0; t#0 0 (0,0)"}};
    for (Case const& c : cases) {
        Segmenter segmenter;
        nuv::cv::SegmentList const list = classes(c.classes);
        segmenter.setColorSegments(list);
        EXPECT_EQ(entries(secondFrame(segmenter, picture(c.picture)), list), c.expected)
            << c.picture;
    }
}

// Runs of two pixels on every other row, 30 a row, each its own region, then one run of B.
Image isolatedRuns(int count) {
    Rows rows(static_cast<std::size_t>(2 * (count / 30) + 5), std::string(100, '.'));
    for (int i = 0; i < count; ++i) rows[2 * (i / 30)].replace(3 * (i % 30), 2, "AA");
    rows[2 * (count / 30)].replace(3 * (count % 30), 2, "BB");
    rows.back().replace(0, 2, "TT");
    return picture(rows);
}

// The region pass stops at the 2001st region; cells after it count for no region, not even
// for an earlier one.
TEST(SegmenterExamples, RegionCap) {
    nuv::cv::SegmentList const list = classes("A B T");
    Segmenter segmenter;
    segmenter.setColorSegments(list);
    EXPECT_EQ(entries(secondFrame(segmenter, isolatedRuns(1999)), list),
              "a#0 2 (1,0) 0-1/0; b#1 2 (58,132) 57-58/132; t#0 0 (0,0)");
    EXPECT_EQ(entries(segmenter.doSegmentation(isolatedRuns(2000)), list),
              "a#0 2 (1,0) 0-1/0; b#0 0 (0,0); t#0 0 (0,0)");
    // A bar down the left edge is region 0; runs from row 2 on make the others, and the
    // 2001st begins in row 134.
    Rows rows(150, std::string(100, '.'));
    for (std::size_t y = 0; y < rows.size(); ++y) {
        rows[y].replace(0, 4, "AAAA");
        for (std::size_t k = 0; y >= 2 && y % 2 == 0 && k < 30; ++k)
            rows[y].replace(10 + 3 * k, 2, "AA");
    }
    rows[141].replace(50, 10, "BBBBBBBBBB");
    Image const result = segmenter.doSegmentation(picture(rows));
    EXPECT_EQ(segmentList(result).first().pixelCount, 540u);
    EXPECT_EQ(segmentList(result).first().lines.last(), nuv::core::Line(0, 134, 3, 134));
    EXPECT_EQ(std::next(segmentList(result).constBegin())->pixelCount, 0u);  // b
}

// The minimum run is 4 on a new object; sizing for a width sets it for the frames after.
TEST(SegmenterSetup, MinimumRunCountsFromTheFrameAfterTheSizing) {
    nuv::cv::SegmentList const list = classes("A T");
    Image const narrow = picture("AAA" + std::string(97, '.') + "|||TTTT");
    Image const broad = picture("AAA" + std::string(397, '.') + "|||TTTT");
    Segmenter segmenter;
    segmenter.setColorSegments(list);
    std::pair<Image, unsigned> const frames[] = {{narrow, 0}, {narrow, 3}, {broad, 3},
                                                 {broad, 0},  {narrow, 0}, {narrow, 3}};
    for (auto const& [image, pixels] : frames)
        EXPECT_EQ(segmentList(segmenter.doSegmentation(image)).first().pixelCount, pixels);
    // A frame without classes sizes the buffers too.
    Segmenter classless;
    EXPECT_EQ(segmentList(classless.doSegmentation(narrow)).size(), 0);
    classless.setColorSegments(list);
    EXPECT_EQ(segmentList(classless.doSegmentation(narrow)).first().pixelCount, 3u);
    EXPECT_THROW(classless.setupSegmentation(50000, 50000), std::bad_array_new_length);
    EXPECT_THROW(Segmenter().setupSegmentation(-1, 7), std::bad_array_new_length);
}

// Only the first 32 classes take part; a new list, an empty one or a reset leave no trace
// of the old; the default list names every class with its colour.
TEST(SegmenterSetup, ClassLists) {
    std::string words;
    for (int i = 0; i < 31; ++i) words += "A ";
    nuv::cv::SegmentList const many = classes(words + "Y X");  // 33 classes
    Segmenter segmenter;
    EXPECT_EQ(segmenter.createSegmentList().size(), 0);
    segmenter.setColorSegments(many);
    Image defaults;
    setSegmentList(defaults, segmenter.createSegmentList());
    std::string expected;
    for (int i = 0; i < 31; ++i) expected += "a#0 0 (0,0); ";
    EXPECT_EQ(entries(defaults, many), expected + "y#0 0 (0,0)");
    // Class 31 has the top bit of the mask; the 33rd has none, and its pixels belong to no
    // class, in particular not to class 0.
    EXPECT_EQ(entries(secondFrame(segmenter, picture("YYY.XXX.|YYY.XXX.")), many),
              expected + "y#31 3 (1,0) 0-2/0");
    EXPECT_TRUE(segmentList(segmenter.doSegmentation(picture("....|....|...."))) ==
                segmenter.createSegmentList());

    for (int way = 0; way < 3; ++way) {
        Segmenter again;
        again.setColorSegments(classes("A B"));
        if (way == 0) again.setColorSegments(classes("C"));
        if (way == 1) again.setColorSegments(nuv::cv::SegmentList());
        if (way == 2) again.resetColorSegments();
        Image const frame = picture("AAAA.CC.|........|CCC..TT.");
        Image const out = secondFrame(again, frame);
        EXPECT_EQ(entries(out, classes("C")), way == 0 ? "c#0 2 (6,0) 5-6/0" : "");
        EXPECT_EQ(out.constData(), frame.constData());
        again.setColorSegments(classes("A T"));  // as on a new object
        EXPECT_EQ(entries(again.doSegmentation(frame), classes("A T")),
                  "a#0 4 (2,0) 0-3/0; t#0 0 (0,0)");
    }
}

// The region is segmented in its own coordinates; every image but the null one is walked as
// packed three-byte pixels, within its buffer; the input keeps its pixels and attachments.
TEST(SegmenterImage, WhatIsRead) {
    nuv::cv::SegmentList const list = classes("A B");
    Image framed = picture("AAAAAAAAAA|AAA..BB.AA|A.AAA.BB.A|AAAAAAAAAA|AAAAAAAAAA");
    std::vector<unsigned char> const before(framed.constData(), framed.constData() + 150);
    setRoi(framed, Roi(Point(1, 1), Size(8, 3)));
    Segmenter segmenter;
    segmenter.setColorSegments(list);
    Image const result = secondFrame(segmenter, framed);
    EXPECT_EQ(result.info(), ImageInfo(8, 3, BGR));
    EXPECT_EQ(entries(result, list), "a#0 5 (1,0) 0-1/0 1-3/1; b#1 4 (5,0) 4-5/0 5-6/1");
    EXPECT_EQ(segmentList(framed).size(), 0);
    EXPECT_TRUE(std::equal(before.begin(), before.end(), framed.constData()));
    setRoi(framed, Roi(Point(30, 30), Size(4, 4)));
    EXPECT_EQ(entries(segmenter.doSegmentation(framed), list), "a#0 0 (0,0); b#0 0 (0,0)");
    EXPECT_TRUE(segmenter.doSegmentation(Image()).isNull());
    // Every third byte is A: as three-byte pixels the first two rows are all A.
    Image bgra(ImageInfo(4, 3, BGRA));
    for (unsigned i = 0; i < 48; ++i) bgra.data()[i] = i % 3 == 0 ? 10 : 0;
    Image const four = secondFrame(segmenter, bgra);
    EXPECT_EQ(four.constData(), bgra.constData());
    EXPECT_EQ(entries(four, list), "a#0 8 (2,0) 0-3/0 0-3/1; b#0 0 (0,0)");
    // Four pixels a row and one of padding; read as packed the rows are "....", "AA..", "..BB".
    Image padded(ImageInfo(4, 3, BGR), 15);
    std::fill(padded.data(), padded.data() + 45, 0);
    padded.data()[12] = padded.data()[15] = 10;
    padded.data()[30] = padded.data()[33] = 20;
    EXPECT_EQ(entries(segmenter.doSegmentation(padded), list), "a#0 2 (1,1) 0-1/1; b#0 0 (0,0)");
    // A one-channel image of 48 bytes gives the first 16 pixels; the rest reads as nothing.
    Image gray(ImageInfo(8, 6, Gray));
    std::fill(gray.data(), gray.data() + 48, valueOf('A'));
    EXPECT_EQ(entries(segmenter.doSegmentation(gray), list), "a#0 8 (4,0) 0-7/0; b#0 0 (0,0)");
}

// A plain model: classes tried one by one and one pixel at a time, each row cut into runs
// and linked to the row above, regions kept in a list and erased by the selection.
class Model {
public:
    void configure(nuv::cv::SegmentList const& list) {
        _classes.assign(list.constBegin(), list.constEnd());
        if (_classes.size() > 32) _classes.resize(32);
    }

    std::string segment(Image const& image, Roi const& roi) {
        int const width = int(roi.size().width()), height = int(roi.size().height());
        auto pixel = [&](int x, int y) {
            return image.constData() + (roi.offset().y() + y) * int(image.step()) +
                   3 * (roi.offset().x() + x);
        };
        int const minRun = _minRun;
        if (width != _width || height != _height) _minRun = width > 349 ? 4 : 2;
        _width = width;
        _height = height;
        if (_classes.empty()) return "";
        _cells.clear();
        std::vector<int> above(static_cast<std::size_t>(width), -1);
        for (int y = 0; y < height; ++y) {
            std::vector<int> here(static_cast<std::size_t>(width), -1);
            for (int x = 0, end = 0; x < width; x = end) {
                unsigned const cls = classify(pixel(x, y));
                for (end = x + 1; cls < 32 && end < width && classify(pixel(end, y)) == cls;) ++end;
                if (cls == 32 || end - x < minRun) continue;
                Cell c{-1, x, y, end - x, cls};
                for (int i = x; i < end;) {
                    int const a = above[std::size_t(i)];
                    if (a == -1) {
                        ++i;
                        continue;
                    }
                    if (_cells[std::size_t(a)].cls == cls) connect(c, a);
                    i = _cells[std::size_t(a)].x + _cells[std::size_t(a)].length;
                }
                for (int i = x; i < end; ++i) here[std::size_t(i)] = int(_cells.size());
                _cells.push_back(c);
            }
            above = here;
        }
        // The last stored run of the frame takes part in no region.
        std::list<Segment> regions;
        std::map<int, std::list<Segment>::iterator> byNumber;
        for (std::size_t i = 0; i + 1 < _cells.size(); ++i) {
            Cell& c = _cells[i];
            std::uint32_t const sx = std::uint32_t(c.x + c.length / 2) * c.length;
            std::uint32_t const sy = std::uint32_t(c.y) * c.length;
            if (c.label == -1) {
                if (byNumber.size() == 2000) break;
                c.label = int(byNumber.size());
                Segment s;
                s.name = _classes[c.cls].name();
                s.color = _classes[c.cls].meanColor();
                s.segmentIndex = int(c.cls);
                s.center = Point(int(sx), int(sy));
                byNumber[c.label] = regions.insert(regions.end(), s);
            } else {
                c.label = _cells[std::size_t(c.label)].label;
                Segment& s = *byNumber.at(c.label);
                s.center = Point(int(std::uint32_t(s.center.x()) + sx),
                                 int(std::uint32_t(s.center.y()) + sy));
            }
            Segment& s = *byNumber.at(c.label);
            s.pixelCount += unsigned(c.length);
            s.lines.append(nuv::core::Line(c.x, c.y, c.x + c.length - 1, c.y));
        }
        std::map<int, unsigned> largest;
        for (Segment const& s : regions)
            largest[s.segmentIndex] = std::max(largest[s.segmentIndex], s.pixelCount);
        std::string result;
        for (nuv::cv::Segment const& cls : _classes) {
            Segment entry;
            entry.name = cls.name();
            for (Segment const& s : regions)
                if (s.pixelCount == largest[s.segmentIndex] && s.color == cls.meanColor()) {
                    entry = s;
                    entry.center = Point(int(std::uint32_t(s.center.x()) / s.pixelCount),
                                         int(std::uint32_t(s.center.y()) / s.pixelCount));
                    break;
                }
            result += (result.empty() ? "" : "; ") + describe(entry);
        }
        return result;
    }

private:
    struct Cell {
        int label, x, y, length;
        unsigned cls;
    };

    unsigned classify(unsigned char const* pixel) const {
        for (unsigned s = 0; s < _classes.size(); ++s)
            if ((!_classes[s].channelUsed(0) || _classes[s].colorIndex(0).at(pixel[0])) &&
                (!_classes[s].channelUsed(1) || _classes[s].colorIndex(1).at(pixel[1])) &&
                (!_classes[s].channelUsed(2) || _classes[s].colorIndex(2).at(pixel[2])))
                return s;
        return 32;
    }

    int root(int index) const {
        while (_cells[std::size_t(index)].label != -1) index = _cells[std::size_t(index)].label;
        return index;
    }

    // Only the node of the newer chain is re-pointed: no path compression, no second merge.
    void connect(Cell& c, int a) {
        int const r = c.label, p = _cells[std::size_t(a)].label;
        if (r == -1) {
            c.label = p == -1 ? a : p;
        } else if (p == -1) {
            _cells[std::size_t(a)].label = r;
        } else if (r > p) {
            c.label = _cells[std::size_t(r)].label = root(p);
        } else if (r < p) {
            _cells[std::size_t(a)].label = _cells[std::size_t(p)].label = root(r);
        }
    }

    std::vector<nuv::cv::Segment> _classes;
    std::vector<Cell> _cells;
    int _minRun = 4, _width = 0, _height = 0;
};

// Eight colours; classes accept some of their channel values, so that classes overlap and a
// pixel may be taken by an earlier class.
unsigned char const palette[8][3] = {{20, 30, 40},   {20, 90, 40},  {200, 30, 40}, {60, 60, 60},
                                     {200, 90, 150}, {60, 30, 150}, {120, 120, 0}, {0, 0, 0}};

nuv::cv::SegmentList randomClasses(std::mt19937& rng) {
    nuv::cv::SegmentList list;
    for (int s = 0, n = 1 + int(rng() % 5); s < n; ++s) {
        nuv::cv::Segment segment;
        segment.setName("class" + std::to_string(s));
        for (int k = 0, colours = 1 + int(rng() % 2); k < colours; ++k) {
            unsigned char const* p = palette[rng() % 8];
            segment.addColor(Color::fromRgba(p[0], p[1], p[2]));
        }
        for (unsigned c = 0; c < 3; ++c)
            if (rng() % 4 == 0) segment.setChannelUsed(c, false);
        if (s > 0 && rng() % 4 == 0) segment.setMeanColor(list.last().meanColor());
        list.append(segment);
    }
    return list;
}

// Rectangles of palette colours on a palette background, with scattered single pixels.
Image randomPicture(std::mt19937& rng, int width, int height) {
    std::vector<int> index(std::size_t(width * height), int(rng() % 8));
    for (int r = 0, rectangles = 1 + int(rng() % 12); r < rectangles; ++r) {
        int const x0 = int(rng() % 100) * width / 100, y0 = int(rng() % 100) * height / 100;
        int const x1 = x0 + int(rng() % 100) * width / 100;
        int const y1 = y0 + int(rng() % 100) * height / 100, colour = int(rng() % 8);
        for (int y = y0; y < height && y <= y1; ++y)
            for (int x = x0; x < width && x <= x1; ++x) index[std::size_t(y * width + x)] = colour;
    }
    unsigned const noise = rng() % 20;
    Image image(ImageInfo(unsigned(width), unsigned(height), BGR));
    for (std::size_t i = 0; i < index.size(); ++i) {
        if (rng() % 100 < noise) index[i] = int(rng() % 8);
        std::copy(palette[index[i]], palette[index[i]] + 3, image.data() + 3 * i);
    }
    return image;
}

// Sequences of frames on one object: changing sizes (some wider than 349), regions cut from
// larger pictures, new class lists between frames.
TEST(SegmenterModel, RandomFrameSequencesMatchThePlainModel) {
    std::mt19937 rng(0x5e9);
    int found = 0, entries_ = 0, multiRun = 0;
    for (int trial = 0; trial < 150 && !HasFailure(); ++trial) {
        Segmenter segmenter;
        Model model;
        nuv::cv::SegmentList list = randomClasses(rng);
        segmenter.setColorSegments(list);
        model.configure(list);
        int width = 1 + int(rng() % 70), height = 1 + int(rng() % 40);
        for (int frame = 0; frame < 5; ++frame) {
            unsigned const choice = rng() % 100;
            if (choice < 30) {
                width = rng() % 100 < 15 ? 340 + int(rng() % 41) : 1 + int(rng() % 70);
                height = 1 + int(rng() % 40);
            } else if (choice < 40) {
                list = randomClasses(rng);
                segmenter.setColorSegments(list);
                model.configure(list);
            }
            bool const cut = rng() % 2 == 0;
            int const mx = cut ? 1 + int(rng() % 9) : 0, my = cut ? 1 + int(rng() % 5) : 0;
            Image image = randomPicture(rng, width + 2 * mx, height + 2 * my);
            Roi const roi(Point(mx, my), Size(unsigned(width), unsigned(height)));
            if (cut) setRoi(image, roi);
            std::string const expected = model.segment(image, roi);
            ASSERT_EQ(entries(segmenter.doSegmentation(image), list), expected)
                << "trial " << trial << " frame " << frame;
            std::istringstream parts(expected);
            for (std::string entry; std::getline(parts, entry, ';'); ++entries_) {
                found += entry.find(" 0 (0,0)") == std::string::npos;
                multiRun += std::count(entry.begin(), entry.end(), '/') > 1;
            }
        }
    }
    // The pictures exercise the linking, not only the entries of classes not found.
    EXPECT_GT(found, entries_ / 3);
    EXPECT_GT(multiRun, entries_ / 4);
}

}  // namespace
