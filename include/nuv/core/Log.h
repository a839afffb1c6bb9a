/// @file
/// The one process-wide text sink of the library. Messages are streamed in pieces and end
/// with nuv::core::endl; each finished line goes to the sink, which by default writes it to
/// standard error. There are no levels: a line is a line. Threads may log at once: each
/// thread builds its own line, and finished lines reach the sink one at a time.
#pragma once

#include <functional>
#include <mutex>
#include <string>

namespace nuv::core {

/// The one process-wide text sink of the library; lines end with nuv::core::endl.
class Log {
public:
    /// What receives each finished line.
    using Sink = std::function<void(std::string const& line)>;

    /// The one log of the process.
    static Log& singleton();

    /// Every newline in what is streamed closes the line so far and hands it to the sink.
    Log& operator<<(char const* text);
    /// Streams text; each newline closes the line.
    Log& operator<<(std::string const& text);
    /// Streams a character; a newline closes the line.
    Log& operator<<(char c);
    /// Streams a number in decimal.
    Log& operator<<(int value);
    /// Streams a number in decimal.
    Log& operator<<(unsigned int value);
    /// Streams a number in decimal.
    Log& operator<<(long value);
    /// Streams a number in decimal.
    Log& operator<<(unsigned long value);
    /// Streams a number in decimal.
    Log& operator<<(long long value);
    /// Streams a number in decimal.
    Log& operator<<(unsigned long long value);
    /// Written as a text stream writes a double by default (six significant digits).
    Log& operator<<(double value);

    /// The sink receives each finished line without its newline; an empty function restores
    /// the default, which writes to standard error. If the sink throws, the exception reaches
    /// the code that streamed the newline, and the line is gone.
    void setSink(Sink sink);

    /// Text this thread streamed since its last newline, not yet handed to the sink.
    std::string const& pending() const { return pendingLine(); }

    /// There is one log: it is not copied.
    Log(Log const&) = delete;
    /// There is one log: it is not assigned.
    Log& operator=(Log const&) = delete;

private:
    Log() = default;
    void append(char const* text, std::size_t length);
    void finishLine();
    static std::string& pendingLine();

    /// Guards the sink; recursive, so that a sink may log.
    std::recursive_mutex _sinkLock;
    Sink _sink;
};

namespace {
/// Closes a message. One private copy per source unit, as every unit streams its own.
const char endl = '\n';
}  // namespace

}  // namespace nuv::core
