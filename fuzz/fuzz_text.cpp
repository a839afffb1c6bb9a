// The text forms: the class-list reader, and the variant's conversions from text. A list
// that was read is written and read again, and must come back the same, name and indexes
// included.
#include <nuv/core.h>
#include <nuv/cv.h>

#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    nuv::cv::init();
    nuv::core::Log::singleton().setSink([](std::string const&) {});
    return 0;
}

namespace {

void expectSame(nuv::cv::SegmentList const& a, nuv::cv::SegmentList const& b) {
    if (a != b || nuv::cv::toString(a) != nuv::cv::toString(b)) std::abort();
    auto i = a.constBegin();
    for (auto j = b.constBegin(); j != b.constEnd(); ++i, ++j)
        if (i->name() != j->name() || i->serializeColorIndex() != j->serializeColorIndex() ||
            i->serializeChannelsUsed() != j->serializeChannelsUsed())
            std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    const std::string text(reinterpret_cast<char const*>(data), size);
    try {
        const nuv::cv::SegmentList list = nuv::cv::segmentListfromString(text);
        expectSame(list, nuv::cv::segmentListfromString(nuv::cv::toString(list)));
    } catch (nuv::core::Exception const&) {
        // "Bad conversion": a colour field without a number ends the parse.
    }
    const nuv::core::variant::Variant value(text);
    bool ok = false;
    value.convertTo<int>(&ok);
    value.convertTo<double>(&ok);
    value.convertTo<float>(&ok);
    value.convertTo<bool>(&ok);
    try {
        const auto viaVariant = value.convertTo<nuv::cv::SegmentList>(&ok);
        if (ok) expectSame(viaVariant, nuv::cv::segmentListfromString(text));
    } catch (nuv::core::Exception const&) {
    }
    return 0;
}
