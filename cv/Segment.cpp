#include <nuv/cv/Segment.h>

#include <cassert>
#include <cstdio>
#include <cstdlib>

namespace nuv::cv {

using nuv::core::Color;

namespace {

const unsigned int kChannels = 3;
const int kValues = 256;
const unsigned char kAllChannels = 7;
const std::size_t kIndexDigits = 64;

}  // namespace

Segment::Segment() : _channelsUsed(kAllChannels), _colorCount(0) {
    for (unsigned int c = 0; c < kChannels; ++c) _dilate[c] = 0;
}

Segment::Segment(Segment const& other) {
    clone(other);
}

Segment& Segment::operator=(Segment const& other) {
    clone(other);
    return *this;
}

void Segment::clone(Segment const& other) {
    _name = other._name;
    _meanColor = other._meanColor;
    for (unsigned int c = 0; c < kChannels; ++c) {
        _colorIndex[c] = other._colorIndex[c];
        _dilate[c] = other._dilate[c];
    }
    _channelsUsed = other._channelsUsed;
    _colorCount = other._colorCount;
}

std::string Segment::name() const {
    return _name;
}

void Segment::setName(std::string const& name) {
    _name = name;
}

Color Segment::meanColor() const {
    return _meanColor;
}

void Segment::setMeanColor(Color const& color) {
    _meanColor = color;
}

// These assertions print the documented message, comparison with 0 included, although an
// unsigned channel makes that half of it always true.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wtype-limits"

bool Segment::channelUsed(unsigned int channel) const {
    assert(channel >= 0 && channel <= 2);
    return (_channelsUsed >> channel) & 1u;
}

void Segment::setChannelUsed(unsigned int channel, bool used) {
    assert(channel >= 0 && channel <= 2);
    const unsigned char bit = static_cast<unsigned char>(1u << channel);
    if (used)
        _channelsUsed |= bit;
    else
        _channelsUsed &= static_cast<unsigned char>(~bit);
}

#pragma GCC diagnostic pop

int Segment::getDilate(unsigned int channel) {
    assert(channel < 3);
    return _dilate[channel];
}

void Segment::setDilate(unsigned int channel, int amount) {
    assert(channel < 3);
    _dilate[channel] = amount;
}

void Segment::applyDilation() {
    for (unsigned int c = 0; c < kChannels; ++c) {
        if (_dilate[c] == 0) continue;
        SegmentColorIndex& index = _colorIndex[c];
        bool marked[kValues] = {};
        const bool grow = _dilate[c] > 0;
        // Magnitude in unsigned arithmetic, so the most negative amount is no overflow.
        const unsigned int reach = grow ? static_cast<unsigned int>(_dilate[c])
                                        : 0u - static_cast<unsigned int>(_dilate[c]);
        // A shrink starts the forward pass with a full spread, so the low end of the axis acts
        // as a gap and erodes its members; the high end is never treated that way, and the
        // forward pass stops short of 255. Hosts have tuned their classes on this behaviour.
        unsigned int left = grow ? 0u : reach;
        for (int v = 0; v < kValues - 1; ++v) {
            if (index.at(static_cast<unsigned char>(v)) == grow) {
                left = reach;
            } else if (left != 0) {
                --left;
                marked[v] = true;
            }
        }
        left = 0;
        for (int v = kValues - 1; v >= 0; --v) {
            if (index.at(static_cast<unsigned char>(v)) == grow) {
                left = reach;
            } else if (left != 0) {
                --left;
                marked[v] = true;
            }
        }
        // Both passes read the memberships of before, so the marks are applied only now.
        for (int v = 0; v < kValues; ++v)
            if (marked[v]) index.set(static_cast<unsigned char>(v), grow);
        _dilate[c] = 0;
    }
}

void Segment::addColor(Color const& color) {
    _colorIndex[0].set(color.r(), true);
    _colorIndex[1].set(color.g(), true);
    _colorIndex[2].set(color.b(), true);

    const unsigned int n = _colorCount;
    const unsigned int sumR = _meanColor.r() * n;
    const unsigned int sumG = _meanColor.g() * n;
    const unsigned int sumB = _meanColor.b() * n;
    ++_colorCount;
    // Truncating division: the mean drifts down by the lost fractions, as stored classes
    // were trained with it.
    _meanColor.setR(static_cast<unsigned char>((color.r() + sumR) / _colorCount));
    _meanColor.setG(static_cast<unsigned char>((color.g() + sumG) / _colorCount));
    _meanColor.setB(static_cast<unsigned char>((color.b() + sumB) / _colorCount));
}

void Segment::merge(Segment const& other) {
    for (unsigned int c = 0; c < kChannels; ++c) _colorIndex[c].merge(other._colorIndex[c]);
}

std::string Segment::serializeColorIndex() const {
    std::string text;
    text.reserve(kChannels * kIndexDigits);
    for (unsigned int c = 0; c < kChannels; ++c) text += _colorIndex[c].serialize();
    return text;
}

bool Segment::loadColorIndex(std::string const& text) {
    if (text.size() != kChannels * kIndexDigits) return false;
    for (unsigned int c = 0; c < kChannels; ++c)
        _colorIndex[c].load(text.substr(c * kIndexDigits, kIndexDigits));
    return true;
}

std::string Segment::serializeChannelsUsed() const {
    char text[16];
    std::snprintf(text, sizeof text, "%i", static_cast<int>(_channelsUsed));
    return text;
}

bool Segment::loadChannelsUsed(std::string const& text) {
    _channelsUsed = static_cast<unsigned char>(std::atoi(text.c_str()) & kAllChannels);
    return true;
}

bool Segment::operator==(Segment const& other) const {
    return _meanColor == other._meanColor;
}

bool Segment::operator!=(Segment const& other) const {
    return _meanColor != other._meanColor;
}

}  // namespace nuv::cv
