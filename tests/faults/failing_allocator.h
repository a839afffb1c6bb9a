// An allocator for fault tests: every allocation of the process, by the global operator new
// in all its forms and by the primitives' hook i_malloc, is counted while armed, and the
// chosen one fails (new throws std::bad_alloc or gives null in its nothrow forms; the hook
// gives null). Live blocks are counted at all times, so a test sees what a call kept.
#pragma once

#include <cstddef>

namespace nuv::test::faults {

enum class Kind { none, hook, heap };

// Starts counting; the nth allocation from now (1 for the next) fails, none when n is 0.
// With `only` set, allocations of the other kind are left alone.
void arm(long n, Kind only = Kind::none);

struct Tally {
    long allocations;  // counted between arm and disarm
    Kind failed;       // the kind of the one that failed, or none
};
Tally disarm();

// Blocks allocated and not yet released, by operator new and by the hook.
struct Live {
    long heap, hook;
    bool operator==(Live const& other) const { return heap == other.heap && hook == other.hook; }
};
Live live();

// Allocations made while one of these lives are neither counted, nor failed, nor live: the
// test's own bookkeeping (the log capture, descriptions, reports).
class Pause {
public:
    Pause();
    ~Pause();
    Pause(Pause const&) = delete;
    Pause& operator=(Pause const&) = delete;

private:
    bool _armed, _tracking;
};

// Blocks allocated while one of these lives count as live again: the library's calls inside
// a paused stretch.
class Resume {
public:
    Resume();
    ~Resume();
    Resume(Resume const&) = delete;
    Resume& operator=(Resume const&) = delete;

private:
    bool _tracking;
};

}  // namespace nuv::test::faults
