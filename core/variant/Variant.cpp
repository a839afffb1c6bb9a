#include <nuv/core/variant/Variant.h>

#include <nuv/core/variant/Converter.h>

namespace nuv::core::variant {

Variant::Variant() : _value(), _id() {}

Variant::Variant(char const* text) : _value(new boost::any(std::string(text ? text : ""))), _id() {}

std::type_info const& Variant::type() const {
    return _value ? _value->type() : typeid(void);
}

std::string Variant::typeName() const {
    return _value ? Converter::singleton().friendlyName(_value->type()) : std::string();
}

image::Image Variant::toImage(bool* ok) const {
    return convertTo<image::Image>(ok);
}

std::string Variant::toString(bool* ok) const {
    return convertTo<std::string>(ok);
}

Variant Variant::convertedTo(std::type_info const& type, bool* ok) const {
    return Converter::singleton().convert(*this, type, ok);
}

}  // namespace nuv::core::variant
