// convert: which pairs exist and what each stamps, the lines logged for the others, and the
// bytes of every path on a region of interest with padded rows.
#include <nuv/cv.h>

#include "support/log_capture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace nuv::core::image;
using nuv::core::Point;
using nuv::core::Roi;
using nuv::core::Size;
using Bytes = std::vector<unsigned char>;

Format const formats[] = {FormatNone,  RGB, BGR,   BGRA, Gray,
                          FormatOther, HSV, YCbCr, HLS,  Format(9)};

// A 9x5 image with padded rows of random bytes, its region (1,1) 7x3.
Image framed(Format format, std::mt19937& rng) {
    Image image(ImageInfo(9, 5, format), 40);
    std::generate(image.data(), image.data() + 40 * 5, [&] { return rng(); });
    setRoi(image, Roi(Point(1, 1), Size(7, 3)));
    return image;
}

// The region's rows without padding, each pixel `pixelBytes` wide.
Bytes regionOf(Image const& image, unsigned pixelBytes, unsigned x0 = 1, unsigned y0 = 1,
               unsigned w = 7, unsigned h = 3) {
    Bytes bytes;
    for (unsigned y = y0; y < y0 + h; ++y) {
        unsigned char const* row = image.constData() + y * image.step() + x0 * pixelBytes;
        bytes.insert(bytes.end(), row, row + w * pixelBytes);
    }
    return bytes;
}
Bytes whole(Image const& image) {
    return regionOf(image, image.info().numChannels, 0, 0, image.info().width, image.info().height);
}
Bytes reversedPixels(Bytes bytes) {
    for (std::size_t i = 0; i + 2 < bytes.size(); i += 3) std::swap(bytes[i], bytes[i + 2]);
    return bytes;
}

// "source>target=stamped" for every pair that converts; Gray as a target and the source's own
// format or none as a target convert from every source and are not listed.
std::string const pairs =
    " RGB>BGR=BGR RGB>HSV=HSV RGB>YCbCr=YCbCr RGB>HLS=HLS BGR>RGB=RGB BGR>HSV=HSV"
    " BGRA>RGB=RGB BGRA>BGR=BGR Gray>RGB=RGB Gray>BGR=RGB HSV>RGB=RGB HSV>BGR=BGR"
    " YCbCr>RGB=RGB YCbCr>BGR=BGR HLS>RGB=RGB HLS>BGR=BGR ";

TEST(Convert, EveryPairOfFormats) {
    std::mt19937 rng(5);
    for (Format source : {RGB, BGR, BGRA, Gray, FormatOther, HSV, YCbCr, HLS})
        for (Format target : formats) {
            const std::string s = friendlyName(source), t = friendlyName(target);
            SCOPED_TRACE(s + " to " + t);
            nuv::test::LogCapture log;
            const Image result = nuv::cv::convert(framed(source, rng), target);
            const std::size_t listed = pairs.find(" " + s + ">" + t + "=");
            std::string stamped =
                listed == std::string::npos
                    ? ""
                    : pairs.substr(pairs.find('=', listed) + 1,
                                   pairs.find(' ', listed + 1) - pairs.find('=', listed) - 1);
            if (target == Gray) stamped = "Gray";
            if (target == source || target == FormatNone) stamped = s;
            if (stamped.empty()) {
                EXPECT_TRUE(result.isNull());
                // An HSV source reports itself as HLS; unknown sources by their names.
                const std::string from = source == HSV ? "HLS" : s;
                EXPECT_EQ(log.lines(), std::vector<std::string>{"conversion from " + from + " to " +
                                                                t + " not implemented"});
                continue;
            }
            // A copy cuts only three-channel regions; others come back whole, logged.
            const bool keptWhole = stamped == s && framed(source, rng).info().numChannels != 3;
            EXPECT_EQ(log.lines(), keptWhole
                                       ? std::vector<std::string>{"nuv::cv::copyRoi: unsupported "
                                                                  "image format"}
                                       : std::vector<std::string>{});
            ASSERT_FALSE(result.isNull());
            EXPECT_EQ(friendlyName(result.info().format), stamped);
            EXPECT_EQ(result.info().width, keptWhole ? 9u : 7u);
            EXPECT_EQ(result.info().height, keptWhole ? 5u : 3u);
        }
}

// Each path's bytes: the region through the primitive it names, or a relation between paths.
TEST(Convert, BytesOfEachPath) {
    std::mt19937 rng(9);
    auto through = [](Image const& image, auto primitive, unsigned outBytes) {
        const Bytes in = regionOf(image, 3);
        Bytes out(7 * 3 * outBytes);
        EXPECT_EQ(primitive(in.data(), 21, out.data(), int(7 * outBytes), IppiSize{7, 3}),
                  ippStsNoErr);
        return out;
    };
    const Image rgb = framed(RGB, rng), bgr = framed(BGR, rng), hsv = framed(HSV, rng);
    const Image hls = framed(HLS, rng), ycc = framed(YCbCr, rng);
    EXPECT_EQ(whole(nuv::cv::convert(rgb, BGR)), reversedPixels(regionOf(rgb, 3)));
    EXPECT_EQ(whole(nuv::cv::convert(bgr, RGB)), reversedPixels(regionOf(bgr, 3)));
    EXPECT_EQ(whole(nuv::cv::convert(rgb, HSV)), through(rgb, ippiRGBToHSV_8u_C3R, 3));
    EXPECT_EQ(whole(nuv::cv::convert(rgb, HLS)), through(rgb, ippiRGBToHLS_8u_C3R, 3));
    EXPECT_EQ(whole(nuv::cv::convert(rgb, YCbCr)), through(rgb, ippiRGBToYCbCr_8u_C3R, 3));
    EXPECT_EQ(whole(nuv::cv::convert(rgb, Gray)), through(rgb, ippiRGBToGray_8u_C3C1R, 1));
    // BGR is read as RGB on its way to gray, and reversed on its way to HSV.
    EXPECT_EQ(whole(nuv::cv::convert(bgr, Gray)), through(bgr, ippiRGBToGray_8u_C3C1R, 1));
    EXPECT_EQ(whole(nuv::cv::convert(bgr, HSV)),
              whole(nuv::cv::convert(nuv::cv::convert(bgr, RGB), HSV)));
    for (auto [image, primitive] : {std::pair{hsv, ippiHSVToRGB_8u_C3R},
                                    {hls, ippiHLSToRGB_8u_C3R},
                                    {ycc, ippiYCbCrToRGB_8u_C3R}}) {
        const Bytes asRgb = through(image, primitive, 3);
        EXPECT_EQ(whole(nuv::cv::convert(image, RGB)), asRgb);
        EXPECT_EQ(whole(nuv::cv::convert(image, BGR)), reversedPixels(asRgb));
    }
    // Gray is spread over three channels, and both targets say RGB.
    const Image gray = framed(Gray, rng);
    for (Format target : {RGB, BGR}) {
        Bytes spread;
        for (unsigned char g : regionOf(gray, 1)) spread.insert(spread.end(), 3, g);
        EXPECT_EQ(whole(nuv::cv::convert(gray, target)), spread);
    }
    // Without a source channel 0 is left as it was and still spread over each pixel.
    const Bytes unread = whole(nuv::cv::GrayToRGB(nullptr, 7, nuv::core::Size(7, 3)));
    ASSERT_EQ(unread.size(), 63u);
    for (std::size_t i = 0; i < unread.size(); i += 3)
        EXPECT_TRUE(unread[i] == unread[i + 1] && unread[i] == unread[i + 2]) << i;
    // Four bytes a pixel: the fourth is dropped, or the first three reversed; to gray the rows
    // are read three bytes a pixel from the region's first byte.
    const Image bgra = framed(BGRA, rng);
    Bytes three;
    const Bytes four = regionOf(bgra, 4);
    for (std::size_t i = 0; i < four.size(); i += 4)
        three.insert(three.end(), &four[i], &four[i + 3]);
    EXPECT_EQ(whole(nuv::cv::convert(bgra, BGR)), three);
    EXPECT_EQ(whole(nuv::cv::convert(bgra, RGB)), reversedPixels(three));
    Bytes shifted, expected(21);
    for (unsigned y = 1; y < 4; ++y)
        shifted.insert(shifted.end(), bgra.constData() + y * 40 + 4,
                       bgra.constData() + y * 40 + 25);
    ASSERT_EQ(ippiRGBToGray_8u_C3C1R(shifted.data(), 21, expected.data(), 7, {7, 3}), ippStsNoErr);
    EXPECT_EQ(whole(nuv::cv::convert(bgra, Gray)), expected);
}

// A zero size gives an image of that size: the primitive's refusal is dropped.
TEST(Convert, EmptySingleConversion) {
    const char bytes[3] = {};
    const Image empty = nuv::cv::RGBtoHSV(bytes, 3, Size(0, 2));
    EXPECT_EQ(empty.info().width, 0u);
    EXPECT_EQ(empty.info().height, 2u);
    EXPECT_EQ(empty.info().format, HSV);
}

}  // namespace
