// Reading a fuzzer's bytes as arguments: each take consumes from the front and gives 0 once
// the input is used up, so every input is a complete description.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace nuv::fuzz {

class Input {
public:
    Input(std::uint8_t const* data, std::size_t size) : _data(data), _size(size) {}

    std::uint8_t byte() { return _at < _size ? _data[_at++] : 0; }
    // A value in lo..hi.
    int in(int lo, int hi) {
        const unsigned span = static_cast<unsigned>(hi - lo + 1);
        const unsigned raw = static_cast<unsigned>(byte()) | static_cast<unsigned>(byte()) << 8;
        return lo + static_cast<int>(raw % span);
    }
    bool flag() { return byte() & 1; }
    // What is left, as text.
    std::string rest() {
        std::string text(reinterpret_cast<char const*>(_data + _at), _size - _at);
        _at = _size;
        return text;
    }
    std::size_t left() const { return _size - _at; }

private:
    std::uint8_t const* _data;
    std::size_t _size, _at = 0;
};

}  // namespace nuv::fuzz
