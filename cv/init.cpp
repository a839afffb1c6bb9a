#include <nuv/cv/init.h>

#include <nuv/core/image/Image.h>
#include <nuv/core/variant/Converter.h>
#include <nuv/core/variant/Math.h>
#include <nuv/cv/SegmentList.h>
#include <nuv/cv/addition.h>

#include <string>
#include <typeinfo>

namespace nuv::cv {

void init() {
    // Set before the first registration, so a registration that throws is not repeated.
    static bool isInit = false;
    if (isInit) return;
    isInit = true;

    using nuv::core::variant::Converter;
    using nuv::core::variant::Math;
    Math::singleton().registerBinaryOperator<nuv::core::image::Image>(
        nuv::core::variant::OperatorAdd, imageAddition);
    Converter::singleton().registerFriendlyName("segmentlist", typeid(SegmentList));
    Converter::singleton().registerConvertFunction(typeid(std::string), typeid(SegmentList),
                                                   segmentListToString);
    Converter::singleton().registerConvertFunction(typeid(SegmentList), typeid(std::string),
                                                   stringToSegmentList);
    Math::singleton().registerCompare<SegmentList>(nuv::core::variant::CompareEqual,
                                                   segmentListIsEqual);
}

}  // namespace nuv::cv
