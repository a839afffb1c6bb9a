#include <nuv/core/variant/Math.h>

#include <nuv/core/variant/Converter.h>

#include <limits>
#include <type_traits>

namespace nuv::core::variant {

namespace {

// Built-in operations. By the time they run, the right operand has been converted to the
// left's type, so both get<T>() succeed.

template <typename T>
bool less(Variant const& a, Variant const& b) {
    return a.get<T>() < b.get<T>();
}

template <typename T>
bool greater(Variant const& a, Variant const& b) {
    return a.get<T>() > b.get<T>();
}

template <typename T>
bool equal(Variant const& a, Variant const& b) {
    return a.get<T>() == b.get<T>();
}

// Integers wrap around instead of overflowing: the arithmetic runs in the unsigned form.
template <typename T, bool = std::is_integral_v<T>>
struct WrapOf {
    using type = T;
};
template <typename T>
struct WrapOf<T, true> {
    using type = std::make_unsigned_t<T>;
};
template <typename T>
using Wrap = typename WrapOf<T>::type;

template <typename T>
Variant add(Variant const& a, Variant const& b) {
    if constexpr (std::is_same_v<T, std::string>)
        return Variant(a.get<T>() + b.get<T>());
    else
        return Variant(static_cast<T>(Wrap<T>(a.get<T>()) + Wrap<T>(b.get<T>())));
}

template <typename T>
Variant subtract(Variant const& a, Variant const& b) {
    return Variant(static_cast<T>(Wrap<T>(a.get<T>()) - Wrap<T>(b.get<T>())));
}

template <typename T>
Variant multiply(Variant const& a, Variant const& b) {
    return Variant(static_cast<T>(Wrap<T>(a.get<T>()) * Wrap<T>(b.get<T>())));
}

// The integer quotient and remainder are undefined for a zero divisor and for the most
// negative value divided by -1; both fail.
template <typename T>
bool divisible(T a, T b) {
    if (b == 0) return false;
    if constexpr (std::is_signed_v<T>)
        if (a == std::numeric_limits<T>::min() && b == T(-1)) return false;
    return true;
}

template <typename T>
Variant divide(Variant const& a, Variant const& b) {
    T const x = a.get<T>(), y = b.get<T>();
    if constexpr (std::is_integral_v<T>)
        if (!divisible(x, y)) return Variant();
    return Variant(static_cast<T>(x / y));
}

template <typename T>
Variant modulo(Variant const& a, Variant const& b) {
    T const x = a.get<T>(), y = b.get<T>();
    if (!divisible(x, y)) return Variant();
    return Variant(static_cast<T>(x % y));
}

template <typename T>
Variant bitAnd(Variant const& a, Variant const& b) {
    return Variant(static_cast<T>(a.get<T>() & b.get<T>()));
}

template <typename T>
Variant bitOr(Variant const& a, Variant const& b) {
    return Variant(static_cast<T>(a.get<T>() | b.get<T>()));
}

Variant logicalAnd(Variant const& a, Variant const& b) {
    return Variant(a.get<bool>() && b.get<bool>());
}

Variant logicalOr(Variant const& a, Variant const& b) {
    return Variant(a.get<bool>() || b.get<bool>());
}

template <typename T>
Variant negate(Variant const& a) {
    if constexpr (std::is_integral_v<T>)
        return Variant(static_cast<T>(Wrap<T>(0) - Wrap<T>(a.get<T>())));
    else
        return Variant(-a.get<T>());
}

}  // namespace

Math& Math::singleton() {
    static Math math;
    return math;
}

template <typename T>
void Math::registerNumber() {
    registerCompare<T>(CompareLess, &less<T>);
    registerCompare<T>(CompareGreater, &greater<T>);
    registerCompare<T>(CompareEqual, &equal<T>);
    registerBinaryOperator<T>(OperatorAdd, &add<T>);
    registerBinaryOperator<T>(OperatorSubtract, &subtract<T>);
    registerBinaryOperator<T>(OperatorMultiply, &multiply<T>);
    registerBinaryOperator<T>(OperatorDivide, &divide<T>);
    if constexpr (std::is_integral_v<T>) {
        registerBinaryOperator<T>(OperatorModulo, &modulo<T>);
        registerBinaryOperator<T>(OperatorAnd, &bitAnd<T>);
        registerBinaryOperator<T>(OperatorOr, &bitOr<T>);
    }
    if constexpr (std::is_signed_v<T>) registerUnaryOperator<T>(OperatorNegate, &negate<T>);
    _convertRightOperand.insert(typeid(T).name());
}

Math::Math() {
    registerNumber<int>();
    registerNumber<unsigned int>();
    registerNumber<long>();
    registerNumber<unsigned long>();
    registerNumber<long long>();
    registerNumber<unsigned long long>();
    registerNumber<float>();
    registerNumber<double>();

    registerCompare<bool>(CompareLess, &less<bool>);
    registerCompare<bool>(CompareGreater, &greater<bool>);
    registerCompare<bool>(CompareEqual, &equal<bool>);
    registerBinaryOperator<bool>(OperatorAnd, &logicalAnd);
    registerBinaryOperator<bool>(OperatorOr, &logicalOr);
    _convertRightOperand.insert(typeid(bool).name());

    registerCompare<std::string>(CompareLess, &less<std::string>);
    registerCompare<std::string>(CompareGreater, &greater<std::string>);
    registerCompare<std::string>(CompareEqual, &equal<std::string>);
    registerBinaryOperator<std::string>(OperatorAdd, &add<std::string>);
    _convertRightOperand.insert(typeid(std::string).name());
}

Math::~Math() = default;

void Math::registerCompare_i(CompareType op, std::type_info const& type,
                             CompareFunction const& function) {
    _compares[op][type.name()] = function;
}

void Math::registerUnaryOperator_i(UnaryOperatorType op, std::type_info const& type,
                                   UnaryFunction const& function) {
    _unaryOperators[op][type.name()] = function;
}

void Math::registerBinaryOperator_i(BinaryOperatorType op, std::type_info const& type,
                                    BinaryFunction const& function) {
    _binaryOperators[op][type.name()] = function;
}

namespace {

template <typename Op, typename Function>
Function const* lookup(std::map<Op, std::map<std::string, Function>> const& table, Op op,
                       std::type_info const& type) {
    auto const byType = table.find(op);
    if (byType == table.end()) return nullptr;
    auto const function = byType->second.find(type.name());
    if (function == byType->second.end() || !function->second) return nullptr;
    return &function->second;
}

}  // namespace

bool Math::hasCompare(CompareType op, std::type_info const& type) const {
    return lookup(_compares, op, type) != nullptr;
}

bool Math::hasUnaryOperator(UnaryOperatorType op, std::type_info const& type) const {
    return lookup(_unaryOperators, op, type) != nullptr;
}

bool Math::hasBinaryOperator(BinaryOperatorType op, std::type_info const& type) const {
    return lookup(_binaryOperators, op, type) != nullptr;
}

bool Math::rightOperand(Variant const& a, Variant const& b, Variant& right) const {
    if (_convertRightOperand.count(a.type().name()) == 0 || b.type() == a.type()) {
        right = b;
        return true;
    }
    bool ok = false;
    right = Converter::singleton().convert(b, a.type(), &ok);
    return ok;
}

bool Math::compare(CompareType op, Variant const& a, Variant const& b, bool* ok) const {
    if (ok) *ok = false;
    if (a.isEmpty()) return false;
    CompareFunction const* function = lookup(_compares, op, a.type());
    Variant right;
    if (function == nullptr || !rightOperand(a, b, right)) return false;
    bool const result = (*function)(a, right);
    if (ok) *ok = true;
    return result;
}

Variant Math::unaryOperator(UnaryOperatorType op, Variant const& a, bool* ok) const {
    if (ok) *ok = false;
    if (a.isEmpty()) return Variant();
    UnaryFunction const* function = lookup(_unaryOperators, op, a.type());
    if (function == nullptr) return Variant();
    Variant result = (*function)(a);
    if (ok) *ok = !result.isEmpty();
    return result;
}

Variant Math::binaryOperator(BinaryOperatorType op, Variant const& a, Variant const& b,
                             bool* ok) const {
    if (ok) *ok = false;
    if (a.isEmpty()) return Variant();
    BinaryFunction const* function = lookup(_binaryOperators, op, a.type());
    Variant right;
    if (function == nullptr || !rightOperand(a, b, right)) return Variant();
    Variant result = (*function)(a, right);
    if (ok) *ok = !result.isEmpty();
    return result;
}

}  // namespace nuv::core::variant
