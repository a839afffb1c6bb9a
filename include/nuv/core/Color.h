/// @file
/// A colour as one packed word: alpha in bits 31..24, then red, green and blue.
#pragma once

namespace nuv::core {

/// A colour as one packed word: alpha in bits 31..24, then red, green and blue.
class Color {
public:
    /// Colour of points and lines that are not given one: opaque red, 0xFFFF0000. It is
    /// constant-initialised, so reading it from another library's static constructors is safe.
    static const Color red;

    /// The default is the word 0: transparent black, not red.
    constexpr Color() : _argb(0) {}
    /// The colour of a packed word.
    constexpr Color(unsigned int argb) : _argb(argb) {}

    /// The colour of these components; opaque unless alpha is given.
    static constexpr Color fromRgba(unsigned char r, unsigned char g, unsigned char b,
                                    unsigned char a = 255) {
        return Color((static_cast<unsigned int>(a) << 24) | (static_cast<unsigned int>(r) << 16) |
                     (static_cast<unsigned int>(g) << 8) | b);
    }

    /// The packed word.
    constexpr unsigned int argb() const { return _argb; }
    /// Alpha.
    constexpr unsigned char a() const { return static_cast<unsigned char>(_argb >> 24); }
    /// Red.
    constexpr unsigned char r() const { return static_cast<unsigned char>(_argb >> 16); }
    /// Green.
    constexpr unsigned char g() const { return static_cast<unsigned char>(_argb >> 8); }
    /// Blue.
    constexpr unsigned char b() const { return static_cast<unsigned char>(_argb); }

    /// Sets alpha.
    void setA(unsigned char value) { setByte(24, value); }
    /// Sets red.
    void setR(unsigned char value) { setByte(16, value); }
    /// Sets green.
    void setG(unsigned char value) { setByte(8, value); }
    /// Sets blue.
    void setB(unsigned char value) { setByte(0, value); }

    /// Compare the whole word, alpha included.
    bool operator==(Color const& other) const;
    /// Whether the words differ.
    bool operator!=(Color const& other) const;

private:
    void setByte(int shift, unsigned char value) {
        _argb = (_argb & ~(0xFFu << shift)) | (static_cast<unsigned int>(value) << shift);
    }

    unsigned int _argb;
};

}  // namespace nuv::core
