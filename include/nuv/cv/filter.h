/// @file
/// Neighbourhood filters on whole images: the predefined 3x3 Sobel operators, replicated
/// borders, and minimum and maximum filters of any mask size.
#pragma once

#include <nuv/core/Point.h>
#include <nuv/core/Size.h>
#include <nuv/core/image/Image.h>
#include <nuv/primitives.h>

#include <string>

namespace nuv::cv::filter {

/// A fixed underlying int, so that any value a caller passes is one the functions can refuse.
/// The misspelt name (and its enumerators) is the one hosts and the Python module already
/// use: it is part of the interface and stays as it is.
enum PredefindedFilter_t : int {
    PredefindedFilterNone = 0,  ///< no filtering: a copy
    PredefindedFilterSobelHoriz3x3 = 1,
    PredefindedFilterSobelVert3x3 = 2,
};

/// "SobelHoriz3x3", "SobelVert3x3", and "Undefined filter" for none and for unknown values.
std::string friendlyName(PredefindedFilter_t type);

/// A mask's size and its reference cell, counted from the top-left cell. Nothing checks that
/// the anchor lies in the mask.
struct Kernel {
    /// A mask of width by height cells whose reference cell is (x, y).
    Kernel(unsigned int width, unsigned int height, unsigned int x, unsigned int y)
        : size(width, height), anchor(static_cast<int>(x), static_cast<int>(y)) {}
    /// The mask's size in cells.
    nuv::core::Size size;
    /// The reference cell, counted from the top-left cell.
    nuv::core::Point anchor;
};

/// Selects the primitive pair of a rank filter; the base does nothing and returns -2.
class Filter {
public:
    /// Nothing to free.
    virtual ~Filter() = default;
    /// Filters one-channel pixels with the family's primitive; its status.
    virtual int filter_8u_C1R(unsigned char const* src, int srcStep, unsigned char* dst,
                              int dstStep, IppiSize dstRoi, IppiSize mask, IppiPoint anchor) const;
    /// Filters three-channel pixels with the family's primitive; its status.
    virtual int filter_8u_C3R(unsigned char const* src, int srcStep, unsigned char* dst,
                              int dstStep, IppiSize dstRoi, IppiSize mask, IppiPoint anchor) const;
};

/// The minimum filter's primitives.
class FilterMin : public Filter {
public:
    /// Filters one-channel pixels with ippiFilterMin_8u_C1R; its status.
    int filter_8u_C1R(unsigned char const* src, int srcStep, unsigned char* dst, int dstStep,
                      IppiSize dstRoi, IppiSize mask, IppiPoint anchor) const override;
    /// Filters three-channel pixels with ippiFilterMin_8u_C3R; its status.
    int filter_8u_C3R(unsigned char const* src, int srcStep, unsigned char* dst, int dstStep,
                      IppiSize dstRoi, IppiSize mask, IppiPoint anchor) const override;
};

/// The maximum filter's primitives.
class FilterMax : public Filter {
public:
    /// Filters one-channel pixels with ippiFilterMax_8u_C1R; its status.
    int filter_8u_C1R(unsigned char const* src, int srcStep, unsigned char* dst, int dstStep,
                      IppiSize dstRoi, IppiSize mask, IppiPoint anchor) const override;
    /// Filters three-channel pixels with ippiFilterMax_8u_C3R; its status.
    int filter_8u_C3R(unsigned char const* src, int srcStep, unsigned char* dst, int dstStep,
                      IppiSize dstRoi, IppiSize mask, IppiPoint anchor) const override;
};

/// The predefined filter `type`; none gives a copy of the source, an unknown type is logged
/// and gives the null image.
nuv::core::image::Image filter(nuv::core::image::Image const& source, PredefindedFilter_t type,
                               bool border);

/// The 3x3 Sobel operators on one- or three-channel images, saturated to a byte, so one sign
/// survives: the horizontal one answers bright below dark, the vertical one bright left of
/// dark. With `border` the source's region gets a replicated border of one pixel first and
/// the result has the region's size; without, the whole image is filtered where every
/// neighbour exists and the result is 2 smaller each way. A source (bordered source) under
/// 4x4 is logged and gives an unwritten image of its own size.
nuv::core::image::Image sobelHoriz3x3(nuv::core::image::Image const& source, bool border);
/// As sobelHoriz3x3, for the vertical operator.
nuv::core::image::Image sobelVert3x3(nuv::core::image::Image const& source, bool border);

/// The source's region with a border that repeats its edge pixels: anchor.y rows on top,
/// anchor.x columns on the left, and the rest of the mask's cells at right and bottom.
nuv::core::image::Image replicateBorder(nuv::core::image::Image const& source,
                                        Kernel const& kernel);

/// Minimum and maximum over a mask centred on each pixel, evaluated only where the mask fits
/// in the region, so the result is mask - 1 smaller each way. An even mask side is raised by
/// one. A region not larger than the mask in both directions gives the null image.
nuv::core::image::Image min(nuv::core::image::Image const& source, nuv::core::Size const& mask);
/// As min, for the maximum.
nuv::core::image::Image max(nuv::core::image::Image const& source, nuv::core::Size const& mask);

}  // namespace nuv::cv::filter

/// The rank filters' worker: `filter` picks the primitives. It lives in the global namespace,
/// where hosts already call it; moving it into nuv::cv::filter would break them.
nuv::core::image::Image filter(nuv::cv::filter::Filter const& filter,
                               nuv::core::image::Image const& source, nuv::core::Size const& mask);
