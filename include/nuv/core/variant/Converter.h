/// @file
/// The registry of conversions between the types a Variant may hold, and of display names
/// for those types. Libraries register their own types once at start-up (nuv::cv::init);
/// registries only grow and are never cleared.
///
/// Built in: conversions between the arithmetic types (bool, char, signed and unsigned char,
/// short, int, long, long long and their unsigned forms, float, double, long double) that
/// succeed when the value fits the target, and between each of them and std::string (the
/// text must hold exactly one value, blanks around it allowed; bool reads "true", "false",
/// "1" and "0" and writes "true" and "false"). Display names of the built-in types are their
/// C++ names, "string" for std::string and "image" for Image.
#pragma once

#include <nuv/core/variant/Variant.h>

#include <boost/function.hpp>

#include <map>
#include <string>
#include <typeinfo>

namespace nuv::core::variant {

/// The registry of conversions between the types a Variant may hold, and of their display names.
class Converter {
public:
    /// A conversion of a variant to another type.
    using Function = boost::function<Variant(Variant const&)>;

    /// The one registry of the process.
    static Converter& singleton();
    /// There is one registry: it is not copied.
    Converter(Converter const&) = delete;
    /// There is one registry: it is not assigned.
    Converter& operator=(Converter const&) = delete;

    /// name becomes the display name of type, and type the type of that name.
    void registerFriendlyName(std::string const& name, std::type_info const& type);
    /// The display name; an unregistered type gives its demangled C++ name.
    std::string friendlyName(std::type_info const& type) const;
    /// The type registered under a display name, or null.
    std::type_info const* typeFromFriendlyName(std::string const& name) const;

    /// Registers how to turn a variant holding from into one holding to. The target comes
    /// first. A later registration for the same pair replaces the earlier one.
    void registerConvertFunction(std::type_info const& to, std::type_info const& from,
                                 Function const& function);
    /// Whether a conversion from the one type to the other is registered.
    bool canConvert(std::type_info const& from, std::type_info const& to) const;

    /// The value as a variant of type to: the variant itself when it already holds a to,
    /// else the registered function's result. An empty variant, a missing conversion or a
    /// function whose result does not hold a to give the empty variant and false through
    /// ok. Exceptions of the function pass through.
    Variant convert(Variant const& value, std::type_info const& to, bool* ok = nullptr) const;

private:
    Converter();
    ~Converter();

    /// Target type name -> source type name -> function.
    std::map<std::string, std::map<std::string, Function>> _functions;
    std::map<std::string, std::string> _friendlyNames;  ///< type name -> display name
    std::map<std::string, std::type_info const*> _typesByFriendlyName;
};

}  // namespace nuv::core::variant
