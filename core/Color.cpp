#include <nuv/core/Color.h>

namespace nuv::core {

// Constant-initialised: it holds its value before any dynamic initialiser runs.
const Color Color::red(0xFFFF0000u);

bool Color::operator==(Color const& other) const {
    return _argb == other._argb;
}

bool Color::operator!=(Color const& other) const {
    return _argb != other._argb;
}

}  // namespace nuv::core
