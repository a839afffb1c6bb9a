#include <nuv/core/Log.h>

#include <cstdio>
#include <cstring>
#include <sstream>

namespace nuv::core {

Log& Log::singleton() {
    static Log log;
    return log;
}

Log& Log::operator<<(char const* text) {
    if (text != nullptr) append(text, std::strlen(text));
    return *this;
}

Log& Log::operator<<(std::string const& text) {
    append(text.data(), text.size());
    return *this;
}

Log& Log::operator<<(char c) {
    append(&c, 1);
    return *this;
}

Log& Log::operator<<(int value) {
    return *this << std::to_string(value);
}

Log& Log::operator<<(unsigned int value) {
    return *this << std::to_string(value);
}

Log& Log::operator<<(long value) {
    return *this << std::to_string(value);
}

Log& Log::operator<<(unsigned long value) {
    return *this << std::to_string(value);
}

Log& Log::operator<<(long long value) {
    return *this << std::to_string(value);
}

Log& Log::operator<<(unsigned long long value) {
    return *this << std::to_string(value);
}

Log& Log::operator<<(double value) {
    std::ostringstream text;
    text << value;
    return *this << text.str();
}

void Log::setSink(Sink sink) {
    const std::lock_guard<std::recursive_mutex> hold(_sinkLock);
    _sink = std::move(sink);
}

std::string& Log::pendingLine() {
    thread_local std::string line;
    return line;
}

void Log::append(char const* text, std::size_t length) {
    char const* const end = text + length;
    try {
        while (text != end) {
            char const* newline = static_cast<char const*>(std::memchr(text, '\n', end - text));
            if (newline == nullptr) {
                pendingLine().append(text, end);
                return;
            }
            pendingLine().append(text, newline);
            finishLine();
            text = newline + 1;
        }
    } catch (...) {
        // A message that could not be built whole is dropped whole: its first pieces must
        // not open the next message.
        std::string().swap(pendingLine());
        throw;
    }
}

void Log::finishLine() {
    // The line leaves the log before the sink sees it, so a sink that logs or throws finds
    // an empty pending line.
    std::string line;
    line.swap(pendingLine());
    const std::lock_guard<std::recursive_mutex> hold(_sinkLock);
    if (_sink) {
        _sink(line);
    } else {
        // One write per line, so lines from several processes on one terminal stay whole.
        line += '\n';
        std::fwrite(line.data(), 1, line.size(), stderr);
    }
}

}  // namespace nuv::core
