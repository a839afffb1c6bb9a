// The one process-wide text sink of the library. Messages are streamed in pieces and end
// with nuv::core::endl; each finished line goes to the sink, which by default writes it to
// standard error.
#pragma once

#include <functional>
#include <string>

namespace nuv::core {

class Log {
public:
    using Sink = std::function<void(std::string const& line)>;

    static Log& singleton();

    Log& operator<<(char const* text);
    Log& operator<<(std::string const& text);
    // A newline closes the line and hands it to the sink.
    Log& operator<<(char c);
    Log& operator<<(int value);
    Log& operator<<(unsigned int value);

    // The sink receives each finished line without its newline; an empty function restores
    // the default, which writes to standard error.
    void setSink(Sink sink);

private:
    Log() = default;
    void finishLine();

    std::string _pending;
    Sink _sink;
};

namespace {
// Closes a message. One private copy per source unit, as every unit streams its own.
const char endl = '\n';
}  // namespace

}  // namespace nuv::core
