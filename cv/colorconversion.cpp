#include <nuv/cv/colorconversion.h>

#include <nuv/core/Log.h>
#include <nuv/cv/tools.h>
#include <nuv/primitives.h>

#include "primitives/dispatch/frontend.h"

namespace nuv::cv {

using nuv::core::Log;
using nuv::core::Roi;
using nuv::core::Size;
using nuv::core::image::Format;
using nuv::core::image::Image;
using nuv::core::image::ImageInfo;

namespace {

int const reversed[3] = {2, 1, 0};
int const channel0Everywhere[3] = {0, 0, 0};

// What every single conversion shares: a new image of the region's size in the target
// format, the source and result as the primitives take them. Statuses are dropped.
struct Conversion {
    Conversion(char const* data, unsigned int step, Size const& size, Format format)
        : result(ImageInfo(size.width(), size.height(), format)),
          src(reinterpret_cast<Ipp8u const*>(data)),
          srcStep(static_cast<int>(step)),
          dst(result.data()),
          dstStep(static_cast<int>(result.step())),
          roi{static_cast<int>(size.width()), static_cast<int>(size.height())} {}

    using Primitive = IppStatus (*)(Ipp8u const*, int, Ipp8u*, int, IppiSize);
    Image run(Primitive primitive) {
        primitive(src, srcStep, dst, dstStep, roi);
        return result;
    }
    Image swap(int const* order) {
        ippiSwapChannels_8u_C3R(src, srcStep, dst, dstStep, roi, order);
        return result;
    }
    // The result's channels reversed where they lie: the BGR forms of the RGB results.
    Image thenReverse(Primitive primitive) {
        primitive(src, srcStep, dst, dstStep, roi);
        ippiSwapChannels_8u_C3IR(dst, dstStep, roi, reversed);
        return result;
    }

    Image result;
    Ipp8u const* src;
    int srcStep;
    Ipp8u* dst;
    int dstStep;
    IppiSize roi;
};

using Single = Image (*)(char const*, unsigned int, Size const&);

// The conversions from each source format, by target; null where none exists. RGB, BGR,
// HSV, YCbCr and HLS as targets; Gray is handled before the table.
struct Row {
    Format source;
    char const* failure;  // the start of the logged line when the target has no conversion
    Single toRGB, toBGR, toHSV, toYCbCr, toHLS;
};

Row const rows[] = {
    {nuv::core::image::RGB, "conversion from RGB to ", nullptr, RGBtoBGR, RGBtoHSV, RGBtoYCbCr,
     RGBtoHLS},
    {nuv::core::image::BGR, "conversion from BGR to ", BGRtoRGB, nullptr, BGRtoHSV, nullptr,
     nullptr},
    {nuv::core::image::BGRA, "conversion from BGRA to ", BGRAtoRGB, BGRAtoBGR, nullptr, nullptr,
     nullptr},
    {nuv::core::image::Gray, "conversion from Gray to ", GrayToRGB, GrayToBGR, nullptr, nullptr,
     nullptr},
    // A failed HSV conversion reports itself as HLS; hosts match the line as it stands.
    {nuv::core::image::HSV, "conversion from HLS to ", HSVtoRGB, HSVtoBGR, nullptr, nullptr,
     nullptr},
    {nuv::core::image::YCbCr, "conversion from YCbCr to ", YCbCrToRGB, YCbCrToBGR, nullptr, nullptr,
     nullptr},
    {nuv::core::image::HLS, "conversion from HLS to ", HLStoRGB, HLStoBGR, nullptr, nullptr,
     nullptr},
};

Single conversionTo(Row const& row, Format target) {
    switch (target) {
        case nuv::core::image::RGB:
            return row.toRGB;
        case nuv::core::image::BGR:
            return row.toBGR;
        case nuv::core::image::HSV:
            return row.toHSV;
        case nuv::core::image::YCbCr:
            return row.toYCbCr;
        case nuv::core::image::HLS:
            return row.toHLS;
        default:
            return nullptr;
    }
}

}  // namespace

Image convert(Image const& image, Format format) {
    const Format source = image.info().format;
    if (format == source || format == nuv::core::image::FormatNone) return copyRoi(image);
    char const* data = nullptr;
    const Roi roi = nuv::core::image::getRoi(image, &data);
    const unsigned int step = static_cast<unsigned int>(image.step());
    // Any source goes to gray as if it were RGB, read three bytes a pixel: BGR comes out with
    // the red and blue weights exchanged, BGRA with its channels rotating along the row.
    if (format == nuv::core::image::Gray) return toGray(data, step, roi.size());
    for (Row const& row : rows) {
        if (row.source != source) continue;
        if (Single convertOne = conversionTo(row, format))
            return convertOne(data, step, roi.size());
        Log::singleton() << row.failure << nuv::core::image::friendlyName(format, -1)
                         << " not implemented" << '\n';
        return Image();
    }
    Log::singleton() << "conversion from " << nuv::core::image::friendlyName(source, -1) << " to "
                     << nuv::core::image::friendlyName(format, -1) << " not implemented" << '\n';
    return Image();
}

Image RGBtoBGR(char const* data, unsigned int step, Size const& size) {
    return Conversion(data, step, size, nuv::core::image::BGR).swap(reversed);
}

Image BGRtoRGB(char const* data, unsigned int step, Size const& size) {
    return Conversion(data, step, size, nuv::core::image::RGB).swap(reversed);
}

Image HSVtoRGB(char const* data, unsigned int step, Size const& size) {
    return Conversion(data, step, size, nuv::core::image::RGB).run(ippiHSVToRGB_8u_C3R);
}

Image HSVtoBGR(char const* data, unsigned int step, Size const& size) {
    return Conversion(data, step, size, nuv::core::image::BGR).thenReverse(ippiHSVToRGB_8u_C3R);
}

Image HLStoRGB(char const* data, unsigned int step, Size const& size) {
    return Conversion(data, step, size, nuv::core::image::RGB).run(ippiHLSToRGB_8u_C3R);
}

Image HLStoBGR(char const* data, unsigned int step, Size const& size) {
    return Conversion(data, step, size, nuv::core::image::BGR).thenReverse(ippiHLSToRGB_8u_C3R);
}

Image RGBtoHLS(char const* data, unsigned int step, Size const& size) {
    return Conversion(data, step, size, nuv::core::image::HLS).run(ippiRGBToHLS_8u_C3R);
}

Image RGBtoHSV(char const* data, unsigned int step, Size const& size) {
    return Conversion(data, step, size, nuv::core::image::HSV).run(ippiRGBToHSV_8u_C3R);
}

// Through an RGB temporary with its own rows, released before the result returns.
Image BGRtoHSV(char const* data, unsigned int step, Size const& size) {
    Image const rgb = BGRtoRGB(data, step, size);
    return RGBtoHSV(reinterpret_cast<char const*>(rgb.constData()),
                    static_cast<unsigned int>(rgb.step()), size);
}

Image RGBtoYCbCr(char const* data, unsigned int step, Size const& size) {
    return Conversion(data, step, size, nuv::core::image::YCbCr).run(ippiRGBToYCbCr_8u_C3R);
}

Image YCbCrToRGB(char const* data, unsigned int step, Size const& size) {
    return Conversion(data, step, size, nuv::core::image::RGB).run(ippiYCbCrToRGB_8u_C3R);
}

Image YCbCrToBGR(char const* data, unsigned int step, Size const& size) {
    return Conversion(data, step, size, nuv::core::image::BGR).thenReverse(ippiYCbCrToRGB_8u_C3R);
}

// Channel 0 of the result from the gray bytes, then spread over all three where it lies. The
// result is a fresh image whose rows do not overlap, so with a source to read the two steps
// come to each gray byte written three times, which one pass does; the checks are the same.
// Without a source the spread still runs over whatever channel 0 holds.
Image GrayToRGB(char const* data, unsigned int step, Size const& size) {
    Conversion c(data, step, size, nuv::core::image::RGB);
    if (c.src != nullptr) {
        ippiGrayToRGB_8u_C1C3R(c.src, c.srcStep, c.dst, c.dstStep, c.roi);
        return c.result;
    }
    ippiSwapChannels_8u_C3IR(c.dst, c.dstStep, c.roi, channel0Everywhere);
    return c.result;
}

Image GrayToBGR(char const* data, unsigned int step, Size const& size) {
    return GrayToRGB(data, step, size);
}

Image toGray(char const* data, unsigned int step, Size const& size) {
    return Conversion(data, step, size, nuv::core::image::Gray).run(ippiRGBToGray_8u_C3C1R);
}

Image BGRAtoBGR(char const* data, unsigned int step, Size const& size) {
    return Conversion(data, step, size, nuv::core::image::BGR).run(ippiCopy_8u_AC4C3R);
}

Image BGRAtoRGB(char const* data, unsigned int step, Size const& size) {
    Conversion c(data, step, size, nuv::core::image::RGB);
    ippiSwapChannels_8u_C4C3R(c.src, c.srcStep, c.dst, c.dstStep, c.roi, reversed);
    return c.result;
}

}  // namespace nuv::cv
