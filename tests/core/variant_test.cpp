// Variant, its ids, and the Converter and Math registries.
#include <nuv/core.h>

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using namespace nuv::core;
using namespace nuv::core::variant;
using nuv::core::image::Image;
using nuv::core::image::ImageInfo;
using Double = std::numeric_limits<double>;

struct Meters {  // a type only the tests know
    double value = 0;
};

Converter& converter() {
    return Converter::singleton();
}

TEST(Variant, HoldsOneValueWithAFreshId) {
    Variant const empty, v(42);
    bool ok = true;
    EXPECT_TRUE(empty.isEmpty() && empty.type() == typeid(void) && empty.typeName().empty());
    EXPECT_TRUE(empty.get<int>(&ok) == 0 && !ok);
    EXPECT_TRUE(empty.toImage(&ok).isNull() && !ok);
    EXPECT_TRUE(v.get<int>(&ok) == 42 && ok);
    EXPECT_TRUE(v.is<int>() && !v.is<long>());
    EXPECT_TRUE(v.get<unsigned>(&ok) == 0u && !ok);  // no conversion in get
    EXPECT_EQ(v.get<double>(), 0.0);
    EXPECT_FALSE(Variant(Image()).get<image::SegmentList>(&ok).size() || ok);
    EXPECT_TRUE(Variant("hello").is<std::string>() && Variant("hello").typeName() == "string");
    unsigned const next = Id::g_id;
    Variant const a(5), b(a);
    EXPECT_EQ(a.id().value(), next);
    EXPECT_EQ(Id::g_id, next + 1);
    Variant c;
    c = b;
    EXPECT_EQ(c.id(), a.id());
    EXPECT_NE(Variant(5).id(), a.id());
    Image picture(ImageInfo(2, 2, image::Gray));
    EXPECT_EQ(Variant(Variant(picture)).toImage().constData(), picture.constData());
}

// Converts each value to T; an empty text stands for a failed conversion.
template <typename T, typename From>
void expectConversions(std::vector<std::pair<From, std::string>> const& rows) {
    for (auto const& [from, text] : rows) {
        bool ok = text.empty();
        Variant const result = converter().convert(Variant(from), typeid(T), &ok);
        EXPECT_EQ(ok, !text.empty()) << Variant(from).toString() << " gave " << text;
        EXPECT_EQ(ok ? result.toString() : "", text) << Variant(from).toString();
    }
}

// Numbers convert between themselves when the value fits; text must hold exactly one value.
TEST(Converter, BuiltInConversions) {
    EXPECT_EQ(Variant(-7LL).toString() + Variant(0.1).toString() + Variant('c').toString() +
                  Variant(static_cast<unsigned char>(200)).toString() + Variant(true).toString(),
              "-70.1c200true");
    using Text = std::string;
    expectConversions<int, Text>(
        {{"17", "17"}, {" 42 \t", "42"}, {"12x", ""}, {"4 2", ""}, {"", ""}});
    expectConversions<double, Text>({{" 2.5 ", "2.5"}, {"2.5.", ""}});
    expectConversions<bool, Text>({{"1", "true"}, {"false", "false"}, {"maybe", ""}});
    expectConversions<char, Text>({{" ", " "}, {"ab", ""}});
    expectConversions<unsigned char, Text>({{"255", "255"}, {"256", ""}});
    expectConversions<signed char, Text>({{"-128", "-128"}, {"-129", ""}});
    expectConversions<unsigned, Text>({{"-1", ""}, {"4294967295", "4294967295"}});
    expectConversions<unsigned char, int>({{255, "255"}, {256, ""}});
    expectConversions<signed char, int>({{-128, "-128"}, {-129, ""}});
    expectConversions<unsigned, int>({{-1, ""}});
    expectConversions<long long, int>({{300, "300"}, {3, "3"}});
    expectConversions<unsigned, unsigned long long>(
        {{4294967295ULL, "4294967295"}, {4294967296ULL, ""}});
    expectConversions<int, double>({{2.9, "2"}, {-2.9, "-2"}, {Double::quiet_NaN(), ""}});
    expectConversions<int, double>({{2147483647.9, "2147483647"}, {2147483648.0, ""}});
    expectConversions<int, double>({{-2147483648.5, "-2147483648"}, {-2147483649.0, ""}});
    expectConversions<float, double>({{1e300, ""}, {-1e300, ""}, {Double::infinity(), "inf"}});
    expectConversions<long long, double>({{1e30, ""}});
    expectConversions<bool, int>({{5, "true"}, {0, "false"}});
    expectConversions<int, bool>({{true, "1"}});
    bool ok = true;
    EXPECT_TRUE(converter().convert(Variant(), typeid(int), &ok).isEmpty() && !ok);
    Variant const three(3);
    EXPECT_EQ(converter().convert(three, typeid(int)).id(), three.id());
}

TEST(Converter, RegisteredConversionsAndNames) {
    bool ok = true;
    EXPECT_TRUE(Variant(Meters{1.5}).toString(&ok).empty() && !ok);
    EXPECT_TRUE(!converter().canConvert(typeid(Meters), typeid(std::string)) &&
                converter().canConvert(typeid(Meters), typeid(Meters)));
    converter().registerConvertFunction(typeid(std::string), typeid(Meters), [](Variant const& v) {
        return Variant(std::to_string(static_cast<int>(v.get<Meters>().value)) + " m");
    });
    converter().registerConvertFunction(typeid(Meters), typeid(std::string), [](Variant const& v) {
        return Variant(Meters{fromString<double>(v.get<std::string>())});
    });
    converter().registerConvertFunction(typeid(Image), typeid(Meters),
                                        [](Variant const&) { return Variant(1); });  // wrong type
    EXPECT_TRUE(converter().canConvert(typeid(Meters), typeid(std::string)) &&
                !converter().canConvert(typeid(Meters), typeid(int)));
    EXPECT_TRUE(Variant(Meters{12.0}).toString(&ok) == "12 m" && ok);
    EXPECT_TRUE(Variant("7").convertTo<Meters>(&ok).value == 7.0 && ok);
    EXPECT_TRUE(Variant(Meters{}).toImage(&ok).isNull() && !ok);
    EXPECT_THROW(Variant("x").convertTo<Meters>(), Exception);  // passed through
    EXPECT_EQ(converter().friendlyName(typeid(unsigned long long)), "unsigned long long");
    EXPECT_EQ(converter().typeFromFriendlyName("image"), &typeid(Image));
    EXPECT_EQ(converter().typeFromFriendlyName("no such type"), nullptr);
    EXPECT_EQ(converter().friendlyName(typeid(Meters)), "(anonymous namespace)::Meters");
    converter().registerFriendlyName("meters", typeid(Meters));
    EXPECT_EQ(Variant(Meters{}).typeName(), "meters");
    EXPECT_EQ(converter().typeFromFriendlyName("meters"), &typeid(Meters));
    converter().registerFriendlyName("length", typeid(Meters));  // gives up the old name
    EXPECT_EQ(converter().typeFromFriendlyName("meters"), nullptr);
    EXPECT_EQ(converter().friendlyName(typeid(Meters)), "length");
}

// Applies each operation; an empty text stands for a failure, reported through ok.
template <typename A, typename B>
void expectOperations(std::vector<std::tuple<BinaryOperatorType, A, B, std::string>> const& rows) {
    for (auto const& [op, a, b, text] : rows) {
        bool ok = text.empty();
        Variant const result = Math::singleton().binaryOperator(op, Variant(a), Variant(b), &ok);
        EXPECT_EQ(ok, !text.empty()) << op << " " << Variant(a).toString() << " " << text;
        EXPECT_EQ(result.isEmpty() ? "" : result.toString(), text)
            << op << " " << Variant(a).toString();
    }
}

template <typename A, typename B>
void expectComparisons(std::vector<std::tuple<CompareType, A, B, std::string>> const& rows) {
    for (auto const& [op, a, b, text] : rows) {
        bool ok = text.empty();
        bool const result = Math::singleton().compare(op, Variant(a), Variant(b), &ok);
        EXPECT_EQ(ok ? (result ? "true" : "false") : "", text)
            << op << " " << Variant(a).toString();
        EXPECT_TRUE(ok || !result);
    }
}

// The right operand takes the left one's type; integers wrap; an integer quotient by zero
// or of the most negative value by -1 fails.
TEST(Math, BuiltInOperations) {
    constexpr int intMin = std::numeric_limits<int>::min();
    constexpr int intMax = std::numeric_limits<int>::max();
    using Text = std::string;
    expectOperations<int, int>({{OperatorAdd, 2, 3, "5"},
                                {OperatorAdd, intMax, 1, "-2147483648"},
                                {OperatorSubtract, 2, 3, "-1"},
                                {OperatorMultiply, 65536, 65536, "0"},
                                {OperatorDivide, 7, 2, "3"},
                                {OperatorDivide, 1, 0, ""},
                                {OperatorDivide, intMin, -1, ""},
                                {OperatorDivide, intMin, 1, "-2147483648"},
                                {OperatorModulo, -7, 4, "-3"},
                                {OperatorModulo, intMin, -1, ""},
                                {OperatorModulo, 1, 0, ""},
                                {OperatorAnd, 6, 3, "2"},
                                {OperatorOr, 6, 3, "7"}});
    expectOperations<unsigned, unsigned>(
        {{OperatorSubtract, 0, 1, "4294967295"}, {OperatorModulo, 7, 4, "3"}});
    expectOperations<double, double>({{OperatorMultiply, 2.5, 2.0, "5"},
                                      {OperatorDivide, 1.0, 0.0, "inf"},
                                      {OperatorModulo, 1.0, 1.0, ""}});
    expectOperations<bool, bool>({{OperatorAnd, true, false, "false"},
                                  {OperatorOr, true, false, "true"},
                                  {OperatorOr, false, false, "false"}});
    expectOperations<bool, int>({{OperatorAnd, true, 1, "true"}});
    expectOperations<int, Text>({{OperatorAdd, 2, "40", "42"}, {OperatorAdd, 1, "x", ""}});
    expectOperations<Text, Text>({{OperatorAdd, "ab", "cd", "abcd"}});
    expectOperations<double, Meters>({{OperatorAdd, 1.0, Meters{2}, ""}});
    expectComparisons<int, int>({{CompareLess, 1, 2, "true"},
                                 {CompareLess, 2, 2, "false"},
                                 {CompareGreater, 1, 2, "false"}});
    expectComparisons<unsigned, unsigned>({{CompareGreater, 3, 2, "true"}});
    expectComparisons<double, int>({{CompareEqual, 3.0, 3, "true"}});
    expectComparisons<Text, Text>(
        {{CompareEqual, "x", "x", "true"}, {CompareLess, "a", "b", "true"}});
    expectComparisons<bool, int>(
        {{CompareEqual, false, 0, "true"}, {CompareGreater, true, 0, "true"}});
    expectComparisons<int, Text>({{CompareEqual, 3, "three", ""}});
    expectComparisons<Meters, Meters>({{CompareLess, Meters{}, Meters{}, ""}});
    Math const& math = Math::singleton();
    bool ok = true;
    EXPECT_TRUE(math.binaryOperator(OperatorAdd, Variant(), Variant(1), &ok).isEmpty() && !ok);
    EXPECT_FALSE(math.compare(CompareEqual, Variant(), Variant(), &ok) || ok);
    EXPECT_TRUE(math.unaryOperator(OperatorNegate, Variant(4), &ok).get<int>() == -4 && ok);
    EXPECT_EQ(math.unaryOperator(OperatorNegate, Variant(intMin)).get<int>(), intMin);
    EXPECT_EQ(math.unaryOperator(OperatorNegate, Variant(2.5)).get<double>(), -2.5);
    EXPECT_TRUE(math.unaryOperator(OperatorNegate, Variant(1u), &ok).isEmpty() && !ok);
    EXPECT_TRUE(math.unaryOperator(OperatorNegate, Variant(), &ok).isEmpty());
}

// Operations registered for a type are found by the left operand's type.
TEST(Math, RegisteredOperationsOfAType) {
    Math& math = Math::singleton();
    EXPECT_FALSE(math.hasBinaryOperator(OperatorAdd, typeid(Meters)));
    math.registerBinaryOperator<Meters>(OperatorAdd, [](Variant const& a, Variant const& b) {
        return Variant(Meters{a.get<Meters>().value + b.get<Meters>().value});
    });
    EXPECT_TRUE(math.hasBinaryOperator(OperatorAdd, typeid(Meters)));
    EXPECT_TRUE(math.hasCompare(CompareLess, typeid(int)) &&
                !math.hasCompare(CompareLess, typeid(Meters)));
    EXPECT_TRUE(math.hasUnaryOperator(OperatorNegate, typeid(int)) &&
                !math.hasUnaryOperator(OperatorNegate, typeid(unsigned)));
    bool ok = false;
    Variant const sum =
        math.binaryOperator(OperatorAdd, Variant(Meters{1}), Variant(Meters{2}), &ok);
    EXPECT_TRUE(sum.get<Meters>().value == 3.0 && ok);
}

}  // namespace
