// The classes and their state under failing allocations: objects kept across the whole sweep
// must give the reference result after every failure, whatever the failure hit.
#include "faults/frames.h"
#include "faults/sweep.h"

#include <nuv/cv.h>

#include <gtest/gtest.h>

namespace nuv::test::faults {

void sweepAll(char const* group, std::vector<Case> const& cases);

using namespace nuv::core::image;
using nuv::core::Point;
using nuv::core::Roi;
using nuv::core::Size;
namespace ncv = nuv::cv;

namespace {

// Hough with a scratch that cannot be had: the message and the input without lines.
std::string notEnoughMemory(Outcome const& failed, Outcome const& reference) {
    Result const& r = failed.result;
    const bool input =
        r.image.constData() == reference.result.image.constData() && lines(r.image).size() == 0;
    const bool logged = failed.log == std::vector<std::string>{
                                          "nuv::cv::HoughtTransform::transform: not enough memory"};
    return input && logged ? std::string() : "got " + describe(failed, false);
}

// Without the Sobel scratch the edge image is unwritten, so what is found in it is not known:
// only its size is.
std::string sameSize(Outcome const& failed, Outcome const& reference) {
    auto const& got = failed.result.image.info();
    auto const& want = reference.result.image.info();
    const bool same = got.width == want.width && got.height == want.height && failed.log.empty();
    return same ? std::string() : "got " + describe(failed, false);
}

}  // namespace

TEST(AllocationFaults, HoughTransform) {
    const Image edges = frame(Gray);
    ncv::HoughTransform hough, other;
    hough.setDelta(1.0f, 0.05f);
    hough.setThreshold(8);
    other.setDelta(2.0f, 0.1f);
    other.setThreshold(4);
    // Each run starts without buffers, so that both are allocated again in it.
    sweepAll("hough", {{"transform after freeBuffer",
                        [&](Result& r) {
                            ncv::HoughTransform::freeBuffer();
                            hough.setMaxLineCount(3);
                            other.setMaxLineCount(5);
                            r.image = hough.transform(edges);
                            r.other = other.transform(edges);
                        },
                        notEnoughMemory}});
}

TEST(AllocationFaults, Segmenter) {
    const Image rgb = frame(RGB), region = framedRegion(RGB), wide = frame(RGB, 40, 6);
    const ncv::SegmentList classes = twoClasses();
    ncv::Segmenter segmenter;
    segmenter.setColorSegments(classes);
    ncv::Segmenter changing;
    sweepAll("segmenter", {{"frames of changing size",
                            [&](Result& r) {
                                r.image = segmenter.doSegmentation(rgb);
                                r.other = segmenter.doSegmentation(wide);
                            }},
                           {"a region and a reset",
                            [&](Result& r) {
                                segmenter.resetColorSegments();
                                r.image = segmenter.doSegmentation(region);
                                segmenter.setColorSegments(classes);
                                r.other = segmenter.doSegmentation(region);
                                r.records = segmenter.createSegmentList();
                            }},
                           {"classes changed between frames", [&](Result& r) {
                                ncv::SegmentList one;
                                one.append(classes.last());
                                changing.setColorSegments(one);
                                r.image = changing.doSegmentation(rgb);
                                changing.setColorSegments(classes);
                                r.other = changing.doSegmentation(rgb);
                            }}});
}

TEST(AllocationFaults, MatchTemplateAndLineDetector) {
    const Image rgb = frame(RGB), gray = frame(Gray, 30, 30);
    Image part = frame(RGB);
    setRoi(part, Roi(Point(10, 3), Size(8, 6)));
    const Image corner = ncv::copyRoi(part);
    ncv::MatchTemplate matcher;
    ncv::LineDetector detector;
    detector.setThreshold(100);
    detector.setSearchStart(2);
    detector.setSearchHeight(10);
    sweepAll("match template and line detector",
             {{"match",
               [&](Result& r) {
                   matcher.setImage(rgb);
                   matcher.match(corner, &r.point, &r.score);
                   matcher.match(frame(Gray, 5, 4), &r.point, &r.score);
               },
               {},
               {},
               // OpenCV's Fourier transform set-up keeps a few blocks when an allocation
               // fails inside it.
               false},
              {"findLine",
               [&](Result& r) {
                   r.image = detector.findLine(gray, ncv::LineDetector::Vertical, &r.point);
               },
               sameSize}});
}

TEST(AllocationFaults, ClassesAndTheirText) {
    const ncv::SegmentList classes = twoClasses();
    const std::string text = ncv::toString(classes);
    sweepAll("classes and their text",
             {{"toString", [&](Result& r) { r.text = ncv::toString(classes); }},
              {"fromString", [&](Result& r) { r.classes = ncv::segmentListfromString(text); }},
              {"training",
               [&](Result& r) {
                   ncv::Segment segment;
                   segment.setName("trained");
                   segment.addColor(nuv::core::Color::fromRgba(10, 20, 30));
                   segment.setDilate(1, 2);
                   segment.applyDilation();
                   segment.merge(classes.first());
                   r.classes.append(segment);
                   r.text = segment.serializeColorIndex() + segment.serializeChannelsUsed();
               }},
              {"init", [&](Result&) { ncv::init(); }}});
}

}  // namespace nuv::test::faults
