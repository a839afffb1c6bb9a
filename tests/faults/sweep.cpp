#include "faults/sweep.h"

#include "faults/failing_allocator.h"

#include <nuv/core/Log.h>
#include <nuv/core/image/BufferStore.h>

#include <exception>
#include <iomanip>
#include <new>
#include <sstream>

namespace nuv::test::faults {

using nuv::core::image::Image;

namespace {

void describeImage(std::ostringstream& out, Image const& image, bool withPixels) {
    if (image.isNull()) {
        out << "null;";
        return;
    }
    auto const& info = image.info();
    char const* first = nullptr;
    const nuv::core::Roi roi = getRoi(image, &first);
    out << info.width << 'x' << info.height << " c" << info.numChannels << " f"
        << static_cast<int>(info.format) << " roi " << roi.offset().x() << ',' << roi.offset().y()
        << ' ' << roi.size().width() << 'x' << roi.size().height() << ';';
    if (withPixels) {
        out << std::hex;
        for (unsigned y = 0; y < info.height; ++y)
            for (unsigned x = 0; x < info.rowBytes(); ++x)
                out << static_cast<int>(image.constData()[y * image.step() + x]) << ' ';
        out << std::dec << ';';
    }
    for (nuv::core::Line const& l : lines(image))
        out << "line " << l.x0() << ',' << l.y0() << ',' << l.x1() << ',' << l.y1() << ';';
    for (nuv::core::image::Segment const& s : segmentList(image))
        out << "segment " << s.name << ' ' << s.pixelCount << ' ' << s.color.argb() << ' '
            << s.center.x() << ',' << s.center.y() << ' ' << s.segmentIndex << ' ' << s.lines.size()
            << ';';
}

template <typename V>
void describeValues(std::ostringstream& out, char const* name, V const& values) {
    out << name;
    for (int i = 0; i < values.size(); ++i) out << ' ' << +values[i];
    out << ';';
}

// The log's lines, taken without counting: the capture is the test's, not the library's.
class Capture {
public:
    Capture() {
        nuv::core::Log::singleton().setSink([this](std::string const& line) {
            const Pause pause;
            lines.push_back(line);
        });
    }
    ~Capture() { nuv::core::Log::singleton().setSink({}); }
    std::vector<std::string> lines;
};

// An unarmed run.
Outcome outcomeOf(Case const& c, Capture& log) {
    Outcome run;
    log.lines.clear();
    {
        const Resume library;
        c.call(run.result);
    }
    run.log = log.lines;
    return run;
}

std::string unwrittenOutcome(Outcome const& failed, Outcome const& reference) {
    const std::string got = describe(failed, false), want = describe(reference, false);
    return got == want ? std::string() : "got " + got + " instead of " + want;
}

}  // namespace

std::string describe(Outcome const& run, bool withPixels) {
    std::ostringstream out;
    Result const& r = run.result;
    describeImage(out, r.image, withPixels);
    describeImage(out, r.other, withPixels);
    describeValues(out, "low", r.low);
    describeValues(out, "high", r.high);
    describeValues(out, "bytes", r.bytes);
    out << "points";
    for (int i = 0; i < r.points.size(); ++i)
        out << ' ' << r.points[i].x() << ',' << r.points[i].y();
    out << "; n " << r.number << " at " << r.point.x() << ',' << r.point.y() << " score "
        << std::setprecision(9) << r.score << " text " << r.text << " classes "
        << nuv::cv::toString(r.classes) << " records";
    for (nuv::core::image::Segment const& s : r.records)
        out << ' ' << s.name << '/' << s.color.argb() << '/' << s.pixelCount;
    out << "; log";
    for (std::string const& line : run.log) out << " [" << line << ']';
    return out.str();
}

Report sweep(Case const& c) {
    const Pause bookkeeping;
    Report report;
    Capture log;
    outcomeOf(c, log);  // lazy set-up of what the call reaches (OpenCV, the store's lists)
    const Outcome reference = outcomeOf(c, log);
    const std::string expected = describe(reference);
    nuv::core::image::emptyBufferStore();
    const Live baseline = live();
    auto problem = [&](long n, std::string const& what) {
        report.problems.push_back(c.name + ", allocation " + std::to_string(n) + ": " + what);
    };

    for (long n = 1;; ++n) {
        if (n > 20000) {
            problem(n, "the call never ran without a failure");
            break;
        }
        Outcome failed;
        bool threw = false;
        std::string otherError;
        log.lines.clear();
        Tally tally{};
        {
            const Resume library;
            arm(n);
            try {
                c.call(failed.result);
                tally = disarm();
            } catch (std::bad_alloc const&) {
                tally = disarm();
                threw = true;
            } catch (std::exception const& e) {
                tally = disarm();
                const Pause text;
                otherError = e.what();
            }
        }
        failed.log = log.lines;
        if (!otherError.empty()) problem(n, "threw " + otherError);
        if (tally.failed == Kind::none) {
            // The first run that met no failure: it is the reference, and the sweep ends.
            if (threw || describe(failed) != expected) problem(n, "unfailed run differs");
            break;
        }
        if (tally.failed == Kind::hook) {
            ++report.hookPoints;
            // The hooks report by null, which the library never turns into an exception.
            if (threw) problem(n, "a failed hook allocation threw");
            const auto check = c.onHookFailure ? c.onHookFailure : unwrittenOutcome;
            if (!threw) {
                const std::string wrong = check(failed, reference);
                if (!wrong.empty()) problem(n, wrong);
            }
        } else {
            ++report.heapPoints;
            // Either the exception comes out, or the failure was absorbed without a trace.
            if (!threw && describe(failed) != expected)
                problem(n,
                        "absorbed failure changed "
                        "the result: " +
                            describe(failed));
        }
        failed = Outcome();
        if (c.recover) c.recover();
        if (describe(outcomeOf(c, log)) != expected) problem(n, "not usable afterwards");
        nuv::core::image::emptyBufferStore();
        const Live now = live();
        if (c.countsBlocks && !(now == baseline))
            problem(n, "blocks kept: " + std::to_string(now.heap - baseline.heap) + " heap, " +
                           std::to_string(now.hook - baseline.hook) + " hook");
    }
    return report;
}

}  // namespace nuv::test::faults
