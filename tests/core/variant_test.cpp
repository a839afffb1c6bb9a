// Variant, its ids, and the Converter and Math registries.
#include <nuv/core/Exception.h>
#include <nuv/core/fromString.h>
#include <nuv/core/image/Image.h>
#include <nuv/core/image/SegmentList.h>
#include <nuv/core/variant/Converter.h>
#include <nuv/core/variant/Id.h>
#include <nuv/core/variant/Math.h>
#include <nuv/core/variant/Variant.h>

#include <gtest/gtest.h>

#include <limits>
#include <string>

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
    Variant const empty;
    bool ok = true;
    EXPECT_TRUE(empty.isEmpty());
    EXPECT_EQ(empty.type(), typeid(void));
    EXPECT_EQ(empty.typeName(), "");
    EXPECT_EQ(empty.get<int>(&ok), 0);
    EXPECT_FALSE(ok);
    EXPECT_TRUE(empty.toImage(&ok).isNull());
    EXPECT_FALSE(ok);
    Variant const v(42);
    EXPECT_EQ(v.get<int>(&ok), 42);
    EXPECT_TRUE(ok);
    EXPECT_TRUE(v.is<int>() && !v.is<long>());
    EXPECT_EQ(v.get<unsigned>(&ok), 0u);  // no conversion in get
    EXPECT_FALSE(ok);
    EXPECT_EQ(v.get<double>(), 0.0);
    EXPECT_FALSE(Variant(Image()).get<image::SegmentList>(&ok).size() || ok);
    EXPECT_TRUE(Variant("hello").is<std::string>());
    EXPECT_EQ(Variant("hello").typeName(), "string");
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

// Numbers convert between themselves when the value fits, and to and from text.
TEST(Converter, BuiltInConversions) {
    struct Row {
        Variant from;
        std::type_info const& to;
        bool ok;
        std::string text;
    } const rows[] = {
        {Variant(42), typeid(std::string), true, "42"},
        {Variant(-7LL), typeid(std::string), true, "-7"},
        {Variant(0.1), typeid(std::string), true, "0.1"},
        {Variant('c'), typeid(std::string), true, "c"},
        {Variant(static_cast<unsigned char>(200)), typeid(std::string), true, "200"},
        {Variant("17"), typeid(int), true, "17"},
        {Variant(" 42 \t"), typeid(int), true, "42"},
        {Variant(" 2.5 "), typeid(double), true, "2.5"},
        {Variant("1"), typeid(bool), true, "true"},
        {Variant("false"), typeid(bool), true, "false"},
        {Variant(" "), typeid(char), true, " "},
        {Variant("255"), typeid(unsigned char), true, "255"},
        {Variant("-128"), typeid(signed char), true, "-128"},
        {Variant("12x"), typeid(int), false, ""},
        {Variant("4 2"), typeid(int), false, ""},
        {Variant(""), typeid(int), false, ""},
        {Variant("-1"), typeid(unsigned), false, ""},
        {Variant("256"), typeid(unsigned char), false, ""},
        {Variant("maybe"), typeid(bool), false, ""},
        {Variant("ab"), typeid(char), false, ""},
        {Variant(300), typeid(long long), true, "300"},
        {Variant(255), typeid(unsigned char), true, "255"},
        {Variant(256), typeid(unsigned char), false, ""},
        {Variant(-1), typeid(unsigned), false, ""},
        {Variant(-128), typeid(signed char), true, "-128"},
        {Variant(-129), typeid(signed char), false, ""},
        {Variant(4294967295ULL), typeid(unsigned), true, "4294967295"},
        {Variant(4294967296ULL), typeid(unsigned), false, ""},
        {Variant(2.9), typeid(int), true, "2"},
        {Variant(-2.9), typeid(int), true, "-2"},
        {Variant(2147483647.9), typeid(int), true, "2147483647"},
        {Variant(2147483648.0), typeid(int), false, ""},
        {Variant(-2147483648.5), typeid(int), true, "-2147483648"},
        {Variant(-2147483649.0), typeid(int), false, ""},
        {Variant(1e300), typeid(float), false, ""},
        {Variant(-1e300), typeid(float), false, ""},
        {Variant(Double::infinity()), typeid(float), true, "inf"},
        {Variant(1e30), typeid(long long), false, ""},
        {Variant(Double::quiet_NaN()), typeid(int), false, ""},
        {Variant(5), typeid(bool), true, "true"},
        {Variant(0.0), typeid(bool), true, "false"},
        {Variant(true), typeid(int), true, "1"},
        {Variant(3), typeid(int), true, "3"},
        {Variant(), typeid(int), false, ""},
    };
    for (Row const& row : rows) {
        bool ok = !row.ok;
        Variant const result = converter().convert(row.from, row.to, &ok);
        std::string const trace = row.from.typeName() + " to " + converter().friendlyName(row.to);
        EXPECT_EQ(ok, row.ok) << trace << " " << row.text;
        EXPECT_EQ(result.isEmpty(), !row.ok) << trace;
        if (row.ok) {
            EXPECT_EQ(result.toString(), row.text) << trace;
        }
    }
    Variant const three(3);
    EXPECT_EQ(converter().convert(three, typeid(int)).id(), three.id());
}

TEST(Converter, RegisteredConversionsAndNames) {
    EXPECT_FALSE(converter().canConvert(typeid(Meters), typeid(std::string)));
    EXPECT_TRUE(converter().canConvert(typeid(Meters), typeid(Meters)));
    bool ok = true;
    EXPECT_EQ(Variant(Meters{1.5}).toString(&ok), "");
    EXPECT_FALSE(ok);
    converter().registerConvertFunction(typeid(std::string), typeid(Meters), [](Variant const& v) {
        return Variant(std::to_string(static_cast<int>(v.get<Meters>().value)) + " m");
    });
    converter().registerConvertFunction(typeid(Meters), typeid(std::string), [](Variant const& v) {
        return Variant(Meters{fromString<double>(v.get<std::string>())});
    });
    converter().registerConvertFunction(typeid(Image), typeid(Meters),
                                        [](Variant const&) { return Variant(1); });  // wrong type
    EXPECT_TRUE(converter().canConvert(typeid(Meters), typeid(std::string)));
    EXPECT_FALSE(converter().canConvert(typeid(Meters), typeid(int)));
    EXPECT_EQ(Variant(Meters{12.0}).toString(&ok), "12 m");
    EXPECT_TRUE(ok);
    EXPECT_EQ(Variant("7").convertTo<Meters>(&ok).value, 7.0);
    EXPECT_TRUE(ok);
    EXPECT_TRUE(Variant(Meters{}).toImage(&ok).isNull());
    EXPECT_FALSE(ok);
    EXPECT_THROW(Variant("x").convertTo<Meters>(), Exception);  // passed through

    EXPECT_EQ(converter().friendlyName(typeid(unsigned long long)), "unsigned long long");
    EXPECT_EQ(converter().friendlyName(typeid(Image)), "image");
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

// The right operand takes the left one's type; integers wrap; failures give an empty value.
TEST(Math, BuiltInOperators) {
    constexpr int intMax = std::numeric_limits<int>::max(),
                  intMin = std::numeric_limits<int>::min();
    struct Row {
        BinaryOperatorType op;
        Variant a, b;
        bool ok;
        std::string text;
    } const rows[] = {
        {OperatorAdd, Variant(2), Variant(3), true, "5"},
        {OperatorAdd, Variant(2), Variant("40"), true, "42"},
        {OperatorAdd, Variant(intMax), Variant(1), true, std::to_string(intMin)},
        {OperatorAdd, Variant("ab"), Variant("cd"), true, "abcd"},
        {OperatorSubtract, Variant(2), Variant(3), true, "-1"},
        {OperatorSubtract, Variant(0u), Variant(1u), true, "4294967295"},
        {OperatorMultiply, Variant(2.5), Variant(2.0), true, "5"},
        {OperatorMultiply, Variant(65536), Variant(65536), true, "0"},
        {OperatorDivide, Variant(7), Variant(2), true, "3"},
        {OperatorDivide, Variant(1.0), Variant(0.0), true, "inf"},
        {OperatorDivide, Variant(1), Variant(0), false, ""},
        {OperatorDivide, Variant(intMin), Variant(-1), false, ""},
        {OperatorDivide, Variant(intMin), Variant(1), true, std::to_string(intMin)},
        {OperatorModulo, Variant(7u), Variant(4u), true, "3"},
        {OperatorModulo, Variant(-7), Variant(4), true, "-3"},
        {OperatorModulo, Variant(intMin), Variant(-1), false, ""},
        {OperatorModulo, Variant(1), Variant(0), false, ""},
        {OperatorModulo, Variant(1.0), Variant(1.0), false, ""},
        {OperatorAnd, Variant(6), Variant(3), true, "2"},
        {OperatorOr, Variant(6), Variant(3), true, "7"},
        {OperatorAnd, Variant(true), Variant(false), true, "false"},
        {OperatorAnd, Variant(true), Variant(1), true, "true"},
        {OperatorOr, Variant(true), Variant(false), true, "true"},
        {OperatorOr, Variant(false), Variant(false), true, "false"},
        {OperatorAdd, Variant(), Variant(1), false, ""},
        {OperatorAdd, Variant(1), Variant("x"), false, ""},
        {OperatorAdd, Variant(1.0), Variant(Meters{2}), false, ""},
    };
    Math const& math = Math::singleton();
    for (Row const& row : rows) {
        bool ok = !row.ok;
        Variant const result = math.binaryOperator(row.op, row.a, row.b, &ok);
        EXPECT_EQ(ok, row.ok) << row.op << " " << row.a.toString() << " " << row.text;
        if (row.ok) {
            EXPECT_EQ(result.toString(), row.text) << row.op << " " << row.a.toString();
        }
        EXPECT_EQ(result.isEmpty(), !row.ok);
    }
    bool ok = false;
    EXPECT_EQ(math.unaryOperator(OperatorNegate, Variant(4), &ok).get<int>(), -4);
    EXPECT_TRUE(ok);
    EXPECT_EQ(math.unaryOperator(OperatorNegate, Variant(intMin)).get<int>(), intMin);
    EXPECT_EQ(math.unaryOperator(OperatorNegate, Variant(2.5)).get<double>(), -2.5);
    EXPECT_TRUE(math.unaryOperator(OperatorNegate, Variant(1u), &ok).isEmpty());
    EXPECT_FALSE(ok);
    EXPECT_TRUE(math.unaryOperator(OperatorNegate, Variant(), &ok).isEmpty());
}

TEST(Math, BuiltInComparisons) {
    struct Row {
        CompareType op;
        Variant a, b;
        bool ok, result;
    } const rows[] = {
        {CompareLess, Variant(1), Variant(2), true, true},
        {CompareLess, Variant(2), Variant(2), true, false},
        {CompareGreater, Variant(1), Variant(2), true, false},
        {CompareGreater, Variant(3u), Variant(2u), true, true},
        {CompareEqual, Variant(3.0), Variant(3), true, true},
        {CompareEqual, Variant("x"), Variant("x"), true, true},
        {CompareLess, Variant("a"), Variant("b"), true, true},
        {CompareEqual, Variant(false), Variant(0), true, true},
        {CompareGreater, Variant(true), Variant(false), true, true},
        {CompareEqual, Variant(3), Variant("three"), false, false},
        {CompareEqual, Variant(), Variant(), false, false},
        {CompareLess, Variant(Meters{}), Variant(Meters{}), false, false},
    };
    for (Row const& row : rows) {
        bool ok = !row.ok;
        EXPECT_EQ(Math::singleton().compare(row.op, row.a, row.b, &ok), row.result)
            << row.op << " " << row.a.toString() << " " << row.b.toString();
        EXPECT_EQ(ok, row.ok) << row.op << " " << row.a.toString();
    }
}

// Operations registered for a type are found by the left operand's type.
TEST(Math, RegisteredOperationsOfAType) {
    Math& math = Math::singleton();
    EXPECT_FALSE(math.hasBinaryOperator(OperatorAdd, typeid(Meters)));
    math.registerBinaryOperator<Meters>(OperatorAdd, [](Variant const& a, Variant const& b) {
        return Variant(Meters{a.get<Meters>().value + b.get<Meters>().value});
    });
    math.registerCompare<Meters>(CompareEqual, [](Variant const& a, Variant const& b) {
        return a.get<Meters>().value == b.get<Meters>().value;
    });
    math.registerUnaryOperator<Meters>(
        OperatorNegate, [](Variant const& a) { return Variant(Meters{-a.get<Meters>().value}); });
    EXPECT_TRUE(math.hasBinaryOperator(OperatorAdd, typeid(Meters)));
    EXPECT_TRUE(math.hasCompare(CompareEqual, typeid(Meters)));
    EXPECT_TRUE(math.hasUnaryOperator(OperatorNegate, typeid(Meters)));
    EXPECT_FALSE(math.hasCompare(CompareLess, typeid(Meters)));
    EXPECT_FALSE(math.hasUnaryOperator(OperatorNegate, typeid(unsigned)));
    bool ok = false;
    EXPECT_EQ(math.binaryOperator(OperatorAdd, Variant(Meters{1}), Variant(Meters{2}), &ok)
                  .get<Meters>()
                  .value,
              3.0);
    EXPECT_TRUE(ok);
    EXPECT_TRUE(math.compare(CompareEqual, Variant(Meters{4}), Variant(Meters{4})));
    EXPECT_FALSE(math.compare(CompareEqual, Variant(Meters{4}), Variant(Meters{5})));
    EXPECT_EQ(math.unaryOperator(OperatorNegate, Variant(Meters{4})).get<Meters>().value, -4.0);
}

}  // namespace
