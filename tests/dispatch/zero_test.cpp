// Clearing vectors: statuses, every start alignment and short length at every slot, the
// 32-bit byte count of the 32-bit form, and the streaming paths of blocks larger than the
// cache on a played processor with a small cache.
#include "support/bodies.h"
#include "support/fake_processor.h"
#include "support/slots.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

constexpr std::uint8_t kGuard = 0xA5;
constexpr int kLead = 64;   // guard bytes before the cleared block
constexpr int kTrail = 64;  // and after it

// A 64-byte aligned buffer with room for `misalign` bytes, `length` bytes and guards, all
// set to the guard byte. The exact size lets the sanitizer see a write past the end.
class Block {
public:
    Block(int misalign, std::size_t length)
        : _misalign(misalign), _size(kLead + misalign + length + kTrail) {
        void* p = nullptr;
        if (posix_memalign(&p, 64, _size) != 0) std::abort();
        _bytes = static_cast<std::uint8_t*>(p);
        std::memset(_bytes, kGuard, _size);
    }
    ~Block() { std::free(_bytes); }
    Block(Block const&) = delete;
    Block& operator=(Block const&) = delete;

    Ipp8u* start() { return _bytes + kLead + _misalign; }

    // Index of the first byte that is not as expected (zero inside the first `cleared`
    // bytes from start, the guard byte everywhere else), or -1.
    std::ptrdiff_t firstWrongByte(std::size_t cleared) const {
        const std::size_t begin = kLead + _misalign;
        for (std::size_t i = 0; i < _size; ++i) {
            const bool inside = i >= begin && i < begin + cleared;
            if (_bytes[i] != (inside ? 0 : kGuard))
                return static_cast<std::ptrdiff_t>(i) - static_cast<std::ptrdiff_t>(begin);
        }
        return -1;
    }

private:
    int _misalign;
    std::size_t _size;
    std::uint8_t* _bytes;
};

void expectZeroed8u(int slot, int misalign, int length) {
    Block block(misalign, length);
    ASSERT_EQ(nuv::test::slotTable::ippsZero_8u[slot](block.start(), length), ippStsNoErr);
    EXPECT_EQ(block.firstWrongByte(length), -1)
        << "length " << length << ", start " << misalign << " past a 64-byte boundary";
}

TEST(ZeroTest, RefusesNullAndEmptyVectorsWithoutWriting) {
    nuv::test::forEachSlot([](int slot) {
        Block block(0, 16);
        auto const zero8u = nuv::test::slotTable::ippsZero_8u[slot];
        auto const zero32s = nuv::test::slotTable::ippsZero_32s[slot];
        EXPECT_EQ(zero8u(nullptr, 5), ippStsNullPtrErr);
        EXPECT_EQ(zero8u(nullptr, 0), ippStsNullPtrErr);  // the pointer is checked first
        EXPECT_EQ(zero8u(block.start(), 0), ippStsSizeErr);
        EXPECT_EQ(zero8u(block.start(), -1), ippStsSizeErr);
        EXPECT_EQ(zero32s(nullptr, 5), ippStsNullPtrErr);
        EXPECT_EQ(zero32s(nullptr, -2), ippStsNullPtrErr);
        auto* words = reinterpret_cast<Ipp32s*>(block.start());
        EXPECT_EQ(zero32s(words, 0), ippStsSizeErr);
        EXPECT_EQ(zero32s(words, -7), ippStsSizeErr);
        EXPECT_EQ(block.firstWrongByte(0), -1);
    });
}

TEST(ZeroTest, NineBytesClearExactlyNine) {
    nuv::test::forEachSlot([](int slot) {
        Block block(0, 10);
        ASSERT_EQ(nuv::test::slotTable::ippsZero_8u[slot](block.start(), 9), ippStsNoErr);
        for (int i = 0; i < 9; ++i) EXPECT_EQ(block.start()[i], 0) << i;
        EXPECT_EQ(block.start()[9], kGuard);
    });
}

TEST(ZeroTest, EveryStartAlignmentAndShortLength) {
    nuv::test::forEachSlot([](int slot) {
        for (int misalign = 0; misalign < 16; ++misalign)
            for (int length = 1; length <= 200; ++length) {
                expectZeroed8u(slot, misalign, length);
                if (::testing::Test::HasFailure()) return;
            }
    });
}

TEST(ZeroTest, LargeBlocks) {
    nuv::test::forEachSlot([](int slot) {
        for (int misalign : {0, 1, 7, 8, 15, 31, 33})
            for (int length : {255, 256, 1000, 4097, 65543, 0x80000, 0x80000 + 77, 0x200001})
                expectZeroed8u(slot, misalign, length);
    });
}

TEST(ZeroTest, WordsAtEveryWordAlignment) {
    nuv::test::forEachSlot([](int slot) {
        for (int misalign : {0, 4, 8, 12, 20})
            for (int length = 1; length <= 80; ++length) {
                Block block(misalign, 4 * static_cast<std::size_t>(length));
                auto* words = reinterpret_cast<Ipp32s*>(block.start());
                ASSERT_EQ(nuv::test::slotTable::ippsZero_32s[slot](words, length), ippStsNoErr);
                ASSERT_EQ(block.firstWrongByte(4 * static_cast<std::size_t>(length)), -1)
                    << "length " << length << ", start " << misalign;
            }
    });
}

TEST(ZeroTest, WordByteCountWrapsInThirtyTwoBits) {
    nuv::test::forEachSlot([](int slot) {
        auto const zero32s = nuv::test::slotTable::ippsZero_32s[slot];
        // 0x40000001 words are 4 bytes in 32 bits: one word is cleared, nothing beyond.
        Block one(0, 4);
        EXPECT_EQ(zero32s(reinterpret_cast<Ipp32s*>(one.start()), 0x40000001), ippStsNoErr);
        EXPECT_EQ(one.firstWrongByte(4), -1);
        // 0x40000000 words are 0 bytes: the length passes its check and nothing is cleared.
        Block none(0, 4);
        EXPECT_EQ(zero32s(reinterpret_cast<Ipp32s*>(none.start()), 0x40000000), ippStsNoErr);
        EXPECT_EQ(none.firstWrongByte(0), -1);
    });
}

// ---- streaming paths on a played processor -------------------------------------------

// "GenuineIntel" with a 512 KiB cache by its leaf 2 descriptor (0x43), which the older
// route reads, and a 1 MiB data cache by leaf 4, which ippGetMaxCacheSizeB reads.
class ZeroStreamingTest : public nuv::test::DispatchTest {
protected:
    void SetUp() override {
        DispatchTest::SetUp();
        play(nuv::test::processors::smallCacheIntel(0x43, 1024 * 1024));
    }
    int leaf2Calls() { return cpu().calls(2); }
    int leaf4Calls() { return cpu().calls(4); }
    int allCalls() { return cpu().totalCalls(); }
    // Slots 5 and 6 (e9, l9) ask ippGetMaxCacheSizeB; the others read leaf 2 themselves.
    static bool asksLeaf4(int slot) { return slot >= 5; }
};

TEST_F(ZeroStreamingTest, TheOlderRouteStreamsAboveHalfAMebibyte) {
    nuv::test::forEachSlot([this](int slot) {
        if (asksLeaf4(slot)) return;
        for (int misalign : {0, 3, 8, 15}) {
            // At least 0x80000 bytes after the head: the 512 KiB cache is asked and passed.
            restart();
            expectZeroed8u(slot, misalign, 0x80000 + 16);
            EXPECT_GT(leaf2Calls(), 0);
            restart();
            expectZeroed8u(slot, misalign, 600001);
            EXPECT_GT(leaf2Calls(), 0);
            EXPECT_EQ(leaf4Calls(), 0) << "this route does not use ippGetMaxCacheSizeB";
            // Not above 0x80000: the cache is not asked.
            restart();
            expectZeroed8u(slot, misalign, 0x80000);
            EXPECT_EQ(allCalls(), 0);
        }
    });
}

TEST_F(ZeroStreamingTest, TheAvxFormsStreamAboveTwoMebibytesAndTheCache) {
    nuv::test::forEachSlot([this](int slot) {
        if (!asksLeaf4(slot)) return;
        for (int misalign : {0, 1, 32, 63}) {
            restart();
            expectZeroed8u(slot, misalign, 3 * 0x100000 + 5);
            EXPECT_GT(leaf4Calls(), 0);
            EXPECT_EQ(leaf2Calls(), 0);
            restart();
            expectZeroed8u(slot, misalign, 0x200000 + 1);
            EXPECT_GT(leaf4Calls(), 0);
            restart();
            expectZeroed8u(slot, misalign, 0x200000);
            EXPECT_EQ(allCalls(), 0);
        }
    });
}

TEST_F(ZeroStreamingTest, WordsTakeTheSamePaths) {
    nuv::test::forEachSlot([this](int slot) {
        const int length = 0x100000 + 3;  // 4 MiB and 12 bytes
        Block block(4, 4 * static_cast<std::size_t>(length));
        restart();
        ASSERT_EQ(nuv::test::slotTable::ippsZero_32s[slot](reinterpret_cast<Ipp32s*>(block.start()),
                                                           length),
                  ippStsNoErr);
        EXPECT_EQ(block.firstWrongByte(4 * static_cast<std::size_t>(length)), -1);
        EXPECT_GT(asksLeaf4(slot) ? leaf4Calls() : leaf2Calls(), 0);
    });
}

}  // namespace
