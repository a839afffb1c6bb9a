#include <nuv/core/image/BufferStore.h>

#include "core/image/pixel_memory.h"

#include <sys/mman.h>

#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <new>
#include <vector>

// In the sanitizer build a buffer that waits in the store is poisoned, so that a read or a
// write through a pointer kept past the image's release is still reported.
#if defined(__SANITIZE_ADDRESS__)
#define NUV_STORE_POISONS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define NUV_STORE_POISONS 1
#endif
#endif
#ifdef NUV_STORE_POISONS
#include <sanitizer/asan_interface.h>
#define NUV_POISON(p, n) ASAN_POISON_MEMORY_REGION(p, n)
#define NUV_UNPOISON(p, n) ASAN_UNPOISON_MEMORY_REGION(p, n)
#else
#define NUV_POISON(p, n) ((void)(p), (void)(n))
#define NUV_UNPOISON(p, n) ((void)(p), (void)(n))
#endif

namespace nuv::core::image {

namespace {

// Rows start on cache-line boundaries when the step allows it, and every vector width the
// primitives use divides this.
constexpr std::size_t pixelAlignment = 64;

// Smaller buffers come from the heap's own bins, which hand them back without a page fault.
constexpr std::size_t smallestStored = 4096;

// Enough for a dozen steps of a 3840x2160 pipeline with their temporaries (a three-channel
// frame of that size is 24 MiB), or forty 1920x1080 colour frames. The store only ever
// holds buffers that the host's own frames have just used.
constexpr std::size_t defaultLimit = std::size_t(256) << 20;

// Eight classes per doubling, whole pages: a buffer serves any request of its class, and
// no more than an eighth of it goes unused.
std::size_t sizeClass(std::size_t bytes) {
    if (bytes < smallestStored) return bytes == 0 ? 1 : bytes;
    const int top = 63 - __builtin_clzll(bytes);
    std::size_t granule = std::size_t(1) << (top - 3);
    if (granule < smallestStored) granule = smallestStored;
    return (bytes + granule - 1) & ~(granule - 1);
}

// Buffers of whole huge pages start on one and ask the kernel for huge pages: a new
// 1920x1080 colour frame then costs a handful of page faults instead of 1,500, and a walk
// across its rows (a transposition) far fewer misses of the address cache. The kernel may
// say no; the buffer works all the same.
constexpr std::size_t hugePage = std::size_t(2) << 20;

std::size_t alignmentFor(std::size_t capacity) {
    return capacity >= hugePage ? hugePage : pixelAlignment;
}

unsigned char* allocate(std::size_t capacity) {
    void* bytes = ::operator new(capacity, std::align_val_t(alignmentFor(capacity)));
    if (capacity >= hugePage) madvise(bytes, capacity & ~(hugePage - 1), MADV_HUGEPAGE);
    return static_cast<unsigned char*>(bytes);
}

void deallocate(unsigned char* bytes, std::size_t capacity) noexcept {
    ::operator delete(bytes, std::align_val_t(alignmentFor(capacity)));
}

class Store {
public:
    // A waiting buffer of this class, the most recently released (the one most likely still
    // in the cache), or null.
    unsigned char* take(std::size_t capacity) {
        std::lock_guard<std::mutex> lock(_mutex);
        auto found = _waiting.find(capacity);
        if (found == _waiting.end() || found->second.empty()) return nullptr;
        unsigned char* bytes = found->second.back().bytes;
        found->second.pop_back();
        --_count;
        _held -= capacity;
        NUV_UNPOISON(bytes, capacity);
        return bytes;
    }

    // Keeps the buffer unless it alone passes the bound; what the bound pushes out is freed
    // after the lock is let go.
    // Throws std::bad_alloc, with the buffer still the caller's, when the lists cannot grow.
    void keep(unsigned char* bytes, std::size_t capacity) {
        std::vector<Waiting> freed;
        {
            std::lock_guard<std::mutex> lock(_mutex);
            if (capacity > _limit) {
                freed.push_back({bytes, capacity, 0});
            } else {
                // Room for every buffer that may have to go, had before anything changes:
                // once the buffer is in the store, eviction must not fail half-way.
                freed.reserve(_count + 1);
                _waiting[capacity].push_back({bytes, capacity, ++_clock});
                ++_count;
                _held += capacity;
                NUV_POISON(bytes, capacity);
                evictOver(_limit, freed);
            }
        }
        dispose(freed);
    }

    void setLimit(std::size_t limit) {
        std::vector<Waiting> freed;
        {
            std::lock_guard<std::mutex> lock(_mutex);
            freed.reserve(_count);
            _limit = limit;
            evictOver(limit, freed);
        }
        dispose(freed);
    }

    std::size_t limit() {
        std::lock_guard<std::mutex> lock(_mutex);
        return _limit;
    }

    std::size_t held() {
        std::lock_guard<std::mutex> lock(_mutex);
        return _held;
    }

    void empty() {
        std::vector<Waiting> freed;
        {
            std::lock_guard<std::mutex> lock(_mutex);
            freed.reserve(_count);
            evictOver(0, freed);
        }
        dispose(freed);
    }

private:
    struct Waiting {
        unsigned char* bytes;
        std::size_t capacity;
        std::uint64_t released;
    };

    // Moves the buffers released longest ago into `freed` until the store holds at most
    // `bound` bytes. `freed` has room for all of them, so nothing here allocates.
    void evictOver(std::size_t bound, std::vector<Waiting>& freed) {
        while (_held > bound) {
            auto oldest = _waiting.end();
            for (auto it = _waiting.begin(); it != _waiting.end(); ++it) {
                if (it->second.empty()) continue;
                if (oldest == _waiting.end() ||
                    it->second.front().released < oldest->second.front().released)
                    oldest = it;
            }
            freed.push_back(oldest->second.front());
            oldest->second.pop_front();
            --_count;
            _held -= freed.back().capacity;
        }
    }

    static void dispose(std::vector<Waiting> const& freed) {
        for (Waiting const& w : freed) {
            NUV_UNPOISON(w.bytes, w.capacity);
            deallocate(w.bytes, w.capacity);
        }
    }

    std::mutex _mutex;
    std::map<std::size_t, std::deque<Waiting>> _waiting;
    std::size_t _held = 0;
    std::size_t _count = 0;  // buffers waiting
    std::size_t _limit = defaultLimit;
    std::uint64_t _clock = 0;
};

// Never destroyed: images with static storage may release their buffers after every
// destructor of this library has run.
Store& store() {
    static Store* const theStore = new Store;
    return *theStore;
}

}  // namespace

namespace pixels {

Block acquireBlock(std::size_t bytes) {
    const std::size_t capacity = sizeClass(bytes);
    if (capacity >= smallestStored) {
        if (unsigned char* waiting = store().take(capacity)) return {waiting, capacity};
    }
    return {allocate(capacity), capacity};
}

void releaseBlock(Block block) noexcept {
    if (block.capacity < smallestStored) {
        deallocate(block.bytes, block.capacity);
        return;
    }
    try {
        store().keep(block.bytes, block.capacity);
    } catch (...) {
        // The store could not grow its list: the buffer goes back to the system instead.
        deallocate(block.bytes, block.capacity);
    }
}

}  // namespace pixels

void setBufferStoreLimit(std::size_t bytes) {
    store().setLimit(bytes);
}

std::size_t bufferStoreLimit() {
    return store().limit();
}

void emptyBufferStore() {
    store().empty();
}

std::size_t bufferStoreBytes() {
    return store().held();
}

}  // namespace nuv::core::image
