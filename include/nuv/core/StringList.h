/// @file
/// A list of strings with a text form of its own, and splitting of text into pieces.
///
/// Text form: every element in double quotes, elements joined by ",". Inside the quotes a
/// backslash escapes the next character, so quotes, backslashes, commas and semicolons all
/// survive a round trip: {"a;b", "say \"hi\""} is written "a;b","say \"hi\"". The empty list
/// is the empty text, which keeps it apart from a list of one empty string ("").
#pragma once

#include <nuv/core/List.h>

#include <initializer_list>
#include <string>

namespace nuv::core {

/// A list of strings with a text form.
class StringList : public List<std::string> {
public:
    /// An empty list.
    StringList() = default;
    /// A list of these strings in order.
    StringList(std::initializer_list<std::string> values) : List<std::string>(values) {}
    /// Shares the strings of a plain list.
    StringList(List<std::string> const& list) : List<std::string>(list) {}
    /// Lets go of the strings.
    ~StringList() override;

    /// Reads the text form. Readers are lenient so that people can write lists by hand:
    /// an element may also stand without quotes, and then runs up to the next comma (a
    /// backslash still escapes); blanks around quoted elements are skipped; a quote left
    /// open takes the rest of the text.
    static StringList fromString(std::string const& text);
    /// The text form.
    std::string toString() const;
};

/// The text form of the list: list.toString().
std::string toString(StringList const& list);
/// The list of a text form: StringList::fromString(text).
StringList stringListFromString(std::string const& text);

/// The pieces of text between any of the separator characters, empty pieces included, so
/// that "a;;b" split at ";" gives "a", "" and "b" and fields keep their positions. An empty
/// text gives an empty list; null or empty separators give the whole text as one piece.
StringList split(std::string const& text, char const* separators);

}  // namespace nuv::core
