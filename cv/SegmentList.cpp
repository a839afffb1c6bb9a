#include <nuv/cv/SegmentList.h>

#include <nuv/core/StringList.h>
#include <nuv/core/fromString.h>

#include <string>

namespace nuv::cv {

using nuv::core::Color;
using nuv::core::StringList;
using nuv::core::variant::Variant;

namespace {

const int kFields = 4;

}  // namespace

SegmentList::~SegmentList() = default;

bool SegmentList::operator==(SegmentList const& other) const {
    if (size() != other.size()) return false;
    // The mean colour is a class's identity: lists with the same classes in the same order
    // are equal even when their thresholds were trained differently.
    const_iterator mine = constBegin();
    const_iterator theirs = other.constBegin();
    for (; mine != constEnd(); ++mine, ++theirs)
        if (mine->meanColor() != theirs->meanColor()) return false;
    return true;
}

bool SegmentList::operator!=(SegmentList const& other) const {
    return !(*this == other);
}

std::string toString(SegmentList const& list) {
    StringList records;
    for (SegmentList::const_iterator it = list.constBegin(); it != list.constEnd(); ++it) {
        // Joined as strings, which throw when they cannot grow; a string stream would cut the
        // record short without a word.
        records.append(it->name() + ';' + std::to_string(it->meanColor().argb()) + ';' +
                       it->serializeColorIndex() + ';' + it->serializeChannelsUsed());
    }
    return nuv::core::toString(records);
}

SegmentList segmentListfromString(std::string const& text) {
    SegmentList result;
    const StringList records = nuv::core::stringListFromString(text);
    for (StringList::const_iterator it = records.constBegin(); it != records.constEnd(); ++it) {
        const StringList fields = nuv::core::split(*it, ";");
        // Damaged records (a name with a ";" in it, a cut line) are left out so that the
        // good classes around them still load.
        if (fields.size() < kFields) continue;
        StringList::const_iterator field = fields.constBegin();
        Segment segment;
        segment.setName(*field++);
        // No number where the colour belongs is not damage to skip but a text of another
        // kind: the exception ends the whole parse.
        segment.setMeanColor(Color(nuv::core::fromString<unsigned int>(*field++)));
        if (!segment.loadColorIndex(*field++)) continue;
        segment.loadChannelsUsed(*field);
        result.append(segment);
    }
    return result;
}

Variant segmentListToString(Variant const& value) {
    return Variant(toString(value.get<SegmentList>()));
}

Variant stringToSegmentList(Variant const& value) {
    return Variant(segmentListfromString(value.toString()));
}

bool segmentListIsEqual(Variant const& a, Variant const& b) {
    return a.get<SegmentList>() == b.get<SegmentList>();
}

}  // namespace nuv::cv
