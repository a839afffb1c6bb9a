// The segment records attached to images.
#include <nuv/core/image/Image.h>
#include <nuv/core/image/Segment.h>
#include <nuv/core/image/SegmentList.h>
#include <nuv/core/variant/Variant.h>

#include <gtest/gtest.h>

namespace {

using namespace nuv::core;
using namespace nuv::core::image;

TEST(Segment, StartsEmpty) {
    Segment const segment;
    EXPECT_EQ(segment.pixelCount, 0u);
    EXPECT_EQ(segment.color, Color());
    EXPECT_EQ(segment.center, Point());
    EXPECT_TRUE(segment.lines.isEmpty());
    EXPECT_EQ(segment.segmentIndex, 0);
    EXPECT_EQ(segment.name, "");
}

TEST(Segment, CopiesAreMemberwiseAndShareTheirLines) {
    Segment a;
    a.pixelCount = 10;
    a.color = Color(0xFF00FF00u);
    a.center = Point(3, 4);
    a.lines.append(Line(0, 0, 5, 0));
    a.segmentIndex = 2;
    a.name = "ball";
    Segment b(a);
    EXPECT_EQ(b, a);
    EXPECT_EQ(&b.lines.first(), &a.lines.first());
    b.lines.append(Line(0, 1, 5, 1));
    EXPECT_EQ(a.lines.size(), 1);
    EXPECT_NE(b, a);
    Segment c;
    c = a;
    EXPECT_EQ(c.name, "ball");
    EXPECT_EQ(c.center, Point(3, 4));
    c.name = "goal";
    EXPECT_EQ(a.name, "ball");
}

TEST(SegmentList, SetOnAnImageReplacesTheList) {
    Image image(ImageInfo(4, 4, BGR));
    SegmentList first;
    first.append(Segment());
    first.append(Segment());
    setSegmentList(image, first);
    EXPECT_EQ(segmentList(image).size(), 2);
    SegmentList second;
    Segment named;
    named.name = "only";
    second.append(named);
    setSegmentList(image, second);
    ASSERT_EQ(segmentList(image).size(), 1);
    EXPECT_EQ(segmentList(image).first().name, "only");
    // The list given is shared, not bound: writing it later leaves the image's list.
    second.append(Segment());
    EXPECT_EQ(segmentList(image).size(), 1);
}

TEST(SegmentList, TravelsInAVariant) {
    SegmentList list;
    Segment segment;
    segment.pixelCount = 99;
    list.append(segment);
    variant::Variant const v(list);
    bool ok = false;
    SegmentList const back = v.get<SegmentList>(&ok);
    EXPECT_TRUE(ok);
    ASSERT_EQ(back.size(), 1);
    EXPECT_EQ(back.first().pixelCount, 99u);
    EXPECT_EQ(&back.first(), &list.first());
}

}  // namespace
