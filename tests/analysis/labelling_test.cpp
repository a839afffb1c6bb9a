// Labelling and its flood fills at every body: random marker images against a plain model of
// raster-ordered components (both connectivities, label ranges that wrap), with exactly the
// queried scratch so that any write past it is a sanitizer report; the shapes whose stack
// outgrows that scratch; the fill's own record and region; the orders of checks.
#include "support/bodies.h"
#include "support/sweep.h"

#include <cstring>
#include <memory>
#include <queue>

namespace {

using namespace nuv::test;
namespace bodies = nuv::test::slotTable;

// Labels of the components of non-zero pixels in raster order of their first pixel, from
// minLabel to maxLabel and round again; the number of components.
int modelLabels(Bytes& image, int width, int height, int minLabel, int maxLabel, bool eight) {
    for (auto& p : image) p = p ? 255 : 0;
    int count = 0, label = minLabel;
    for (int start = 0; start < width * height; ++start) {
        if (image[start] != 255) continue;
        std::queue<int> todo;
        image[start] = std::uint8_t(label);
        for (todo.push(start); !todo.empty(); todo.pop()) {
            const int x = todo.front() % width, y = todo.front() / width;
            for (int dy = -1; dy <= 1; ++dy)
                for (int dx = -1; dx <= 1; ++dx) {
                    const int nx = x + dx, ny = y + dy;
                    if ((!eight && dx != 0 && dy != 0) || nx < 0 || ny < 0 || nx >= width ||
                        ny >= height || image[ny * width + nx] != 255)
                        continue;
                    image[ny * width + nx] = std::uint8_t(label);
                    todo.push(ny * width + nx);
                }
        }
        ++count;
        label = label == maxLabel ? minLabel : label + 1;
    }
    return count;
}

// Scratch of exactly the queried size, so the sanitizer sees a write past it.
std::unique_ptr<Ipp8u[]> scratch(int slot, IppiSize roi) {
    int size = 0;
    EXPECT_EQ(bodies::ippiLabelMarkersGetBufferSize_8u_C1R[slot](roi, &size), ippStsNoErr);
    EXPECT_EQ(size, 6 * roi.width * roi.height + 32);
    return std::unique_ptr<Ipp8u[]>(new Ipp8u[size]);
}

class LabelSweep : public PrimitiveSweep {
protected:
    // Labels `image` (rows of `width`) at this generation's body and checks it and the count
    // against the model.
    void expectLabels(Bytes const& image, int width, int minLabel, int maxLabel, int norm,
                      Layout layout = {}) {
        const int slot = slotOf(GetParam(), "ippiLabelMarkers_8u_C1IR");
        if (slot < 0) GTEST_SKIP() << "no body of this generation runs here";
        const IppiSize roi{width, static_cast<int>(image.size()) / width};
        GuardedImage img(width, roi.height, layout);
        for (int y = 0; y < roi.height; ++y)
            std::copy_n(image.begin() + y * width, width, img.row(y));
        Bytes expected = image;
        const int count = modelLabels(expected, width, roi.height, minLabel, maxLabel, norm == 0);
        auto buffer = scratch(slot, roi);
        int number = -1;
        img.forbidOutside(true);
        const IppStatus status = bodies::ippiLabelMarkers_8u_C1IR[slot](
            img.first(), img.step(), roi, minLabel, maxLabel, norm, &number, buffer.get());
        img.forbidOutside(false);
        ASSERT_EQ(status, ippStsNoErr);
        EXPECT_EQ(number, count);
        EXPECT_EQ(img.packed(), expected);
        EXPECT_TRUE(img.guardsIntact());
    }
};

TEST_P(LabelSweep, RandomMarkersMatchTheModel) {
    std::mt19937 rng(7000 + static_cast<int>(GetParam()));
    for (int round = 0; round < 60 && !HasFailure(); ++round) {
        const int width = rng() % 70 + 1, height = rng() % 40 + 1, density = rng() % 70 + 10;
        Bytes image(static_cast<std::size_t>(width) * height);
        for (auto& p : image) p = int(rng() % 100) < density ? rng() % 255 + 1 : 0;
        const int minLabel = rng() % 20 + 1, maxLabel = minLabel + rng() % (round % 3 ? 200 : 3);
        const Layout layout{static_cast<int>(rng() % 20), static_cast<int>(rng() % 16), false, 32};
        SCOPED_TRACE(std::to_string(width) + "x" + std::to_string(height) + " density " +
                     std::to_string(density));
        expectLabels(image, width, minLabel, maxLabel, round % 2, layout);
    }
}

// Shapes whose fill keeps more runs than the query has room for: combs and lattices of
// height 3 (a tooth on every second column, joined by a full middle row), and a lattice of
// one-pixel lines on every second row and column.
TEST_P(LabelSweep, ShapesThatOutgrowTheQueriedStack) {
    for (int width : {10, 11, 33, 64}) {
        Bytes comb;
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < width; ++x) comb.push_back(y == 1 || x % 2 == 0);
        expectLabels(comb, width, 1, 254, 0);
        expectLabels(comb, width, 1, 254, 1);
        Bytes lattice;
        for (int y = 0; y < 64; ++y)
            for (int x = 0; x < width; ++x) lattice.push_back(y % 2 == 0 || x % 2 == 0);
        expectLabels(lattice, width, 1, 254, 1);
        expectLabels(lattice, width, 3, 3, 0);
    }
    // A comb that outgrows the stack, and a lone pixel in its first row labelled after it:
    // the sweep after the full stack must not look above the first row (whose guard bytes
    // hold the comb's label here).
    Bytes lone;
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 33; ++x)
            lone.push_back((x < 30 && (y == 1 || x % 2 == 0)) || (y == 0 && x == 32));
    expectLabels(lone, 33, GuardedImage::guardByte, 254, 0);
}

// Many small components wrap the labels while the count goes on; one label throughout.
TEST_P(LabelSweep, LabelsWrapAndTheCountGoesOn) {
    Bytes dots(40 * 30, 0);
    for (int y = 0; y < 30; y += 2)
        for (int x = 0; x < 40; x += 2) dots[y * 40 + x] = 9;  // 300 single pixels
    expectLabels(dots, 40, 1, 254, 0);
    expectLabels(dots, 40, 7, 7, 1);
    expectLabels(Bytes(64, 0), 16, 1, 254, 0);
    expectLabels(Bytes(64, 3), 16, 1, 254, 0);
}

TEST_P(LabelSweep, OrdersOfChecks) {
    const int slot = slotOf(GetParam(), "ippiLabelMarkers_8u_C1IR");
    if (slot < 0) GTEST_SKIP() << "no body of this generation runs here";
    auto label = bodies::ippiLabelMarkers_8u_C1IR[slot];
    Ipp8u img[16] = {1}, buffer[128];
    int n = -7, size = -7;
    for (auto [image, step, roi, lo, hi, norm, number, scratch, status] :
         {std::tuple{img, 4, IppiSize{4, 4}, 1, 254, 0, &n, (Ipp8u*)nullptr, ippStsNullPtrErr},
          {img, 4, {4, 4}, 1, 254, 0, nullptr, buffer, ippStsNullPtrErr},
          {nullptr, 4, {0, 4}, 1, 254, 0, &n, buffer, ippStsNullPtrErr},
          {img, 3, {0, 4}, 0, 254, 9, &n, buffer, ippStsSizeErr},
          {img, 3, {4, 4}, 0, 254, 9, &n, buffer, ippStsStepErr},
          {img, 4, {4, 4}, 0, 254, 9, &n, buffer, ippStsBadArgErr},
          {img, 4, {4, 4}, 1, 255, 0, &n, buffer, ippStsBadArgErr},
          {img, 4, {4, 4}, 9, 8, 0, &n, buffer, ippStsBadArgErr},
          {img, 4, {4, 4}, 1, 254, 2, &n, buffer, ippStsBadArgErr}}) {
        EXPECT_EQ(label(image, step, roi, lo, hi, norm, number, scratch), status);
        EXPECT_EQ(img[0], 1);
        EXPECT_EQ(n, -7);
    }
    auto query = bodies::ippiLabelMarkersGetBufferSize_8u_C1R[slot];
    EXPECT_EQ(query({0, 0}, nullptr), ippStsNullPtrErr);
    EXPECT_EQ(query({5, 0}, &size), ippStsSizeErr);
    EXPECT_EQ(size, -7);
    EXPECT_EQ(query({30000, 30000}, &size), ippStsNoErr);  // 5.4e9 + 32, its low 32 bits
    EXPECT_EQ(size, static_cast<int>(static_cast<std::uint32_t>(6LL * 30000 * 30000 + 32)));
}

// ---- the fills on their own

struct Filled {
    IppStatus status;
    Bytes image;
    IppiFillRegion region;
    std::int32_t firstRecord[6];
};
Filled fill(int slot, bool eight, Bytes image, int width, IppiPoint seed, int value) {
    const IppiSize roi{width, static_cast<int>(image.size()) / width};
    Filled f{};
    f.region.area = -1;
    int size = 0;
    bodies::ippiFloodFillGetSize[slot](roi, &size);
    std::vector<std::int64_t> buffer((size + 7) / 8, -1);  // 8-byte aligned: the stack's start
    auto body = eight ? bodies::ippiFloodFill_8Con_8u_C1IR : bodies::ippiFloodFill_4Con_8u_C1IR;
    f.status = body[slot](image.data(), width, roi, seed, value, &f.region,
                          reinterpret_cast<Ipp8u*>(buffer.data()));
    f.image = image;
    std::memcpy(f.firstRecord, buffer.data(), sizeof f.firstRecord);
    return f;
}

// A U: the fill turns back at its bottom through the parent's row. A run alone in two rows
// leaves its first record: the seed's run with the empty parent span after it, heading to
// the other row.
TEST_P(LabelSweep, FillRecordsAndRegion) {
    const int slot = slotOf(GetParam(), "ippiFloodFill_8Con_8u_C1IR");
    if (slot < 0) GTEST_SKIP() << "no body of this generation runs here";
    const Bytes u = {0, 5, 0, 0, 5, 0,  //
                     0, 5, 0, 0, 5, 7,  //
                     0, 5, 5, 5, 5, 0};
    for (bool eight : {false, true}) {
        const Filled f = fill(slot, eight, u, 6, {4, 0}, 9);
        ASSERT_EQ(f.status, ippStsNoErr);
        Bytes expected = u;
        for (auto& p : expected) p = p == 5 ? 9 : p;
        EXPECT_EQ(f.image, expected);
        EXPECT_EQ(f.region.area, 8);
        EXPECT_EQ(f.region.value[0], 9);
        EXPECT_EQ(f.region.rect.x, 1);
        EXPECT_EQ(f.region.rect.width, 4);
        EXPECT_EQ(f.region.rect.height, 3);
    }
    const Bytes alone = {0, 5, 5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 5, 5, 5, 0};
    const Filled down = fill(slot, true, alone, 8, {2, 0}, 9);
    const Filled up = fill(slot, false, alone, 8, {5, 1}, 9);
    EXPECT_EQ(std::vector<int>(down.firstRecord, down.firstRecord + 6),
              std::vector<int>({0, 1, 2, 3, 2, 1}));
    EXPECT_EQ(std::vector<int>(up.firstRecord, up.firstRecord + 6),
              std::vector<int>({1, 4, 6, 7, 6, -1}));
    // 256 fills with 0; the seed's own value returns at once without touching the region;
    // one row never touches the stack.
    EXPECT_EQ(fill(slot, false, u, 6, {1, 1}, 256).image[7], 0);
    EXPECT_EQ(fill(slot, false, u, 6, {1, 1}, 5 + 512).region.area, -1);
    const Filled row = fill(slot, false, Bytes(40, 2), 40, {17, 0}, 1);
    EXPECT_EQ(row.image, Bytes(40, 1));
    EXPECT_EQ(row.firstRecord[0], -1);
    EXPECT_EQ(row.region.rect.width, 40);
    // The orders of checks.
    Ipp8u img[4] = {};
    IppiFillRegion region;
    auto f4 = bodies::ippiFloodFill_4Con_8u_C1IR[slot];
    EXPECT_EQ(f4(img, 2, {0, 2}, {0, 0}, 1, nullptr, img), ippStsNullPtrErr);
    EXPECT_EQ(f4(img, 1, {0, 2}, {5, 0}, 1, &region, img), ippStsSizeErr);
    EXPECT_EQ(f4(img, 1, {2, 2}, {5, 0}, 1, &region, img), ippStsStepErr);
    EXPECT_EQ(f4(img, 2, {2, 2}, {0, 2}, 1, &region, img), ippStsOutOfRangeErr);
    EXPECT_EQ(f4(img, 2, {2, 2}, {2, 0}, 1, &region, img), ippStsOutOfRangeErr);
    EXPECT_EQ(f4(img, 2, {2, 2}, {-1, 0}, 1, &region, img), ippStsOutOfRangeErr);
    EXPECT_EQ(bodies::ippiFloodFillGetSize[slot]({1, 0}, nullptr), ippStsNullPtrErr);
    EXPECT_EQ(Bytes(img, img + 4), Bytes(4, 0));
}

NUV_SWEEP_GENERATIONS(LabelSweep);

}  // namespace
