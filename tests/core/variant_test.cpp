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

// A type only the tests know, registered with the registries below.
struct Meters {
    double value = 0;
};

double fromStringOrZero(std::string const& text) {
    try {
        return fromString<double>(text);
    } catch (Exception const&) {
        return 0;
    }
}

TEST(Variant, EmptyHoldsNothing) {
    Variant const empty;
    EXPECT_TRUE(empty.isEmpty());
    EXPECT_EQ(empty.type(), typeid(void));
    EXPECT_EQ(empty.typeName(), "");
    bool ok = true;
    EXPECT_EQ(empty.get<int>(&ok), 0);
    EXPECT_FALSE(ok);
    EXPECT_EQ(empty.toString(&ok), "");
    EXPECT_FALSE(ok);
    EXPECT_TRUE(empty.toImage(&ok).isNull());
    EXPECT_FALSE(ok);
}

TEST(Variant, GetOfTheHeldType) {
    Variant const v(42);
    bool ok = false;
    EXPECT_EQ(v.get<int>(&ok), 42);
    EXPECT_TRUE(ok);
    EXPECT_EQ(v.get<int>(), 42);
    EXPECT_TRUE(v.is<int>());
    EXPECT_FALSE(v.is<long>());
    EXPECT_EQ(v.type(), typeid(int));
}

TEST(Variant, GetOfAnotherTypeFailsQuietly) {
    Variant const v(42);
    bool ok = true;
    EXPECT_EQ(v.get<unsigned int>(&ok), 0u);
    EXPECT_FALSE(ok);
    EXPECT_EQ(v.get<std::string>(&ok), "");
    EXPECT_FALSE(ok);
    // A failing get without a flag still only returns the default.
    EXPECT_EQ(v.get<double>(), 0.0);
}

TEST(Variant, ImageHeldIsNotASegmentList) {
    bool ok = true;
    nuv::core::image::SegmentList const list =
        Variant(Image()).get<nuv::core::image::SegmentList>(&ok);
    EXPECT_FALSE(ok);
    EXPECT_TRUE(list.isEmpty());
}

TEST(Variant, IdsAreFreshForEveryConstruction) {
    Variant const a(5);
    Variant const b(5);
    EXPECT_NE(a.id(), b.id());
    EXPECT_EQ(b.id().value(), a.id().value() + 1);
    Variant const copy(a);
    EXPECT_EQ(copy.id(), a.id());
    Variant assigned;
    assigned = b;
    EXPECT_EQ(assigned.id(), b.id());
    Variant const empty1, empty2;
    EXPECT_NE(empty1.id(), empty2.id());
}

TEST(Variant, IdTakesTheGlobalCounter) {
    unsigned int const next = Id::g_id;
    Id const id;
    EXPECT_EQ(id.value(), next);
    EXPECT_EQ(Id::g_id, next + 1);
    EXPECT_GE(next, 1u);
}

TEST(Variant, CopiesShareTheHeldValue) {
    Image image(ImageInfo(2, 2, nuv::core::image::Gray));
    Variant const a(image);
    Variant const b(a);
    EXPECT_EQ(a.get<Image>().constData(), image.constData());
    EXPECT_EQ(b.get<Image>().constData(), image.constData());
    EXPECT_EQ(a.toImage().constData(), image.constData());
}

TEST(Variant, TextLiteralsAreStrings) {
    Variant const v("hello");
    EXPECT_TRUE(v.is<std::string>());
    EXPECT_EQ(v.toString(), "hello");
    EXPECT_EQ(Variant(std::string("x")).toString(), "x");
    EXPECT_EQ(v.typeName(), "string");
}

TEST(Converter, BuiltInNumbersAndText) {
    bool ok = false;
    EXPECT_EQ(Variant(42).toString(&ok), "42");
    EXPECT_TRUE(ok);
    EXPECT_EQ(Variant(-7LL).toString(), "-7");
    EXPECT_EQ(Variant(0.1).toString(), "0.1");
    EXPECT_EQ(Variant(true).toString(), "true");
    EXPECT_EQ(Variant('c').toString(), "c");
    EXPECT_EQ(Variant(static_cast<unsigned char>(200)).toString(), "200");
    EXPECT_EQ(Variant("17").convertTo<int>(&ok), 17);
    EXPECT_TRUE(ok);
    EXPECT_EQ(Variant(" 2.5 ").convertTo<double>(&ok), 2.5);
    EXPECT_TRUE(ok);
    EXPECT_EQ(Variant("1").convertTo<bool>(&ok), true);
    EXPECT_TRUE(ok);
    EXPECT_EQ(Variant("false").convertTo<bool>(&ok), false);
    EXPECT_TRUE(ok);
}

TEST(Converter, BadTextFails) {
    bool ok = true;
    EXPECT_EQ(Variant("12x").convertTo<int>(&ok), 0);
    EXPECT_FALSE(ok);
    ok = true;
    EXPECT_EQ(Variant("").convertTo<int>(&ok), 0);
    EXPECT_FALSE(ok);
    ok = true;
    EXPECT_EQ(Variant("-1").convertTo<unsigned int>(&ok), 0u);
    EXPECT_FALSE(ok);
    ok = true;
    EXPECT_EQ(Variant("300").convertTo<unsigned char>(&ok), 0);
    EXPECT_FALSE(ok);
    ok = true;
    Variant("maybe").convertTo<bool>(&ok);
    EXPECT_FALSE(ok);
}

TEST(Converter, NumbersConvertWhenTheyFit) {
    bool ok = false;
    EXPECT_EQ(Variant(300).convertTo<long long>(&ok), 300);
    EXPECT_TRUE(ok);
    EXPECT_EQ(Variant(2.9).convertTo<int>(&ok), 2);
    EXPECT_TRUE(ok);
    EXPECT_EQ(Variant(-2.9).convertTo<int>(&ok), -2);
    EXPECT_TRUE(ok);
    Variant(300).convertTo<unsigned char>(&ok);
    EXPECT_FALSE(ok);
    Variant(-1).convertTo<unsigned int>(&ok);
    EXPECT_FALSE(ok);
    Variant(1e300).convertTo<float>(&ok);
    EXPECT_FALSE(ok);
    Variant(1e30).convertTo<long long>(&ok);
    EXPECT_FALSE(ok);
    Variant(std::numeric_limits<double>::quiet_NaN()).convertTo<int>(&ok);
    EXPECT_FALSE(ok);
    EXPECT_EQ(Variant(std::numeric_limits<unsigned long long>::max()).convertTo<double>(&ok),
              18446744073709551615.0);
    EXPECT_TRUE(ok);
    EXPECT_EQ(Variant(5).convertTo<bool>(&ok), true);
    EXPECT_EQ(Variant(true).convertTo<int>(&ok), 1);
}

TEST(Converter, SameTypeGivesTheVariantItself) {
    Variant const v(3);
    bool ok = false;
    Variant const same = Converter::singleton().convert(v, typeid(int), &ok);
    EXPECT_TRUE(ok);
    EXPECT_EQ(same.id(), v.id());
}

TEST(Converter, RegisteredConversionsAreFoundByTargetAndSource) {
    Converter& converter = Converter::singleton();
    EXPECT_FALSE(converter.canConvert(typeid(Meters), typeid(std::string)));
    bool ok = true;
    EXPECT_EQ(Variant(Meters{1.5}).toString(&ok), "");
    EXPECT_FALSE(ok);

    converter.registerConvertFunction(typeid(std::string), typeid(Meters), [](Variant const& v) {
        return Variant(std::to_string(static_cast<int>(v.get<Meters>().value)) + " m");
    });
    converter.registerConvertFunction(typeid(Meters), typeid(std::string), [](Variant const& v) {
        return Variant(Meters{fromStringOrZero(v.get<std::string>())});
    });
    EXPECT_TRUE(converter.canConvert(typeid(Meters), typeid(std::string)));
    EXPECT_TRUE(converter.canConvert(typeid(std::string), typeid(Meters)));
    EXPECT_FALSE(converter.canConvert(typeid(Meters), typeid(int)));

    EXPECT_EQ(Variant(Meters{12.0}).toString(&ok), "12 m");
    EXPECT_TRUE(ok);
    Meters const back = Variant("7").convertTo<Meters>(&ok);
    EXPECT_TRUE(ok);
    EXPECT_EQ(back.value, 7.0);
}

TEST(Converter, AFunctionGivingTheWrongTypeFails) {
    struct Odd {};
    Converter::singleton().registerConvertFunction(typeid(Image), typeid(Odd),
                                                   [](Variant const&) { return Variant(1); });
    bool ok = true;
    EXPECT_TRUE(Variant(Odd()).toImage(&ok).isNull());
    EXPECT_FALSE(ok);
}

TEST(Converter, ExceptionsOfAFunctionPassThrough) {
    struct Fragile {};
    Converter::singleton().registerConvertFunction(
        typeid(std::string), typeid(Fragile),
        [](Variant const&) -> Variant { throw Exception("Bad conversion"); });
    EXPECT_THROW(Variant(Fragile()).toString(), Exception);
}

TEST(Converter, FriendlyNames) {
    Converter& converter = Converter::singleton();
    EXPECT_EQ(converter.friendlyName(typeid(int)), "int");
    EXPECT_EQ(converter.friendlyName(typeid(std::string)), "string");
    EXPECT_EQ(converter.friendlyName(typeid(Image)), "image");
    EXPECT_EQ(converter.typeFromFriendlyName("image"), &typeid(Image));
    EXPECT_EQ(converter.typeFromFriendlyName("no such type"), nullptr);
    // Unregistered types are shown by their C++ name.
    EXPECT_NE(converter.friendlyName(typeid(Meters)).find("Meters"), std::string::npos);
    converter.registerFriendlyName("meters", typeid(Meters));
    EXPECT_EQ(converter.friendlyName(typeid(Meters)), "meters");
    EXPECT_EQ(Variant(Meters{}).typeName(), "meters");
    EXPECT_EQ(*converter.typeFromFriendlyName("meters"), typeid(Meters));
    converter.registerFriendlyName("length", typeid(Meters));
    EXPECT_EQ(converter.typeFromFriendlyName("meters"), nullptr);
    EXPECT_EQ(converter.friendlyName(typeid(Meters)), "length");
}

TEST(Math, CodesAreStable) {
    EXPECT_EQ(static_cast<int>(CompareEqual), 2);
    EXPECT_EQ(static_cast<int>(OperatorAdd), 2);
}

TEST(Math, BuiltInArithmetic) {
    Math const& math = Math::singleton();
    bool ok = false;
    EXPECT_EQ(math.binaryOperator(OperatorAdd, Variant(2), Variant(3), &ok).get<int>(), 5);
    EXPECT_TRUE(ok);
    EXPECT_EQ(math.binaryOperator(OperatorSubtract, Variant(2), Variant(3)).get<int>(), -1);
    EXPECT_EQ(math.binaryOperator(OperatorMultiply, Variant(2.5), Variant(2.0)).get<double>(), 5.0);
    EXPECT_EQ(math.binaryOperator(OperatorDivide, Variant(7), Variant(2)).get<int>(), 3);
    EXPECT_EQ(math.binaryOperator(OperatorModulo, Variant(7u), Variant(4u)).get<unsigned>(), 3u);
    EXPECT_EQ(math.binaryOperator(OperatorAnd, Variant(6), Variant(3)).get<int>(), 2);
    EXPECT_EQ(math.binaryOperator(OperatorOr, Variant(true), Variant(false)).get<bool>(), true);
    EXPECT_EQ(math.binaryOperator(OperatorAdd, Variant("ab"), Variant("cd")).toString(), "abcd");
    EXPECT_EQ(math.unaryOperator(OperatorNegate, Variant(4), &ok).get<int>(), -4);
    EXPECT_TRUE(ok);
    // Integers wrap instead of overflowing.
    EXPECT_EQ(math.binaryOperator(OperatorAdd, Variant(std::numeric_limits<int>::max()), Variant(1))
                  .get<int>(),
              std::numeric_limits<int>::min());
}

TEST(Math, RightOperandTakesTheLeftType) {
    Math const& math = Math::singleton();
    bool ok = false;
    Variant const sum = math.binaryOperator(OperatorAdd, Variant(2), Variant("40"), &ok);
    EXPECT_TRUE(ok);
    EXPECT_EQ(sum.get<int>(), 42);
    EXPECT_TRUE(math.compare(CompareEqual, Variant(3.0), Variant(3), &ok));
    EXPECT_TRUE(ok);
    EXPECT_FALSE(math.compare(CompareEqual, Variant(3), Variant("three"), &ok));
    EXPECT_FALSE(ok);
}

TEST(Math, FailuresReportThroughOk) {
    Math const& math = Math::singleton();
    bool ok = true;
    EXPECT_TRUE(math.binaryOperator(OperatorDivide, Variant(1), Variant(0), &ok).isEmpty());
    EXPECT_FALSE(ok);
    ok = true;
    EXPECT_TRUE(math.binaryOperator(OperatorModulo, Variant(std::numeric_limits<int>::min()),
                                    Variant(-1), &ok)
                    .isEmpty());
    EXPECT_FALSE(ok);
    ok = true;
    EXPECT_TRUE(math.binaryOperator(OperatorAdd, Variant(), Variant(1), &ok).isEmpty());
    EXPECT_FALSE(ok);
    ok = true;
    EXPECT_TRUE(math.binaryOperator(OperatorModulo, Variant(1.0), Variant(1.0), &ok).isEmpty());
    EXPECT_FALSE(ok);
    ok = true;
    EXPECT_FALSE(math.compare(CompareLess, Variant(Meters{}), Variant(Meters{}), &ok));
    EXPECT_FALSE(ok);
    ok = true;
    EXPECT_TRUE(math.unaryOperator(OperatorNegate, Variant(1u), &ok).isEmpty());
    EXPECT_FALSE(ok);
}

TEST(Math, BuiltInComparisons) {
    Math const& math = Math::singleton();
    EXPECT_TRUE(math.compare(CompareLess, Variant(1), Variant(2)));
    EXPECT_FALSE(math.compare(CompareGreater, Variant(1), Variant(2)));
    EXPECT_TRUE(math.compare(CompareEqual, Variant("x"), Variant("x")));
    EXPECT_TRUE(math.compare(CompareLess, Variant("a"), Variant("b")));
    EXPECT_TRUE(math.compare(CompareEqual, Variant(false), Variant(0)));
}

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

    bool ok = false;
    Variant const sum =
        math.binaryOperator(OperatorAdd, Variant(Meters{1}), Variant(Meters{2}), &ok);
    EXPECT_TRUE(ok);
    EXPECT_EQ(sum.get<Meters>().value, 3.0);
    EXPECT_TRUE(math.compare(CompareEqual, Variant(Meters{4}), Variant(Meters{4}), &ok));
    EXPECT_TRUE(ok);
    EXPECT_FALSE(math.compare(CompareEqual, Variant(Meters{4}), Variant(Meters{5})));
    EXPECT_EQ(math.unaryOperator(OperatorNegate, Variant(Meters{4})).get<Meters>().value, -4.0);
    // Found by the left operand's type only.
    EXPECT_TRUE(math.binaryOperator(OperatorAdd, Variant(1.0), Variant(Meters{2})).isEmpty());
}

TEST(Math, ImagesAddThroughARegisteredOperator) {
    Math& math = Math::singleton();
    math.registerBinaryOperator<Image>(OperatorAdd, [](Variant const& a, Variant const& b) {
        Image const x = a.toImage(), y = b.toImage();
        Image sum(x.info());
        for (unsigned i = 0; i < x.step() * x.info().height; ++i)
            sum.data()[i] = static_cast<unsigned char>(x.constData()[i] + y.constData()[i]);
        return Variant(sum);
    });
    Image a(ImageInfo(2, 1, nuv::core::image::Gray));
    a.data()[0] = 1;
    a.data()[1] = 2;
    Image b(a);
    Variant const sum = math.binaryOperator(OperatorAdd, Variant(a), Variant(b));
    Image const result = sum.toImage();
    ASSERT_FALSE(result.isNull());
    EXPECT_EQ(result.constData()[0], 2);
    EXPECT_EQ(result.constData()[1], 4);
}

}  // namespace
