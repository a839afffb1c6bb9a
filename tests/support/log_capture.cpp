#include "support/log_capture.h"

#include <nuv/core/Log.h>

namespace nuv::test {

LogCapture::LogCapture() {
    nuv::core::Log::singleton().setSink(
        [this](std::string const& line) { _lines.push_back(line); });
}

LogCapture::~LogCapture() {
    nuv::core::Log::singleton().setSink({});
}

}  // namespace nuv::test
