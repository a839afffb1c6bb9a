// The Hough line primitive at every body against a plain model: a full accumulator of the
// same fixed-point votes, the asymmetric peak test over it, and a stable sort by votes; on
// random edge images and drawn lines, with exactly the queried buffer. Then the worked cases
// of the axes' ends and the orders of checks.
#include "support/bodies.h"
#include "support/sweep.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace {

using namespace nuv::test;
namespace bodies = nuv::test::slotTable;

struct Lines {
    IppStatus status;
    std::vector<std::pair<float, float>> lines;  // rho, theta
    bool operator==(Lines const& o) const { return status == o.status && lines == o.lines; }
};
void PrintTo(Lines const& l, std::ostream* os) {
    *os << "status " << l.status << ":";
    for (auto [rho, theta] : l.lines) *os << " (" << rho << ", " << theta << ")";
}

Lines modelLines(Bytes const& image, IppiSize roi, IppiRhoTheta delta, int threshold, int max) {
    const int numRho = int(float(2 * (roi.width + roi.height) + 1) / delta.rho);
    const int lastAngle = int(3.14159 / double(delta.theta)), rhoOffset = (numRho - 1) / 2;
    std::vector<std::vector<int>> votes(lastAngle + 1, std::vector<int>(numRho, 0));
    const double scale = double(1.0f / delta.rho) * 1024.0;
    float angle = 0;
    for (int t = 0; t <= lastAngle; ++t, angle += delta.theta) {
        const float c = float(int(std::cos(double(angle)) * scale));
        const float s = float(int(std::sin(double(angle)) * scale));
        for (int y = 0; y < roi.height; ++y)
            for (int x = 0; x < roi.width; ++x) {
                if (image[y * roi.width + x] == 0) continue;
                const float p = float(y) * s, v = float(x) * c + p;
                const int cell = ((int(std::nearbyint(v)) + 512) >> 10) + rhoOffset;
                if (cell >= 0 && cell < numRho) ++votes[t][cell];
            }
    }
    auto at = [&](int t, int r) {
        return t < 0 || t > lastAngle || r < 0 || r >= numRho ? 0 : votes[t][r];
    };
    struct Peak {
        int rho, theta, votes;
    };
    std::vector<Peak> peaks;
    for (int t = 0; t <= lastAngle; ++t)
        for (int r = 0; r < numRho; ++r) {
            const int c = votes[t][r];
            if (c > threshold && c > at(t, r - 1) && c >= at(t, r + 1) && c > at(t - 1, r) &&
                c >= at(t + 1, r))
                peaks.push_back({r, t, c});
        }
    std::stable_sort(peaks.begin(), peaks.end(),
                     [](Peak const& a, Peak const& b) { return a.votes > b.votes; });
    Lines out{ippStsNoErr, {}};
    for (int k = 0; k < std::min<int>(max, peaks.size()); ++k)
        out.lines.push_back(
            {float(peaks[k].rho - rhoOffset) * delta.rho, float(peaks[k].theta) * delta.theta});
    return out;
}

class HoughSweep : public PrimitiveSweep {
protected:
    Lines lines(Bytes const& image, IppiSize roi, IppiRhoTheta delta, int threshold, int max,
                int padding = 0) {
        const int slot = slotOf(GetParam(), "ippiHoughLine_8u32f_C1R");
        int size = 0;
        EXPECT_EQ(bodies::ippiHoughLineGetSize_8u_C1R[slot](roi, delta, max, &size), ippStsNoErr);
        auto buffer = std::make_unique<Ipp8u[]>(size);  // exactly: a read past it is a report
        GuardedImage src(roi.width, roi.height, {padding, 3, false, 32});
        for (int y = 0; y < roi.height; ++y)
            std::copy_n(image.begin() + y * roi.width, roi.width, src.row(y));
        std::vector<IppiRhoTheta> out(max + 1, {-7.0f, -7.0f});
        int count = -1;
        Lines got{
            bodies::ippiHoughLine_8u32f_C1R[slot](src.first(), src.step(), roi, delta, threshold,
                                                  out.data(), max, &count, buffer.get()),
            {}};
        for (int k = 0; k < count; ++k) got.lines.push_back({out[k].rho, out[k].theta});
        EXPECT_EQ(out[max].rho, -7.0f);  // nothing past maxLineCount
        return got;
    }
    void SetUp() override {
        PrimitiveSweep::SetUp();
        if (slotOf(GetParam(), "ippiHoughLine_8u32f_C1R") < 0)
            GTEST_SKIP() << "no body of this generation runs here";
    }
};

// Random scatter with a few drawn lines, random steps, thresholds and list lengths.
TEST_P(HoughSweep, RandomEdgeImagesMatchTheModel) {
    std::mt19937 rng(8000 + static_cast<int>(GetParam()));
    const float pi = 3.14159265f;
    std::size_t found = 0;
    for (int round = 0; round < 30 && !HasFailure(); ++round) {
        const IppiSize roi{int(rng() % 60) + 1, int(rng() % 40) + 1};
        Bytes image(roi.width * roi.height, 0);
        for (auto& p : image) p = rng() % 100 < 3 ? 255 : 0;
        for (int l = rng() % 3; l > 0; --l) {
            const float a = float(rng() % 1000) / 1000 * pi, r = float(rng() % 40);
            for (int y = 0; y < roi.height; ++y)
                for (int x = 0; x < roi.width; ++x)
                    if (std::fabs(x * std::cos(a) + y * std::sin(a) - r) < 0.5f)
                        image[y * roi.width + x] = 1;
        }
        const IppiRhoTheta delta{(float[]){1.0f, 0.5f, 2.0f, 1.5f}[rng() % 4],
                                 (float[]){pi / 180, 0.01f, 0.05f, 0.3f}[rng() % 4]};
        const int threshold = rng() % 12 + 1, max = rng() % 20 + 1;
        SCOPED_TRACE(std::to_string(roi.width) + "x" + std::to_string(roi.height));
        const Lines expected = modelLines(image, roi, delta, threshold, max);
        EXPECT_EQ(lines(image, roi, delta, threshold, max, rng() % 9), expected);
        found += expected.lines.size();
    }
    EXPECT_GT(found, 60u);  // the rounds find lines, not only empty lists
}

// The ends of the axes: a point at the origin votes for the middle cell at every angle; one
// point never passes threshold 1; the largest steps accepted; more peaks than room.
TEST_P(HoughSweep, WorkedCases) {
    Bytes image(12 * 8, 0);
    EXPECT_EQ(lines(image, {12, 8}, {1, 0.1f}, 1, 5).lines.size(), 0u);
    image[0] = 9;
    EXPECT_EQ(lines(image, {12, 8}, {1, 0.1f}, 1, 5).lines.size(), 0u);
    image[1] = image[2] = 9;  // three points in row 0: theta pi/2 at rho 0 and the rest
    const Lines row = lines(image, {12, 8}, {1, 3.14159f / 2}, 1, 5);
    EXPECT_EQ(row, modelLines(image, {12, 8}, {1, 3.14159f / 2}, 1, 5));
    ASSERT_FALSE(row.lines.empty());
    EXPECT_EQ(row.lines[0], std::make_pair(0.0f, 3.14159f / 2));
    // The widest steps accepted: rho w + h (two cells), theta the float below 3.14159 (two angles).
    for (IppiRhoTheta delta :
         {IppiRhoTheta{20, 0.2f}, {1, std::nextafter(3.14159f, 0.0f)}, {7, 1.5f}})
        EXPECT_EQ(lines(image, {12, 8}, delta, 1, 3), modelLines(image, {12, 8}, delta, 1, 3));
    // A rho step of the region's size: far-right points near pi fall one cell below the
    // first, and their votes are dropped rather than written before the counters, where
    // they would stand beside cell 0 (which the points of column 0 fill).
    const Bytes edge = {9, 0, 0, 0, 0, 0, 0, 9, 9, 9, 9, 0, 0, 0, 0, 0, 0, 9, 9, 9};
    for (float theta : {0.3f, 0.05f})
        EXPECT_EQ(lines(edge, {10, 2}, {12, theta}, 1, 8),
                  modelLines(edge, {10, 2}, {12, theta}, 1, 8));
    Bytes grid(16 * 16, 0);
    for (int i = 0; i < 16; i += 3)
        for (int j = 0; j < 16; ++j) grid[i * 16 + j] = grid[j * 16 + i] = 1;
    const Lines two = lines(grid, {16, 16}, {1, 0.05f}, 3, 2);
    EXPECT_EQ(two, modelLines(grid, {16, 16}, {1, 0.05f}, 3, 2));
    EXPECT_EQ(two.lines.size(), 2u);
}

TEST_P(HoughSweep, OrdersOfChecks) {
    const int slot = slotOf(GetParam(), "ippiHoughLine_8u32f_C1R");
    auto hough = bodies::ippiHoughLine_8u32f_C1R[slot];
    auto query = bodies::ippiHoughLineGetSize_8u_C1R[slot];
    Ipp8u img[16] = {}, buffer[4096];
    IppiRhoTheta out[2] = {{5, 5}, {5, 5}};
    int n = -3, size = -3;
    const IppiRhoTheta d{1, 0.1f};
    const float nan = std::nanf("");
    for (auto [image, step, roi, delta, thr, max, count, scratch, status] :
         {std::tuple{img, 4, IppiSize{4, 4}, d, 1, 2, &n, (Ipp8u*)nullptr, ippStsNullPtrErr},
          {img, 4, {4, 4}, d, 1, 2, nullptr, buffer, ippStsNullPtrErr},
          {img, 0, {0, 4}, d, 0, 0, &n, buffer, ippStsStepErr},
          {img, 1, {0, 4}, d, 0, 2, &n, buffer, ippStsSizeErr},
          {img, 1, {4, 4}, IppiRhoTheta{0, 0}, 0, 0, &n, buffer, ippStsSizeErr},
          {img, 1, {4, 4}, IppiRhoTheta{0, 0.1f}, 1, 2, &n, buffer, ippStsBadArgErr},
          {img, 1, {4, 4}, IppiRhoTheta{8.01f, 0.1f}, 1, 2, &n, buffer, ippStsBadArgErr},
          {img, 1, {4, 4}, IppiRhoTheta{1, 3.14159f}, 1, 2, &n, buffer, ippStsBadArgErr},
          {img, 1, {4, 4}, IppiRhoTheta{nan, 0.1f}, 1, 2, &n, buffer, ippStsBadArgErr},
          {img, 1, {4, 4}, d, 0, 2, &n, buffer, ippStsBadArgErr}}) {
        EXPECT_EQ(hough(image, step, roi, delta, thr, out, max, count, scratch), status);
        EXPECT_EQ(n, -3);
        EXPECT_EQ(out[0].rho, 5);
    }
    EXPECT_EQ(query({0, 0}, {0, 0}, 1, nullptr), ippStsNullPtrErr);
    EXPECT_EQ(query({1, 0}, {0, 0}, 1, &size), ippStsSizeErr);
    EXPECT_EQ(query({1, 1}, {1, -1}, 1, &size), ippStsBadArgErr);
    EXPECT_EQ(size, -3);
    // 4x3, rho 1, theta 0.5: 15 cells, angles 0..6: 3 x 80 + 16 x 2 + 16 x 15 + 8 x 6 + 296.
    EXPECT_EQ(query({4, 3}, {1, 0.5f}, 2, &size), ippStsNoErr);
    EXPECT_EQ(size, 856);
    EXPECT_EQ(query({40000, 40000}, {1, 0.01f}, 10, &size), ippStsSizeOverflowWrn);
    const long long big = 40000LL * (4 * 40000 + 64) + 160 + 16 * 160001 + 8 * 314 + 296;
    EXPECT_EQ(size, static_cast<int>(static_cast<unsigned>(big)));
}

NUV_SWEEP_GENERATIONS(HoughSweep);

}  // namespace
