#include <nuv/core/StringList.h>

namespace nuv::core {

StringList::~StringList() = default;

std::string StringList::toString() const {
    std::string text;
    bool first = true;
    for (const_iterator it = constBegin(); it != constEnd(); ++it) {
        if (!first) text += ',';
        first = false;
        text += '"';
        for (char c : *it) {
            if (c == '"' || c == '\\') text += '\\';
            text += c;
        }
        text += '"';
    }
    return text;
}

namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

}  // namespace

StringList StringList::fromString(std::string const& text) {
    StringList list;
    if (text.empty()) return list;
    std::size_t const n = text.size();
    std::size_t i = 0;
    while (true) {
        // Blanks before an element matter only if the element turns out to be unquoted.
        std::size_t start = i;
        while (i < n && isBlank(text[i])) ++i;
        std::string element;
        if (i < n && text[i] == '"') {
            for (++i; i < n && text[i] != '"'; ++i) {
                if (text[i] == '\\' && i + 1 < n) ++i;
                element += text[i];
            }
            if (i < n) ++i;  // the closing quote
            // Anything between the closing quote and the next comma is dropped.
            while (i < n && text[i] != ',') ++i;
        } else {
            for (i = start; i < n && text[i] != ','; ++i) {
                if (text[i] == '\\' && i + 1 < n) ++i;
                element += text[i];
            }
        }
        list.append(element);
        if (i >= n) break;
        ++i;  // the comma; a comma at the very end is followed by one empty element
    }
    return list;
}

std::string toString(StringList const& list) {
    return list.toString();
}

StringList stringListFromString(std::string const& text) {
    return StringList::fromString(text);
}

StringList split(std::string const& text, char const* separators) {
    StringList pieces;
    if (text.empty()) return pieces;
    if (separators == nullptr || *separators == '\0') {
        pieces.append(text);
        return pieces;
    }
    std::size_t start = 0;
    while (true) {
        std::size_t const end = text.find_first_of(separators, start);
        if (end == std::string::npos) {
            pieces.append(text.substr(start));
            return pieces;
        }
        pieces.append(text.substr(start, end - start));
        start = end + 1;
    }
}

}  // namespace nuv::core
