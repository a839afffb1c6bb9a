/// @file
/// One trained colour class of the segmenter: a name, a mean colour that is its identity, and
/// per channel the accepted byte values.
#pragma once

#include <nuv/core/Color.h>
#include <nuv/cv/SegmentColorIndex.h>

#include <cassert>
#include <string>

namespace nuv::cv {

/// One trained colour class of the segmenter. The channels are bytes 0, 1 and 2 of a
/// three-channel pixel, whatever colour model the
/// caller's images use; addColor maps r, g and b of a Color to channels 0, 1 and 2.
class Segment {
public:
    /// A class without name that accepts nothing, with mean colour 0.
    Segment();
    /// A copy of the other class.
    Segment(Segment const& other);
    /// Takes the other class's name, colour, accepted values and pending dilation.
    Segment& operator=(Segment const& other);

    /// Takes everything of the other class, as assignment does.
    void clone(Segment const& other);

    /// The class's name.
    std::string name() const;
    /// Names the class.
    void setName(std::string const& name);

    /// The mean colour of the trained pixels: the class's identity.
    nuv::core::Color meanColor() const;
    /// Leaves the colour count alone, so a later addColor still averages with the old count.
    void setMeanColor(nuv::core::Color const& color);

    /// Whether the channel takes part; a channel not used accepts every value.
    bool channelUsed(unsigned int channel) const;
    /// Makes the channel take part or not.
    void setChannelUsed(unsigned int channel, bool used);

    /// The accepted values of a channel, 0, 1 or 2.
    SegmentColorIndex const& colorIndex(unsigned int channel) const {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wtype-limits"
        assert(channel >= 0 && channel <= 2);
#pragma GCC diagnostic pop
        return _colorIndex[channel];
    }

    /// Pending dilation of a channel: positive grows the accepted set, negative shrinks it.
    int getDilate(unsigned int channel);
    /// Only stores the amount; applyDilation does the work.
    void setDilate(unsigned int channel, int amount);
    /// Applies and clears the pending dilation of every channel.
    void applyDilation();

    /// Training: accepts the colour's components and folds it into the running mean.
    void addColor(nuv::core::Color const& color);
    /// Unions the accepted values channel by channel; nothing else of the other segment counts.
    void merge(Segment const& other);

    /// 192 hexadecimal digits: channel 0, 1 and 2, each as SegmentColorIndex::serialize.
    std::string serializeColorIndex() const;
    /// False, and nothing changed, unless the text is exactly 192 characters.
    bool loadColorIndex(std::string const& text);
    /// The channel mask in decimal.
    std::string serializeChannelsUsed() const;
    /// Keeps the low three bits of the number; text that is no number gives 0. Always true.
    bool loadChannelsUsed(std::string const& text);

    /// Segments are the same class when their mean colours are equal; nothing else counts.
    bool operator==(Segment const& other) const;
    /// Whether the mean colours differ.
    bool operator!=(Segment const& other) const;

private:
    std::string _name;
    nuv::core::Color _meanColor;
    SegmentColorIndex _colorIndex[3];
    int _dilate[3];
    unsigned char _channelsUsed;
    unsigned int _colorCount;
};

}  // namespace nuv::cv
