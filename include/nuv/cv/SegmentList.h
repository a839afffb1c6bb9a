/// @file
/// The list of colour classes a caller configures, its text form, and the functions that let
/// it travel in a Variant.
///
/// Text form: one record per segment, the four fields name, mean colour (argb() in decimal),
/// the 192 digits of the colour indexes and the channel mask, joined by ";"; the records are
/// joined as a nuv::core::StringList. Pending dilation and the colour count are not written.
#pragma once

#include <nuv/core/List.h>
#include <nuv/core/variant/Variant.h>
#include <nuv/cv/Segment.h>

#include <string>

namespace nuv::cv {

/// The colour classes a segmenter is set up with, in configured order.
class SegmentList : public nuv::core::List<Segment> {
public:
    using nuv::core::List<Segment>::List;
    /// An empty list.
    SegmentList() = default;
    /// Lets go of the classes.
    ~SegmentList() override;

    /// Same size and the same mean colours in the same order; names, colour indexes and
    /// channel masks are not compared.
    bool operator==(SegmentList const& other) const;
    /// Whether the sizes or the mean colours differ.
    bool operator!=(SegmentList const& other) const;
};

/// The text form of the classes.
std::string toString(SegmentList const& list);
/// Records with fewer than four fields or a colour-index field that is not 192 characters
/// are skipped; fields after the fourth are ignored. A mean-colour field without a number
/// throws nuv::core::Exception("Bad conversion") and ends the parse.
SegmentList segmentListfromString(std::string const& text);

/// The text form of a Variant holding a list, as a Variant: the Converter and Math functions
/// that nuv::cv::init registers are this one and the two below.
nuv::core::variant::Variant segmentListToString(nuv::core::variant::Variant const& value);
/// The list of a Variant's text form, as a Variant.
nuv::core::variant::Variant stringToSegmentList(nuv::core::variant::Variant const& value);
/// Whether two Variants holding lists are equal as lists are.
bool segmentListIsEqual(nuv::core::variant::Variant const& a, nuv::core::variant::Variant const& b);

}  // namespace nuv::cv
