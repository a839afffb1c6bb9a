/// @file
/// Where a template occurs in a stored image, by OpenCV's normalised correlation coefficient.
#pragma once

#include <nuv/core/Point.h>
#include <nuv/core/image/Image.h>

namespace nuv::cv {

class MatchTemplateImpl;

/// One object serves one thread at a time: it keeps its score map between calls, and only a
/// template of another size makes a new one.
class MatchTemplate {
public:
    MatchTemplate();
    ~MatchTemplate();
    MatchTemplate(MatchTemplate const&) = delete;
    MatchTemplate& operator=(MatchTemplate const&) = delete;

    /// The image to search in.
    void setImage(nuv::core::image::Image const& image);

    /// The top-left corner of the template's best fit in the image (both as RGB) and its
    /// score, -1 to 1 where 1 is a perfect fit. Before setImage, or with a null template:
    /// (0, 0) and 0. A template larger than the image is refused by OpenCV, which raises its
    /// own error. Both pointers must be valid.
    void match(nuv::core::image::Image const& templateImage, nuv::core::Point* point, float* value);

private:
    MatchTemplateImpl* _impl;
};

}  // namespace nuv::cv
