#include <nuv/core/variant/Converter.h>

#include <cxxabi.h>

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>
#include <sstream>
#include <type_traits>

namespace nuv::core::variant {

namespace {

// ---- numbers between themselves: a conversion succeeds when the value fits the target.

template <typename To, typename From>
bool integralFits(From value) {
    if constexpr (std::is_signed_v<From>) {
        if (value < 0) {
            if constexpr (!std::is_signed_v<To>)
                return false;
            else
                return static_cast<long long>(value) >=
                       static_cast<long long>(std::numeric_limits<To>::min());
        }
    }
    return static_cast<unsigned long long>(value) <=
           static_cast<unsigned long long>(std::numeric_limits<To>::max());
}

// Converts value to To if it fits; bool takes "not zero" from any number.
template <typename To, typename From>
bool convertNumber(From value, To& result) {
    if constexpr (std::is_same_v<To, bool>) {
        result = value != From(0);
        return true;
    } else if constexpr (std::is_same_v<From, bool>) {
        result = value ? To(1) : To(0);
        return true;
    } else if constexpr (std::is_integral_v<To> && std::is_integral_v<From>) {
        if (!integralFits<To>(value)) return false;
        result = static_cast<To>(value);
        return true;
    } else if constexpr (std::is_integral_v<To>) {
        // From a floating value: truncated toward zero, and it must fall inside To. The
        // bounds of every integer type are exact in long double.
        if (std::isnan(value)) return false;
        long double const whole = std::trunc(static_cast<long double>(value));
        if (whole < static_cast<long double>(std::numeric_limits<To>::min()) ||
            whole > static_cast<long double>(std::numeric_limits<To>::max()))
            return false;
        result = static_cast<To>(whole);
        return true;
    } else {
        // To a floating type: infinities and NaN pass, finite values must be in range.
        if constexpr (std::is_floating_point_v<From>) {
            if (std::isfinite(value) &&
                std::fabs(static_cast<long double>(value)) >
                    static_cast<long double>(std::numeric_limits<To>::max()))
                return false;
        }
        result = static_cast<To>(value);
        return true;
    }
}

template <typename To, typename From>
Variant numberToNumber(Variant const& value) {
    To result{};
    return convertNumber(value.get<From>(), result) ? Variant(result) : Variant();
}

// ---- numbers and text.

std::string trimmed(std::string const& text) {
    std::size_t const begin = text.find_first_not_of(" \t\r\n");
    if (begin == std::string::npos) return std::string();
    std::size_t const end = text.find_last_not_of(" \t\r\n");
    return text.substr(begin, end - begin + 1);
}

// Reads exactly one value of the widest type of its kind from the whole (trimmed) text.
template <typename Wide>
bool readWhole(std::string const& text, Wide& value) {
    std::istringstream stream(text);
    stream >> value;
    return !stream.fail() && stream.eof();
}

template <typename T>
bool parseNumber(std::string const& raw, T& result) {
    if constexpr (std::is_same_v<T, char>) {
        // A char is a character, not a number, and a blank is a character like any other.
        if (raw.size() != 1) return false;
        result = raw[0];
        return true;
    }
    std::string const text = trimmed(raw);
    if (text.empty()) return false;
    if constexpr (std::is_same_v<T, char>) {
        return false;  // handled above
    } else if constexpr (std::is_same_v<T, bool>) {
        if (text == "true" || text == "1") {
            result = true;
            return true;
        }
        if (text == "false" || text == "0") {
            result = false;
            return true;
        }
        return false;
    } else if constexpr (std::is_integral_v<T> && std::is_signed_v<T>) {
        long long wide = 0;
        return readWhole(text, wide) && convertNumber(wide, result);
    } else if constexpr (std::is_integral_v<T>) {
        // The stream would read "-1" as the largest unsigned value.
        if (text[0] == '-') return false;
        unsigned long long wide = 0;
        return readWhole(text, wide) && convertNumber(wide, result);
    } else {
        long double wide = 0;
        return readWhole(text, wide) && convertNumber(wide, result);
    }
}

template <typename T>
std::string formatNumber(T value) {
    if constexpr (std::is_same_v<T, bool>) {
        return value ? "true" : "false";
    } else if constexpr (std::is_same_v<T, char>) {
        return std::string(1, value);
    } else if constexpr (std::is_integral_v<T>) {
        return std::is_signed_v<T> ? std::to_string(static_cast<long long>(value))
                                   : std::to_string(static_cast<unsigned long long>(value));
    } else {
        // The shortest text that reads back as the same value.
        char buffer[64];
        std::to_chars_result const end = std::to_chars(buffer, buffer + sizeof buffer, value);
        return std::string(buffer, end.ptr);
    }
}

template <typename T>
Variant numberToString(Variant const& value) {
    return Variant(formatNumber(value.get<T>()));
}

template <typename T>
Variant stringToNumber(Variant const& value) {
    T result{};
    return parseNumber(value.get<std::string>(), result) ? Variant(result) : Variant();
}

template <typename... T>
struct Types {};

using Numbers =
    Types<bool, char, signed char, unsigned char, short, unsigned short, int, unsigned int, long,
          unsigned long, long long, unsigned long long, float, double, long double>;

template <typename From, typename... To>
void registerFrom(Converter& converter, Types<To...>) {
    (
        [&] {
            if constexpr (!std::is_same_v<To, From>)
                converter.registerConvertFunction(typeid(To), typeid(From),
                                                  &numberToNumber<To, From>);
        }(),
        ...);
    converter.registerConvertFunction(typeid(std::string), typeid(From), &numberToString<From>);
    converter.registerConvertFunction(typeid(From), typeid(std::string), &stringToNumber<From>);
}

template <typename... From>
void registerNumbers(Converter& converter, Types<From...> all) {
    (registerFrom<From>(converter, all), ...);
}

}  // namespace

Converter& Converter::singleton() {
    static Converter converter;
    return converter;
}

Converter::Converter() {
    registerNumbers(*this, Numbers());
    registerFriendlyName("bool", typeid(bool));
    registerFriendlyName("char", typeid(char));
    registerFriendlyName("signed char", typeid(signed char));
    registerFriendlyName("unsigned char", typeid(unsigned char));
    registerFriendlyName("short", typeid(short));
    registerFriendlyName("unsigned short", typeid(unsigned short));
    registerFriendlyName("int", typeid(int));
    registerFriendlyName("unsigned int", typeid(unsigned int));
    registerFriendlyName("long", typeid(long));
    registerFriendlyName("unsigned long", typeid(unsigned long));
    registerFriendlyName("long long", typeid(long long));
    registerFriendlyName("unsigned long long", typeid(unsigned long long));
    registerFriendlyName("float", typeid(float));
    registerFriendlyName("double", typeid(double));
    registerFriendlyName("long double", typeid(long double));
    registerFriendlyName("string", typeid(std::string));
    registerFriendlyName("image", typeid(image::Image));
}

Converter::~Converter() = default;

void Converter::registerFriendlyName(std::string const& name, std::type_info const& type) {
    std::string const typeName = type.name();
    // A type renamed gives up its old name.
    std::map<std::string, std::string>::const_iterator const old = _friendlyNames.find(typeName);
    if (old != _friendlyNames.end()) _typesByFriendlyName.erase(old->second);
    _friendlyNames[typeName] = name;
    _typesByFriendlyName[name] = &type;
}

std::string Converter::friendlyName(std::type_info const& type) const {
    std::map<std::string, std::string>::const_iterator const it = _friendlyNames.find(type.name());
    if (it != _friendlyNames.end()) return it->second;
    int status = 0;
    std::unique_ptr<char, void (*)(void*)> demangled(
        abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), std::free);
    return status == 0 && demangled ? std::string(demangled.get()) : std::string(type.name());
}

std::type_info const* Converter::typeFromFriendlyName(std::string const& name) const {
    std::map<std::string, std::type_info const*>::const_iterator const it =
        _typesByFriendlyName.find(name);
    return it != _typesByFriendlyName.end() ? it->second : nullptr;
}

void Converter::registerConvertFunction(std::type_info const& to, std::type_info const& from,
                                        Function const& function) {
    _functions[to.name()][from.name()] = function;
}

bool Converter::canConvert(std::type_info const& from, std::type_info const& to) const {
    if (from == to) return true;
    auto const target = _functions.find(to.name());
    return target != _functions.end() && target->second.count(from.name()) != 0;
}

Variant Converter::convert(Variant const& value, std::type_info const& to, bool* ok) const {
    if (ok) *ok = false;
    if (value.isEmpty()) return Variant();
    if (value.type() == to) {
        if (ok) *ok = true;
        return value;
    }
    auto const target = _functions.find(to.name());
    if (target == _functions.end()) return Variant();
    auto const function = target->second.find(value.type().name());
    if (function == target->second.end() || !function->second) return Variant();
    Variant result = function->second(value);
    if (result.isEmpty() || result.type() != to) return Variant();
    if (ok) *ok = true;
    return result;
}

}  // namespace nuv::core::variant
