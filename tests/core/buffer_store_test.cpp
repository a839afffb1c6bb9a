// The store of released pixel buffers: an image that lets go of its buffer leaves it for the
// next image of that size class, within the store's bound; host pixels never enter it.
#include <nuv/core.h>

#include <gtest/gtest.h>

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
#define NUV_TEST_POISONING 1
#endif

namespace {

using namespace nuv::core::image;

struct BufferStore : ::testing::Test {
    void SetUp() override {
        setBufferStoreLimit(std::size_t(64) << 20);
        emptyBufferStore();
    }
};

// A released buffer comes back for the next image of its class: at once, to a slightly
// smaller image, and to a detaching copy; never to an image of another class.
TEST_F(BufferStore, ReleasedBuffersServeTheNextImageOfTheirClass) {
    unsigned char const* first = nullptr;
    {
        Image frame(ImageInfo(640, 480, BGR));
        first = frame.constData();
        EXPECT_EQ(bufferStoreBytes(), 0u);
    }
    const std::size_t held = bufferStoreBytes();
    EXPECT_GE(held, 640u * 480 * 3);
    EXPECT_LE(held, 640u * 480 * 3 * 9 / 8);
    {
        Image quarter(ImageInfo(320, 240, BGR));  // another class: the buffer stays
        EXPECT_EQ(bufferStoreBytes(), held);
        Image next(ImageInfo(638, 480, BGR));
        EXPECT_EQ(next.constData(), first);
        EXPECT_EQ(bufferStoreBytes(), 0u);
    }
    emptyBufferStore();
    Image a(ImageInfo(640, 480, BGR));
    Image b(a);
    { Image waiting(ImageInfo(640, 480, BGR)); }
    EXPECT_EQ(bufferStoreBytes(), held);
    b.data();  // b needs pixels of its own and takes the waiting buffer
    EXPECT_EQ(bufferStoreBytes(), 0u);
    EXPECT_NE(b.constData(), a.constData());
}

// Over the bound the buffers released longest ago are freed first; a lower bound or
// emptying frees at once; a bound of 0 keeps nothing.
TEST_F(BufferStore, BoundDropsTheOldestFirst) {
    const ImageInfo sizes[3] = {ImageInfo(1000, 1000, Gray), ImageInfo(700, 700, Gray),
                                ImageInfo(600, 600, Gray)};
    std::size_t capacity[3];
    for (int i = 0; i < 3; ++i) {
        const std::size_t before = bufferStoreBytes();
        { Image image(sizes[i]); }
        capacity[i] = bufferStoreBytes() - before;
    }
    emptyBufferStore();
    EXPECT_EQ(bufferStoreBytes(), 0u);
    setBufferStoreLimit(capacity[0] + capacity[2]);
    EXPECT_EQ(bufferStoreLimit(), capacity[0] + capacity[2]);
    for (ImageInfo const& info : sizes) Image image(info);  // the largest, released first, goes
    EXPECT_EQ(bufferStoreBytes(), capacity[1] + capacity[2]);
    {
        Image largest(sizes[0]);
        EXPECT_EQ(bufferStoreBytes(), capacity[1] + capacity[2]);
        Image middle(sizes[1]);
        EXPECT_EQ(bufferStoreBytes(), capacity[2]);
    }
    EXPECT_EQ(bufferStoreBytes(), capacity[0]);  // the older two make room for the newest
    setBufferStoreLimit(capacity[0]);
    EXPECT_EQ(bufferStoreBytes(), capacity[0]);
    setBufferStoreLimit(0);
    EXPECT_EQ(bufferStoreBytes(), 0u);
    { Image image(sizes[0]); }
    EXPECT_EQ(bufferStoreBytes(), 0u);
}

// A host's pixels go back to the host, small buffers to the heap.
TEST_F(BufferStore, KeepsNeitherHostPixelsNorSmallBuffers) {
    static unsigned char pixels[480][640];
    int released = 0;
    {
        Image host(&pixels[0][0], 640, ImageInfo(640, 480, Gray), [&] { ++released; });
    }
    EXPECT_EQ(released, 1);
    { Image small(ImageInfo(30, 30, BGR)); }
    EXPECT_EQ(bufferStoreBytes(), 0u);
}

#ifdef NUV_TEST_POISONING
// A read through a pointer kept past the image's release is still reported.
TEST_F(BufferStore, WaitingBuffersArePoisoned) {
    unsigned char const* kept = nullptr;
    {
        Image image(ImageInfo(200, 100, BGR));
        kept = image.constData();
        EXPECT_FALSE(__asan_address_is_poisoned(kept));
    }
    EXPECT_TRUE(__asan_address_is_poisoned(kept));
    EXPECT_TRUE(__asan_address_is_poisoned(kept + 200 * 100 * 3 - 1));
    Image again(ImageInfo(200, 100, BGR));
    EXPECT_EQ(again.constData(), kept);
    EXPECT_FALSE(__asan_address_is_poisoned(kept + 200 * 100 * 3 - 1));
}
#endif

}  // namespace
