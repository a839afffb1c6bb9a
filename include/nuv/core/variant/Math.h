/// @file
/// The registry of comparisons and operators on the types a Variant may hold. Operations are
/// found by the type of the left (or only) operand; what they do with the right one is their
/// own affair. Libraries register their own types once at start-up (nuv::cv::init).
///
/// Built in, for int, unsigned int, long, unsigned long, long long, unsigned long long,
/// float, double, bool and std::string: the right operand is converted to the left's type
/// through the Converter, and the operation fails when that is impossible. Comparisons for
/// all of them; addition, subtraction, multiplication and division for the numbers;
/// modulo, and and or (bitwise) for the integers; and and or (logical) for bool;
/// concatenation as addition for strings; negation for the signed numbers. Integer
/// arithmetic wraps around; an integer division or modulo by zero (or of the most negative
/// value by -1) fails. A registered binary or unary operation that returns the empty variant
/// counts as failed.
#pragma once

#include <nuv/core/variant/Variant.h>

#include <boost/function.hpp>

#include <map>
#include <set>
#include <string>
#include <typeinfo>

namespace nuv::core::variant {

/// The numbers are stable; 2 is equality.
/// The comparisons of the registry.
enum CompareType {
    CompareLess = 0,     ///< a < b
    CompareGreater = 1,  ///< a > b
    CompareEqual = 2,    ///< a == b
};
/// The one unary operator of the registry.
enum UnaryOperatorType {
    OperatorNegate = 0,  ///< -a
};
/// The numbers are stable; 2 is addition.
enum BinaryOperatorType {
    OperatorMultiply = 0,  ///< a * b
    OperatorDivide = 1,    ///< a / b
    OperatorAdd = 2,       ///< a + b
    OperatorSubtract = 3,  ///< a - b
    OperatorModulo = 4,    ///< a % b
    OperatorAnd = 5,       ///< a & b, or a && b for bool
    OperatorOr = 6,        ///< a | b, or a || b for bool
};

/// The registry of comparisons and operators on the types a Variant may hold.
class Math {
public:
    /// A comparison of two variants.
    using CompareFunction = boost::function<bool(Variant const&, Variant const&)>;
    /// An operation on one variant.
    using UnaryFunction = boost::function<Variant(Variant const&)>;
    /// An operation on two variants.
    using BinaryFunction = boost::function<Variant(Variant const&, Variant const&)>;

    /// The one registry of the process.
    static Math& singleton();
    /// There is one registry: it is not copied.
    Math(Math const&) = delete;
    /// There is one registry: it is not assigned.
    Math& operator=(Math const&) = delete;

    /// Registers a comparison for the type T of the left operand; a later registration replaces an
    /// earlier one.
    template <typename T>
    void registerCompare(CompareType op, CompareFunction const& function) {
        registerCompare_i(op, typeid(T), function);
    }
    /// Registers a unary operator for the type T of the operand.
    template <typename T>
    void registerUnaryOperator(UnaryOperatorType op, UnaryFunction const& function) {
        registerUnaryOperator_i(op, typeid(T), function);
    }
    /// Registers a binary operator for the type T of the left operand.
    template <typename T>
    void registerBinaryOperator(BinaryOperatorType op, BinaryFunction const& function) {
        registerBinaryOperator_i(op, typeid(T), function);
    }
    /// Registers a comparison for the type given at run time.
    void registerCompare_i(CompareType op, std::type_info const& type,
                           CompareFunction const& function);
    /// Registers a unary operator for the type given at run time.
    void registerUnaryOperator_i(UnaryOperatorType op, std::type_info const& type,
                                 UnaryFunction const& function);
    /// Registers a binary operator for the type given at run time.
    void registerBinaryOperator_i(BinaryOperatorType op, std::type_info const& type,
                                  BinaryFunction const& function);

    /// Whether a comparison is registered for the type of the left operand.
    bool hasCompare(CompareType op, std::type_info const& type) const;
    /// Whether a unary operator is registered for the type of the operand.
    bool hasUnaryOperator(UnaryOperatorType op, std::type_info const& type) const;
    /// Whether a binary operator is registered for the type of the left operand.
    bool hasBinaryOperator(BinaryOperatorType op, std::type_info const& type) const;

    /// Apply the operation registered for the left operand's type. With none registered (or
    /// an empty left operand) the result is false or the empty variant, and false through
    /// ok; a built-in operation that fails does the same. Exceptions of a registered
    /// function pass through.
    bool compare(CompareType op, Variant const& a, Variant const& b, bool* ok = nullptr) const;
    /// Applies the unary operator registered for the operand's type, as compare does.
    Variant unaryOperator(UnaryOperatorType op, Variant const& a, bool* ok = nullptr) const;
    /// Applies the binary operator registered for the left operand's type, as compare does.
    Variant binaryOperator(BinaryOperatorType op, Variant const& a, Variant const& b,
                           bool* ok = nullptr) const;

private:
    Math();
    ~Math();
    template <typename T>
    void registerNumber();
    /// The right operand as the left's type where that is asked for; false if impossible.
    bool rightOperand(Variant const& a, Variant const& b, Variant& right) const;

    /// Operation -> type name of the left operand -> function.
    std::map<CompareType, std::map<std::string, CompareFunction>> _compares;
    std::map<UnaryOperatorType, std::map<std::string, UnaryFunction>> _unaryOperators;
    std::map<BinaryOperatorType, std::map<std::string, BinaryFunction>> _binaryOperators;
    /// Type names whose right operand is converted to the left's type before the call.
    std::set<std::string> _convertRightOperand;
};

}  // namespace nuv::core::variant
