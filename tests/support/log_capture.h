// Captures the lines that the library writes to its log, for tests of the front end.
#pragma once

#include <string>
#include <vector>

namespace nuv::test {

class LogCapture {
public:
    LogCapture();   // installs a sink on nuv::core::Log
    ~LogCapture();  // restores the default sink
    LogCapture(LogCapture const&) = delete;
    LogCapture& operator=(LogCapture const&) = delete;

    std::vector<std::string> const& lines() const { return _lines; }

private:
    std::vector<std::string> _lines;
};

}  // namespace nuv::test
