#include <nuv/core/Log.h>

#include <cstdio>

namespace nuv::core {

Log& Log::singleton() {
    static Log log;
    return log;
}

Log& Log::operator<<(char const* text) {
    for (; text != nullptr && *text != '\0'; ++text) *this << *text;
    return *this;
}

Log& Log::operator<<(std::string const& text) {
    for (char c : text) *this << c;
    return *this;
}

Log& Log::operator<<(char c) {
    if (c == '\n')
        finishLine();
    else
        _pending += c;
    return *this;
}

Log& Log::operator<<(int value) { return *this << std::to_string(value); }

Log& Log::operator<<(unsigned int value) { return *this << std::to_string(value); }

void Log::setSink(Sink sink) { _sink = std::move(sink); }

void Log::finishLine() {
    std::string line;
    line.swap(_pending);
    if (_sink) {
        _sink(line);
    } else {
        std::fputs(line.c_str(), stderr);
        std::fputc('\n', stderr);
    }
}

}  // namespace nuv::core
