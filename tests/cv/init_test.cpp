// nuv::cv::init: what it teaches the variant machinery, and that it does so once.
#include <nuv/core.h>
#include <nuv/cv.h>

#include <gtest/gtest.h>

#include <cstring>

namespace {

using nuv::core::image::Image;
using nuv::core::image::ImageInfo;
using nuv::core::variant::Converter;
using nuv::core::variant::Math;
using nuv::core::variant::Variant;

nuv::cv::SegmentList twoClasses() {
    nuv::cv::SegmentList list;
    nuv::cv::Segment ball;
    ball.setName("ball");
    ball.addColor(nuv::core::Color(0xFF2080F0));
    nuv::cv::Segment box;
    box.setName("box");
    box.addColor(nuv::core::Color(0xFF30A0C0));
    list.append(ball);
    list.append(box);
    return list;
}

Image filled(unsigned char value) {
    Image image(ImageInfo(5, 3, nuv::core::image::BGR));
    std::memset(image.data(), value, image.step() * 3);
    return image;
}

TEST(Init, SegmentListTravelsAsTextThroughTheConverter) {
    nuv::cv::init();
    const nuv::cv::SegmentList list = twoClasses();

    const Variant text = Converter::singleton().convert(Variant(list), typeid(std::string));
    EXPECT_EQ(text.get<std::string>(), nuv::cv::toString(list));

    const Variant back = Converter::singleton().convert(text, typeid(nuv::cv::SegmentList));
    const nuv::cv::SegmentList restored = back.get<nuv::cv::SegmentList>();
    ASSERT_EQ(restored.size(), 2);
    EXPECT_EQ(restored.constBegin()->name(), "ball");
    EXPECT_TRUE(restored == list);
    EXPECT_EQ(Converter::singleton().friendlyName(typeid(nuv::cv::SegmentList)), "segmentlist");
}

TEST(Init, SegmentListEqualityIsRegistered) {
    nuv::cv::init();
    const nuv::cv::SegmentList list = twoClasses();
    bool ok = false;
    EXPECT_TRUE(Math::singleton().compare(nuv::core::variant::CompareEqual, Variant(list),
                                          Variant(twoClasses()), &ok));
    EXPECT_TRUE(ok);
    EXPECT_FALSE(Math::singleton().compare(nuv::core::variant::CompareEqual, Variant(list),
                                           Variant(nuv::cv::SegmentList()), &ok));
}

TEST(Init, ImageAdditionThroughMathGivesWhatAdditionGives) {
    nuv::cv::init();
    const Image a = filled(10), b = filled(21);
    const Variant sum =
        Math::singleton().binaryOperator(nuv::core::variant::OperatorAdd, Variant(a), Variant(b));
    const Image viaMath = sum.get<Image>();
    const Image direct = nuv::cv::addition(a, b);
    ASSERT_FALSE(viaMath.isNull());
    ASSERT_EQ(viaMath.info().width, direct.info().width);
    for (unsigned y = 0; y < 3; ++y)
        EXPECT_EQ(0, std::memcmp(viaMath.constData() + y * viaMath.step(),
                                 direct.constData() + y * direct.step(), 15));
}

TEST(Init, ASecondCallRegistersNothingAgain) {
    nuv::cv::init();
    // Replace the addition init put there; a second init must leave the replacement alone.
    Math::singleton().registerBinaryOperator<Image>(
        nuv::core::variant::OperatorAdd,
        [](Variant const&, Variant const&) { return Variant(std::string("replaced")); });
    nuv::cv::init();
    const Variant result = Math::singleton().binaryOperator(nuv::core::variant::OperatorAdd,
                                                            Variant(filled(1)), Variant(filled(2)));
    EXPECT_EQ(result.get<std::string>(), "replaced");
    // Put the library's addition back for the tests that follow in this process.
    Math::singleton().registerBinaryOperator<Image>(nuv::core::variant::OperatorAdd,
                                                    nuv::cv::imageAddition);
}

TEST(Init, LeavesProcessorSelectionAlone) {
    const Ipp32u before = ippJumpIndexForMergedLibs;
    nuv::cv::init();
    EXPECT_EQ(ippJumpIndexForMergedLibs, before);
}

}  // namespace
