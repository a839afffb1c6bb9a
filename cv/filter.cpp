#include <nuv/cv/filter.h>

#include <nuv/core/Log.h>

#include "cv/region.h"

#include <climits>

namespace nuv::cv::filter {

using nuv::core::Log;
using nuv::core::Size;
using nuv::core::image::Image;
using nuv::core::image::ImageInfo;

std::string friendlyName(PredefindedFilter_t type) {
    switch (type) {
        case PredefindedFilterSobelHoriz3x3:
            return "SobelHoriz3x3";
        case PredefindedFilterSobelVert3x3:
            return "SobelVert3x3";
        default:
            return "Undefined filter";
    }
}

int Filter::filter_8u_C1R(unsigned char const*, int, unsigned char*, int, IppiSize, IppiSize,
                          IppiPoint) const {
    return -2;
}
int Filter::filter_8u_C3R(unsigned char const*, int, unsigned char*, int, IppiSize, IppiSize,
                          IppiPoint) const {
    return -2;
}

int FilterMin::filter_8u_C1R(unsigned char const* src, int srcStep, unsigned char* dst, int dstStep,
                             IppiSize dstRoi, IppiSize mask, IppiPoint anchor) const {
    return ippiFilterMin_8u_C1R(src, srcStep, dst, dstStep, dstRoi, mask, anchor);
}
int FilterMin::filter_8u_C3R(unsigned char const* src, int srcStep, unsigned char* dst, int dstStep,
                             IppiSize dstRoi, IppiSize mask, IppiPoint anchor) const {
    return ippiFilterMin_8u_C3R(src, srcStep, dst, dstStep, dstRoi, mask, anchor);
}
int FilterMax::filter_8u_C1R(unsigned char const* src, int srcStep, unsigned char* dst, int dstStep,
                             IppiSize dstRoi, IppiSize mask, IppiPoint anchor) const {
    return ippiFilterMax_8u_C1R(src, srcStep, dst, dstStep, dstRoi, mask, anchor);
}
int FilterMax::filter_8u_C3R(unsigned char const* src, int srcStep, unsigned char* dst, int dstStep,
                             IppiSize dstRoi, IppiSize mask, IppiPoint anchor) const {
    return ippiFilterMax_8u_C3R(src, srcStep, dst, dstStep, dstRoi, mask, anchor);
}

Image filter(Image const& source, PredefindedFilter_t type, bool border) {
    switch (type) {
        case PredefindedFilterNone:
            return source;
        case PredefindedFilterSobelHoriz3x3:
            return sobelHoriz3x3(source, border);
        case PredefindedFilterSobelVert3x3:
            return sobelVert3x3(source, border);
    }
    // "undefinded" is spelt as hosts match it: the line is part of the interface.
    Log::singleton() << "nuv::cv::filter::filter: undefinded filter type " << static_cast<int>(type)
                     << nuv::core::endl;
    return Image();
}

namespace {

using SobelPrimitive = IppStatus (*)(Ipp8u const*, int, Ipp8u*, int, IppiSize);

// Without a border the whole image is filtered from its pixel (1, 1), so the mask stays
// inside it; with one, the bordered region is. Statuses are not looked at.
Image sobel(Image const& source, bool border, char const* name, SobelPrimitive one,
            SobelPrimitive three) {
    Image local = source;
    if (border) local = replicateBorder(source, Kernel(3, 3, 1, 1));
    const ImageInfo info = local.info();
    if (info.width < 4 || info.height < 4) {
        // "to small" is spelt as hosts match it: the line is part of the interface.
        Log::singleton() << name << ": source image to small: " << info.width << "x" << info.height
                         << nuv::core::endl;
        return Image(info);
    }
    ImageInfo resultInfo = info;
    resultInfo.width = info.width - 2;
    resultInfo.height = info.height - 2;
    Image result(resultInfo);
    const IppiSize size{static_cast<int>(resultInfo.width), static_cast<int>(resultInfo.height)};
    const int step = static_cast<int>(local.step());
    Ipp8u const* first = local.constData() + info.numChannels + local.step();
    SobelPrimitive primitive = info.numChannels == 3   ? three
                               : info.numChannels == 1 ? one
                                                       : nullptr;
    if (primitive == nullptr) return Image();
    primitive(first, step, result.data(), static_cast<int>(result.step()), size);
    return result;
}

}  // namespace

Image sobelHoriz3x3(Image const& source, bool border) {
    return sobel(source, border, "sobelHoriz3x3", ippiFilterSobelHoriz_8u_C1R,
                 ippiFilterSobelHoriz_8u_C3R);
}

Image sobelVert3x3(Image const& source, bool border) {
    return sobel(source, border, "sobelVert3x3", ippiFilterSobelVert_8u_C1R,
                 ippiFilterSobelVert_8u_C3R);
}

Image replicateBorder(Image const& source, Kernel const& kernel) {
    const Region region(source);
    // A mask side of 0 on an empty region would make a size below 0, and a bordered size that
    // passes 31 bits cannot be an image: neither has a result.
    const long long width = static_cast<long long>(region.info.width) + kernel.size.width() - 1;
    const long long height = static_cast<long long>(region.info.height) + kernel.size.height() - 1;
    if (width < 0 || height < 0 || width > INT_MAX || height > INT_MAX) return Image();
    ImageInfo info = region.info;
    info.width = static_cast<unsigned int>(width);
    info.height = static_cast<unsigned int>(height);
    Image result(info);
    const IppiSize destination{static_cast<int>(info.width), static_cast<int>(info.height)};
    const int resultStep = static_cast<int>(result.step());
    if (info.numChannels == 3)
        ippiCopyReplicateBorder_8u_C3R(region.data, region.step, region.size, result.data(),
                                       resultStep, destination, kernel.anchor.y(),
                                       kernel.anchor.x());
    else if (info.numChannels == 1)
        ippiCopyReplicateBorder_8u_C1R(region.data, region.step, region.size, result.data(),
                                       resultStep, destination, kernel.anchor.y(),
                                       kernel.anchor.x());
    else
        return Image();
    return result;
}

Image min(Image const& source, Size const& mask) {
    const FilterMin minimum;
    return ::filter(minimum, source, mask);
}

Image max(Image const& source, Size const& mask) {
    const FilterMax maximum;
    return ::filter(maximum, source, mask);
}

}  // namespace nuv::cv::filter

// The mask is made odd each way so that its anchor is the middle cell, and it is applied only
// where it fits in the region; bordering is the caller's choice. A channel count other than 1
// or 3 leaves the result of the reduced size unwritten.
nuv::core::image::Image filter(nuv::cv::filter::Filter const& filter,
                               nuv::core::image::Image const& source, nuv::core::Size const& mask) {
    using nuv::core::image::Image;
    const nuv::cv::Region region(source);
    const int maskWidth = static_cast<int>(mask.width() | 1u);
    const int maskHeight = static_cast<int>(mask.height() | 1u);
    if (region.size.width <= maskWidth || region.size.height <= maskHeight) return Image();
    const IppiPoint anchor{maskWidth / 2, maskHeight / 2};
    nuv::core::image::ImageInfo info(region.info.width, region.info.height, source.info().format);
    info.width = region.size.width - maskWidth + 1;
    info.height = region.size.height - maskHeight + 1;
    Image result(info);
    const IppiSize size{static_cast<int>(info.width), static_cast<int>(info.height)};
    const int resultStep = static_cast<int>(result.step());
    if (region.info.numChannels == 3)
        filter.filter_8u_C3R(region.data + anchor.x * 3 + anchor.y * region.step, region.step,
                             result.data(), resultStep, size, {maskWidth, maskHeight}, anchor);
    else if (region.info.numChannels == 1)
        filter.filter_8u_C1R(region.data + anchor.x + anchor.y * region.step, region.step,
                             result.data(), resultStep, size, {maskWidth, maskHeight}, anchor);
    return result;
}
