#include <nuv/core/image/Image.h>

#include "core/image/pixel_memory.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <stdexcept>

namespace nuv::core::image {

namespace {

// Pixels the image allocated itself go back to the store of released buffers.
struct StoredDelete {
    std::size_t capacity;
    void operator()(unsigned char* bytes) const { pixels::releaseBlock({bytes, capacity}); }
};

// Throws std::bad_alloc when the memory cannot be had.
std::shared_ptr<unsigned char> allocatePixels(std::size_t bytes) {
    // A zero-sized image still gets a distinct buffer, so that only the null image has a
    // null data pointer.
    const pixels::Block block = pixels::acquireBlock(bytes);
    // Should the control block fail to allocate, the deleter releases the pixels.
    return std::shared_ptr<unsigned char>(block.bytes, StoredDelete{block.capacity});
}

std::size_t bufferBytes(unsigned long long step, unsigned int height) {
    unsigned long long const bytes = step * height;  // both below 2^32: no overflow
    if (bytes > static_cast<unsigned long long>(std::numeric_limits<std::ptrdiff_t>::max()))
        throw std::bad_array_new_length();
    return static_cast<std::size_t>(bytes);
}

// Keeps a host's buffer; the last handle to let go gives it back.
struct HostPixels {
    std::function<void()> release;
    ~HostPixels() {
        if (release) release();
    }
};

// The description a handle without an implementation shows.
ImageInfo const& nullInfo() {
    static constexpr ImageInfo info;
    return info;
}

}  // namespace

// Shared by all handles that are copies of each other. The pixels have a count of their
// own, so that a handle can change an attachment and still share the pixels.
class Image::Impl {
public:
    Impl() = default;
    // A fresh implementation for one handle: same pixels, same attachments, count 1.
    Impl(Impl const& other)
        : info(other.info),
          step(other.step),
          pixels(other.pixels),
          bytes(other.bytes),
          readable(other.readable),
          hasRoi(other.hasRoi),
          roi(other.roi),
          lines(other.lines),
          segments(other.segments) {}

    std::atomic<unsigned int> refs{1};
    ImageInfo info;
    unsigned int step = 0;
    std::shared_ptr<unsigned char> pixels;
    std::size_t bytes = 0;
    // What a copy takes: the whole buffer, or of a host's buffer whole rows but the last, of
    // which only the pixels (the buffer may end right after them).
    std::size_t readable = 0;
    bool hasRoi = false;
    Roi roi;
    List<Line> lines;
    SegmentList segments;
};

void Image::release(Impl* impl) {
    if (impl != nullptr && impl->refs.fetch_sub(1, std::memory_order_acq_rel) == 1) delete impl;
}

Image::Image() : _impl(nullptr) {}

Image::Image(ImageInfo const& info) : _impl(nullptr) {
    unsigned long long const rowBytes = info.rowBytes();
    if (rowBytes > std::numeric_limits<unsigned int>::max()) throw std::bad_array_new_length();
    std::unique_ptr<Impl> impl(new Impl);
    impl->info = info;
    impl->step = static_cast<unsigned int>(rowBytes);
    impl->bytes = bufferBytes(rowBytes, info.height);
    impl->readable = impl->bytes;
    impl->pixels = allocatePixels(impl->bytes);
    _impl = impl.release();
}

Image::Image(ImageInfo const& info, unsigned int step) : _impl(nullptr) {
    if (info.rowBytes() > step) throw std::invalid_argument("image step shorter than a row");
    std::unique_ptr<Impl> impl(new Impl);
    impl->info = info;
    impl->step = step;
    impl->bytes = bufferBytes(step, info.height);
    impl->readable = impl->bytes;
    impl->pixels = allocatePixels(impl->bytes);
    _impl = impl.release();
}

Image::Image(unsigned char* pixels, unsigned int step, ImageInfo const& info,
             std::function<void()> release)
    : _impl(nullptr) {
    if (info.rowBytes() > step) throw std::invalid_argument("image step shorter than a row");
    if (pixels == nullptr) {
        if (release) release();
        return;
    }
    std::unique_ptr<Impl> impl(new Impl);
    impl->info = info;
    impl->step = step;
    impl->bytes = bufferBytes(step, info.height);
    if (info.height > 0)
        impl->readable = impl->bytes - step + static_cast<std::size_t>(info.rowBytes());
    // The host's release rides on a holder made before it is moved in, so that a failed
    // allocation leaves the buffer with the host; the pixels share the holder's count.
    auto holder = std::make_shared<HostPixels>();
    holder->release = std::move(release);
    impl->pixels = std::shared_ptr<unsigned char>(holder, pixels);
    _impl = impl.release();
}

Image::Image(Image const& other) noexcept : _impl(other._impl) {
    if (_impl != nullptr) _impl->refs.fetch_add(1, std::memory_order_relaxed);
}

Image::Image(Image&& other) noexcept : _impl(other._impl) {
    other._impl = nullptr;
}

Image& Image::operator=(Image const& other) noexcept {
    if (other._impl != nullptr) other._impl->refs.fetch_add(1, std::memory_order_relaxed);
    release(_impl);
    _impl = other._impl;
    return *this;
}

Image& Image::operator=(Image&& other) noexcept {
    if (this != &other) {
        release(_impl);
        _impl = other._impl;
        other._impl = nullptr;
    }
    return *this;
}

Image::~Image() {
    release(_impl);
}

ImageInfo const& Image::info() const {
    return _impl != nullptr ? _impl->info : nullInfo();
}

unsigned int Image::step() const {
    return _impl != nullptr ? _impl->step : 0;
}

Image::Impl& Image::ownImpl() {
    if (_impl == nullptr) {
        _impl = new Impl;
    } else if (_impl->refs.load(std::memory_order_acquire) != 1) {
        Impl* copy = new Impl(*_impl);
        release(_impl);
        _impl = copy;
    }
    return *_impl;
}

unsigned char* Image::data() {
    if (isNull()) return nullptr;
    Impl& impl = ownImpl();
    if (impl.pixels.use_count() != 1) {
        std::shared_ptr<unsigned char> copy = allocatePixels(impl.bytes);
        std::memcpy(copy.get(), impl.pixels.get(), impl.readable);
        impl.pixels = std::move(copy);
    } else {
        // Whoever held the buffer before has dropped it; their reads come before our writes.
        std::atomic_thread_fence(std::memory_order_acquire);
    }
    return impl.pixels.get();
}

unsigned char const* Image::constData() const {
    return _impl != nullptr ? _impl->pixels.get() : nullptr;
}

char* Image::data_s() {
    return reinterpret_cast<char*>(data());
}

char const* Image::constData_s() const {
    return reinterpret_cast<char const*>(constData());
}

bool Image::isNull() const {
    return _impl == nullptr || !_impl->pixels;
}

Roi getRoi(Image const& image, char const** data) {
    ImageInfo const& info = image.info();
    long long const width = info.width;
    long long const height = info.height;
    long long x0 = 0, y0 = 0, x1 = width, y1 = height;
    if (image._impl != nullptr && image._impl->hasRoi) {
        // The front end trusts the region blindly, so it is cut to the image here.
        Roi const& roi = image._impl->roi;
        long long const x = roi.offset().x();
        long long const y = roi.offset().y();
        x0 = std::clamp(x, 0LL, width);
        y0 = std::clamp(y, 0LL, height);
        x1 = std::clamp(x + roi.size().width(), x0, width);
        y1 = std::clamp(y + roi.size().height(), y0, height);
    }
    if (x1 == x0 || y1 == y0) {
        // Nothing of the region lies inside: report an empty region at the buffer's start
        // rather than an address that may lie past the buffer's end.
        x0 = y0 = x1 = y1 = 0;
    }
    char const* first = image.constData_s();
    if (first != nullptr)
        first += y0 * static_cast<long long>(image.step()) +
                 x0 * static_cast<long long>(info.numChannels) * info.bytesPerChannel;
    *data = first;
    return Roi(Point(static_cast<int>(x0), static_cast<int>(y0)),
               Size(static_cast<unsigned int>(x1 - x0), static_cast<unsigned int>(y1 - y0)));
}

void setRoi(Image& image, Roi const& roi) {
    Image::Impl& impl = image.ownImpl();
    impl.hasRoi = true;
    impl.roi = roi;
}

void resetRoi(Image& image) {
    if (!hasRoi(image)) return;
    image.ownImpl().hasRoi = false;
}

bool hasRoi(Image const& image) {
    return image._impl != nullptr && image._impl->hasRoi;
}

void addLine(Image& image, Line const& line) {
    image.ownImpl().lines.append(line);
}

void setLines(Image& image, List<Line> const& lines) {
    image.ownImpl().lines = lines;
}

List<Line> lines(Image const& image) {
    return image._impl != nullptr ? image._impl->lines : List<Line>();
}

void setSegmentList(Image& image, SegmentList const& segments) {
    image.ownImpl().segments = segments;
}

SegmentList segmentList(Image const& image) {
    return image._impl != nullptr ? image._impl->segments : SegmentList();
}

}  // namespace nuv::core::image
