/// @file
/// A value of any copyable type with a process-wide running id. Copies share the value.
/// Conversions between types go through the Converter registry, operators and comparisons
/// through the Math registry.
#pragma once

#include <nuv/core/image/Image.h>
#include <nuv/core/variant/Id.h>

#include <boost/any.hpp>
#include <boost/shared_ptr.hpp>

#include <string>
#include <type_traits>
#include <typeinfo>

namespace nuv::core::variant {

/// A value of any copyable type with a process-wide running id; copies share the value.
class Variant {
public:
    /// The empty variant: holds nothing, but has an id like any other.
    Variant();
    /// Holds a copy of the value under a fresh id.
    template <typename T, typename = std::enable_if_t<!std::is_same_v<std::decay_t<T>, Variant>>>
    Variant(T const& value) : _value(new boost::any(value)), _id() {}
    /// Text literals are held as std::string, not as a pointer into the caller's memory.
    Variant(char const* text);

    /// The running id.
    Id const& id() const { return _id; }
    /// Whether the variant holds nothing.
    bool isEmpty() const { return !_value; }
    /// The held type; typeid(void) when empty.
    std::type_info const& type() const;
    /// The Converter's display name of the held type ("" when empty).
    std::string typeName() const;
    /// Whether the held value is exactly a T.
    template <typename T>
    bool is() const {
        return _value && boost::any_cast<T>(_value.get()) != nullptr;
    }

    /// The held value if it is exactly a T. An empty variant or another type gives T() and
    /// stores false through ok; nothing is thrown.
    template <typename T>
    T get(bool* ok = nullptr) const {
        if (ok) *ok = true;
        T const* held = _value ? boost::any_cast<T>(_value.get()) : nullptr;
        if (held) return *held;
        if (ok) *ok = false;
        return T();
    }

    /// The held value as a T: the value itself if it is one, else what the Converter makes
    /// of it. T() and false through ok when there is no conversion or it fails.
    template <typename T>
    T convertTo(bool* ok = nullptr) const {
        if (is<T>()) return get<T>(ok);
        return convertedTo(typeid(T), ok).template get<T>(ok);
    }

    /// The same for the two types the libraries ask for most. toString of a held
    /// std::string is that string.
    image::Image toImage(bool* ok = nullptr) const;
    /// The held value as text, as toImage does for images.
    std::string toString(bool* ok = nullptr) const;

private:
    Variant convertedTo(std::type_info const& type, bool* ok) const;

    boost::shared_ptr<boost::any> _value;
    Id _id;
};

}  // namespace nuv::core::variant
