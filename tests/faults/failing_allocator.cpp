#include "faults/failing_allocator.h"

#include <nuv/primitives.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace nuv::test::faults {

namespace {

bool armed = false;
bool tracking = true;  // blocks allocated now count as live
long countdown = 0;    // allocations left before the failing one; 0 means none fails
long counted = 0;
Kind failedKind = Kind::none;
Kind onlyKind =
    Kind::none;  // when set, allocations of the other kind are neither counted nor failed
std::atomic<long> liveHeap{0}, liveHook{0};

// True when this allocation is the one to fail.
bool failsNow(Kind kind) {
    if (!armed || (onlyKind != Kind::none && kind != onlyKind)) return false;
    ++counted;
    if (countdown == 0 || --countdown != 0) return false;
    failedKind = kind;
    return true;
}

// Each heap block carries before it the address malloc gave and whether it counts as live,
// so that the test's own blocks, made while paused, can be released at any time.
constexpr std::size_t headerBytes = 16;
struct Header {
    void* raw;
    std::size_t tracked;
};

void* heapBlock(std::size_t size, std::size_t alignment) {
    if (failsNow(Kind::heap)) return nullptr;
    const std::size_t lead = alignment > headerBytes ? alignment : headerBytes;
    void* raw = nullptr;
    if (lead == headerBytes) {
        raw = std::malloc(size + lead);
    } else if (posix_memalign(&raw, lead, size + lead) != 0) {
        raw = nullptr;
    }
    if (raw == nullptr) return nullptr;
    void* user = static_cast<char*>(raw) + lead;
    *(static_cast<Header*>(user) - 1) = {raw, tracking};
    if (tracking) ++liveHeap;
    return user;
}

void heapFree(void* p) noexcept {
    if (p == nullptr) return;
    const Header header = *(static_cast<Header*>(p) - 1);
    if (header.tracked) --liveHeap;
    std::free(header.raw);
}

void* hookMalloc(std::size_t size) {
    if (failsNow(Kind::hook)) return nullptr;
    void* p = std::malloc(size);
    if (p != nullptr) ++liveHook;
    return p;
}

void hookFree(void* p) {
    if (p == nullptr) return;
    --liveHook;
    std::free(p);
}

// Installed before main, before the library allocates anything through its hooks.
const bool hooksInstalled = [] {
    i_malloc = hookMalloc;
    i_free = hookFree;
    return true;
}();

}  // namespace

void arm(long n, Kind only) {
    onlyKind = only;
    countdown = n;
    counted = 0;
    failedKind = Kind::none;
    armed = true;
}

Tally disarm() {
    armed = false;
    return {counted, failedKind};
}

Live live() {
    return {liveHeap.load(), liveHook.load()};
}

Pause::Pause() : _armed(armed), _tracking(tracking) {
    armed = false;
    tracking = false;
}
Pause::~Pause() {
    armed = _armed;
    tracking = _tracking;
}

Resume::Resume() : _tracking(tracking) {
    tracking = true;
}
Resume::~Resume() {
    tracking = _tracking;
}

}  // namespace nuv::test::faults

// OpenCV keeps what it had allocated when an allocation fails inside it (its matrices' set-up,
// the Fourier transform of template matching, the integral images): those blocks are
// OpenCV's to lose, and the leak checker of the sanitizer build is told so. A leak whose
// blocks this library allocated has no OpenCV frame and still stops the run.
extern "C" char const* __lsan_default_suppressions() {
    return "leak:libopencv_core.so\nleak:libopencv_imgproc.so\n";
}

using nuv::test::faults::heapBlock;
using nuv::test::faults::heapFree;

namespace {

void* orThrow(void* p) {
    if (p == nullptr) throw std::bad_alloc();
    return p;
}

}  // namespace

void* operator new(std::size_t n) {
    return orThrow(heapBlock(n, 0));
}
void* operator new[](std::size_t n) {
    return orThrow(heapBlock(n, 0));
}
void* operator new(std::size_t n, std::nothrow_t const&) noexcept {
    return heapBlock(n, 0);
}
void* operator new[](std::size_t n, std::nothrow_t const&) noexcept {
    return heapBlock(n, 0);
}
void* operator new(std::size_t n, std::align_val_t a) {
    return orThrow(heapBlock(n, static_cast<std::size_t>(a)));
}
void* operator new[](std::size_t n, std::align_val_t a) {
    return orThrow(heapBlock(n, static_cast<std::size_t>(a)));
}
void* operator new(std::size_t n, std::align_val_t a, std::nothrow_t const&) noexcept {
    return heapBlock(n, static_cast<std::size_t>(a));
}
void* operator new[](std::size_t n, std::align_val_t a, std::nothrow_t const&) noexcept {
    return heapBlock(n, static_cast<std::size_t>(a));
}
void operator delete(void* p) noexcept {
    heapFree(p);
}
void operator delete[](void* p) noexcept {
    heapFree(p);
}
void operator delete(void* p, std::size_t) noexcept {
    heapFree(p);
}
void operator delete[](void* p, std::size_t) noexcept {
    heapFree(p);
}
void operator delete(void* p, std::nothrow_t const&) noexcept {
    heapFree(p);
}
void operator delete[](void* p, std::nothrow_t const&) noexcept {
    heapFree(p);
}
void operator delete(void* p, std::align_val_t) noexcept {
    heapFree(p);
}
void operator delete[](void* p, std::align_val_t) noexcept {
    heapFree(p);
}
void operator delete(void* p, std::size_t, std::align_val_t) noexcept {
    heapFree(p);
}
void operator delete[](void* p, std::size_t, std::align_val_t) noexcept {
    heapFree(p);
}
void operator delete(void* p, std::align_val_t, std::nothrow_t const&) noexcept {
    heapFree(p);
}
void operator delete[](void* p, std::align_val_t, std::nothrow_t const&) noexcept {
    heapFree(p);
}
