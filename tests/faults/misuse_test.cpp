// Sequences the documentation calls misuse, and failures that leave state behind: none may
// write past a buffer, and each gives its documented answer.
#include "faults/failing_allocator.h"
#include "faults/frames.h"

#include "support/images.h"
#include "support/log_capture.h"

#include <nuv/cv.h>

#include <gtest/gtest.h>

namespace nuv::test::faults {

using namespace nuv::core::image;
namespace ncv = nuv::cv;

// An instance that kept 64 lines past freeBuffer, while another grew the shared line buffer
// to 2, is refused like one that finds no buffer at all; it would have written 64 lines into
// room for 2.
TEST(Misuse, StaleHoughLineCountIsRefused) {
    const Image edges = frame(Gray);
    ncv::HoughTransform stale, fresh;
    for (ncv::HoughTransform* h : {&stale, &fresh}) {
        h->setDelta(1.0f, 0.05f);
        h->setThreshold(2);
    }
    stale.setMaxLineCount(64);
    EXPECT_GT(attachedLines(stale.transform(edges)).size(), 2u);
    ncv::HoughTransform::freeBuffer();
    fresh.setMaxLineCount(2);
    LogCapture log;
    const Image refused = stale.transform(edges);
    EXPECT_EQ(refused.constData(), edges.constData());
    EXPECT_TRUE(attachedLines(refused).empty());
    EXPECT_EQ(log.lines(),
              std::vector<std::string>{"nuv::cv::HoughtTransform::transform: invalid arguments"});
    EXPECT_EQ(attachedLines(fresh.transform(edges)).size(), 2u);
    stale.setMaxLineCount(64);  // as the contract asks
    EXPECT_GT(attachedLines(stale.transform(edges)).size(), 2u);
}

// A failed scratch leaves the size recorded and the buffer null: later calls of that size
// give the unlabelled copy without retrying, and a larger region allocates again.
TEST(Misuse, FailedLabelScratchStaysUntilALargerRegion) {
    // Larger than any region labelled before in this process, so that the call allocates.
    const Image big = frame(Gray, 300, 200), bigger = frame(Gray, 301, 200);
    int count = -1;
    arm(1, Kind::hook);
    Image labels = ncv::labelmarkers(big, &count);
    ASSERT_EQ(disarm().failed, Kind::hook);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(packedPixels(labels), packedPixels(big));
    labels = ncv::labelmarkers(big, &count);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(packedPixels(labels), packedPixels(big));
    ncv::labelmarkers(bigger, &count);
    EXPECT_EQ(count, 1);  // the cross of the two edges
    ncv::labelmarkers(big, &count);
    EXPECT_EQ(count, 1);
}

// A segmenter whose arrays could not be had sizes them again with the next frame.
TEST(Misuse, SegmenterAfterAFailedSizing) {
    const Image rgb = frame(RGB);
    ncv::Segmenter segmenter;
    segmenter.setColorSegments(twoClasses());
    segmenter.doSegmentation(rgb);  // sizes, and sets the minimum run for the frames after
    const SegmentList reference = segmentList(segmenter.doSegmentation(rgb));
    EXPECT_THROW(segmenter.setupSegmentation(50000, 50000), std::bad_array_new_length);
    EXPECT_EQ(segmentList(segmenter.doSegmentation(rgb)), reference);
    arm(1);
    EXPECT_THROW(segmenter.setupSegmentation(24, 16), std::bad_alloc);
    disarm();
    EXPECT_EQ(segmentList(segmenter.doSegmentation(rgb)), reference);
}

}  // namespace nuv::test::faults
