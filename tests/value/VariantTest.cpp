#include "qm_ordering/platform/value/Variant.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "tests/support/NoMembers.h"
#include "tests/support/RaisedNumber.h"

namespace {

using qm_ordering::Currency;
using qm_ordering::Date;
using qm_ordering::Variant;
using qm_ordering::VariantKind;
using test::RaisedNumber;

class Thing : public qm_ordering::Object {
 public:
  const char* ClassName() const noexcept override { return "Thing"; }
  const qm_ordering::ClassInfo& Members() const override { return test::NoMembers(); }
};

enum Unscoped { kUnscoped };
enum class Scoped { Value };

// What converts by accident does not compile.
static_assert(!std::is_constructible_v<Variant, char>);
static_assert(!std::is_constructible_v<Variant, wchar_t>);
static_assert(!std::is_constructible_v<Variant, char8_t>);
static_assert(!std::is_constructible_v<Variant, char16_t>);
static_assert(!std::is_constructible_v<Variant, char32_t>);
static_assert(!std::is_constructible_v<Variant, char*>);
static_assert(!std::is_constructible_v<Variant, const wchar_t*>);
static_assert(!std::is_constructible_v<Variant, int*>);
static_assert(!std::is_constructible_v<Variant, const void*>);
static_assert(!std::is_constructible_v<Variant, Thing*>);
static_assert(!std::is_constructible_v<Variant, std::nullptr_t>);
static_assert(!std::is_constructible_v<Variant, void (*)()>);
static_assert(!std::is_constructible_v<Variant, Unscoped>);
static_assert(!std::is_constructible_v<Variant, Scoped>);
static_assert(!std::is_constructible_v<Variant, long double>);
static_assert(!std::is_constructible_v<Variant, std::shared_ptr<int>>);
static_assert(!std::is_constructible_v<Variant, std::vector<bool>::reference>);
static_assert(std::is_convertible_v<const char*, Variant>);
static_assert(std::is_convertible_v<const char (&)[4], Variant>);
static_assert(std::is_convertible_v<std::shared_ptr<Thing>, Variant>);

const Variant& AnObject() {
  static const Variant vObject(std::make_shared<Thing>());
  return vObject;
}

TEST(Variant, HasTheKindOfWhatItIsMadeOf) {
  EXPECT_EQ(Variant().Kind(), VariantKind::Empty);
  EXPECT_EQ(Variant::Missing().Kind(), VariantKind::Missing);
  EXPECT_EQ(Variant::Null().Kind(), VariantKind::Null);
  EXPECT_EQ(Variant(true).Kind(), VariantKind::Boolean);
  EXPECT_EQ(Variant(1).Kind(), VariantKind::Integer);
  EXPECT_EQ(Variant(std::uint8_t{1}).Kind(), VariantKind::Integer);
  EXPECT_EQ(Variant(std::size_t{1}).Kind(), VariantKind::Integer);
  EXPECT_EQ(Variant(1.0).Kind(), VariantKind::Double);
  EXPECT_EQ(Variant(1.0F).Kind(), VariantKind::Double);
  EXPECT_EQ(Variant(Currency()).Kind(), VariantKind::Currency);
  EXPECT_EQ(Variant(Date()).Kind(), VariantKind::Date);
  EXPECT_EQ(Variant("text").Kind(), VariantKind::String);
  EXPECT_EQ(Variant(std::string("text")).Kind(), VariantKind::String);
  EXPECT_EQ(Variant(std::string_view("text")).Kind(), VariantKind::String);
  EXPECT_EQ(AnObject().Kind(), VariantKind::Object);
}

TEST(Variant, TellsMissingEmptyAndNullApart) {
  EXPECT_TRUE(Variant::Missing().IsMissing());
  EXPECT_FALSE(Variant::Missing().IsEmpty());
  EXPECT_FALSE(Variant::Missing().IsNull());
  EXPECT_TRUE(Variant().IsEmpty());
  EXPECT_FALSE(Variant().IsMissing());
  EXPECT_FALSE(Variant().IsNull());
  EXPECT_TRUE(Variant::Null().IsNull());
  EXPECT_FALSE(Variant::Null().IsEmpty());
  EXPECT_FALSE(Variant("").IsEmpty());
}

TEST(Variant, TakesEveryIntegerTypeThatFits) {
  EXPECT_EQ(Variant(std::int64_t{-2147483648}).ToInteger(), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(Variant(std::uint32_t{2147483647}).ToInteger(), 2147483647);
  EXPECT_EQ(Variant(std::int8_t{-1}).ToInteger(), -1);
  EXPECT_EQ(Variant(std::uint64_t{0}).ToInteger(), 0);
}

TEST(Variant, RaisesOverflowForAnIntegerThatDoesNotFit) {
  EXPECT_EQ(RaisedNumber([] { return Variant(std::int64_t{2147483648}); }), 6);
  EXPECT_EQ(RaisedNumber([] { return Variant(std::int64_t{-2147483649}); }), 6);
  EXPECT_EQ(RaisedNumber([] { return Variant(std::uint32_t{4294967295}); }), 6);
  EXPECT_EQ(RaisedNumber([] { return Variant(std::numeric_limits<std::uint64_t>::max()); }), 6);
}

TEST(Variant, KeepsTextsWithZeroBytes) {
  const std::string zText("a\0b", 3);
  EXPECT_EQ(Variant(zText).ToString(), zText);
  EXPECT_EQ(Variant(std::string_view(zText)).ToString(), zText);
}

TEST(Variant, MakesTheEmptyTextOfANullTextPointer) {
  const char* zNothing = nullptr;
  EXPECT_EQ(Variant(zNothing), Variant(""));
}

TEST(Variant, IsEqualInKindAndValueOnly) {
  EXPECT_EQ(Variant(5), Variant(5));
  EXPECT_NE(Variant(5), Variant(6));
  EXPECT_NE(Variant(5), Variant(5.0));
  EXPECT_NE(Variant(5), Variant("5"));
  EXPECT_NE(Variant(0), Variant());
  EXPECT_NE(Variant(""), Variant());
  EXPECT_NE(Variant("a"), Variant("A"));
  EXPECT_NE(Variant::Null(), Variant::Missing());
  EXPECT_EQ(Variant::Null(), Variant::Null());
  EXPECT_NE(Variant(-1), Variant(true));
  EXPECT_NE(AnObject(), Variant(std::make_shared<Thing>()));
}

TEST(Variant, ConvertsNothingOfNull) {
  const Variant vNull = Variant::Null();
  EXPECT_EQ(RaisedNumber([&] { return vNull.ToInteger(); }), 94);
  EXPECT_EQ(RaisedNumber([&] { return vNull.ToBoolean(); }), 94);
  EXPECT_EQ(RaisedNumber([&] { return vNull.ToDouble(); }), 94);
  EXPECT_EQ(RaisedNumber([&] { return vNull.ToCurrency(); }), 94);
  EXPECT_EQ(RaisedNumber([&] { return vNull.ToDate(); }), 94);
  EXPECT_EQ(RaisedNumber([&] { return vNull.ToString(); }), 94);
  EXPECT_EQ(RaisedNumber([&] { return vNull.ToObject(); }), 13);
}

TEST(Variant, ConvertsNothingOfAMissingArgument) {
  const Variant vMissing = Variant::Missing();
  EXPECT_EQ(RaisedNumber([&] { return vMissing.ToInteger(); }), 13);
  EXPECT_EQ(RaisedNumber([&] { return vMissing.ToBoolean(); }), 13);
  EXPECT_EQ(RaisedNumber([&] { return vMissing.ToDouble(); }), 13);
  EXPECT_EQ(RaisedNumber([&] { return vMissing.ToCurrency(); }), 13);
  EXPECT_EQ(RaisedNumber([&] { return vMissing.ToDate(); }), 13);
  EXPECT_EQ(RaisedNumber([&] { return vMissing.ToString(); }), 13);
  EXPECT_EQ(RaisedNumber([&] { return vMissing.ToObject(); }), 13);
}

TEST(Variant, ConvertsNothingOfAnObjectButTheReference) {
  EXPECT_EQ(RaisedNumber([] { return AnObject().ToInteger(); }), 13);
  EXPECT_EQ(RaisedNumber([] { return AnObject().ToBoolean(); }), 13);
  EXPECT_EQ(RaisedNumber([] { return AnObject().ToDouble(); }), 13);
  EXPECT_EQ(RaisedNumber([] { return AnObject().ToCurrency(); }), 13);
  EXPECT_EQ(RaisedNumber([] { return AnObject().ToDate(); }), 13);
  EXPECT_EQ(RaisedNumber([] { return AnObject().ToString(); }), 13);
}

TEST(Variant, ConvertsEmptyToTheZeroOfEachKind) {
  const Variant vEmpty;
  EXPECT_EQ(vEmpty.ToInteger(), 0);
  EXPECT_FALSE(vEmpty.ToBoolean());
  EXPECT_EQ(vEmpty.ToDouble(), 0.0);
  EXPECT_EQ(vEmpty.ToCurrency(), Currency());
  EXPECT_TRUE(vEmpty.ToDate().IsZero());
  EXPECT_EQ(vEmpty.ToString(), "");
  EXPECT_EQ(vEmpty.ToObject(), nullptr);
}

TEST(Variant, CountsTrueAsMinusOne) {
  EXPECT_EQ(Variant(true).ToInteger(), -1);
  EXPECT_EQ(Variant(false).ToInteger(), 0);
  EXPECT_EQ(Variant(true).ToDouble(), -1.0);
  EXPECT_EQ(Variant(true).ToCurrency(), Currency::Parse("-1"));
  EXPECT_EQ(Variant(false).ToCurrency(), Currency());
}

TEST(Variant, ReadsIntegersFromTexts) {
  EXPECT_EQ(Variant("12").ToInteger(), 12);
  EXPECT_EQ(Variant(" \t+12 ").ToInteger(), 12);
  EXPECT_EQ(Variant("-12").ToInteger(), -12);
  EXPECT_EQ(Variant("1e2").ToInteger(), 100);
  EXPECT_EQ(Variant("1E+2").ToInteger(), 100);
  EXPECT_EQ(Variant("1200e-2").ToInteger(), 12);
  EXPECT_EQ(Variant(".9").ToInteger(), 1);
  EXPECT_EQ(Variant("7.").ToInteger(), 7);
  EXPECT_EQ(Variant("0e999999999999999999999").ToInteger(), 0);
  EXPECT_EQ(Variant("1e-999999999999999999999").ToInteger(), 0);
  EXPECT_EQ(Variant("00000000000000000000000000000000000000012").ToInteger(), 12);
}

TEST(Variant, RoundsFractionsHalfToEven) {
  for (const auto& [zText, lExpected] : std::vector<std::pair<const char*, std::int32_t>>{
           {"0.5", 0},
           {"1.5", 2},
           {"2.5", 2},
           {"3.5", 4},
           {"-0.5", 0},
           {"-1.5", -2},
           {"-2.5", -2},
           {"2.51", 3},
           {"2.49", 2},
           {"0.05", 0},
           {"2.5000000000000000000000000000001", 3},
           {"2147483647.4", 2147483647},
           {"2147483646.5", 2147483646},
           {"-2147483648.5", std::numeric_limits<std::int32_t>::min()}}) {
    EXPECT_EQ(Variant(zText).ToInteger(), lExpected) << zText;
  }
  EXPECT_EQ(Variant(2.5).ToInteger(), 2);
  EXPECT_EQ(Variant(3.5).ToInteger(), 4);
  EXPECT_EQ(Variant(-2.5).ToInteger(), -2);
  EXPECT_EQ(Variant(0.49999999999999994).ToInteger(), 0);
  EXPECT_EQ(Variant(2147483647.4).ToInteger(), 2147483647);
  EXPECT_EQ(Variant(-2147483648.5).ToInteger(), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(Variant(Currency::Parse("2.5")).ToInteger(), 2);
  EXPECT_EQ(Variant(Currency::Parse("3.5")).ToInteger(), 4);
  EXPECT_EQ(Variant(Currency::Parse("-2.5001")).ToInteger(), -3);
}

TEST(Variant, RaisesOverflowForIntegersOutOfRange) {
  constexpr double dInfinity = std::numeric_limits<double>::infinity();
  for (const Variant& vValue :
       {Variant("2147483648"), Variant("2147483647.5"), Variant("-2147483649"), Variant("-2147483648.51"),
        Variant("1e10"), Variant("1e999999999999999999999"), Variant("99999999999999999999999"),
        Variant(2147483648.0), Variant(2147483647.5), Variant(-2147483649.0), Variant(1e300),
        Variant(dInfinity), Variant(-dInfinity), Variant(std::numeric_limits<double>::quiet_NaN()),
        Variant(Currency::Parse("2147483647.5"))}) {
    EXPECT_EQ(RaisedNumber([&] { return vValue.ToInteger(); }), 6) << vValue.ToString();
  }
}

TEST(Variant, ReadsNoNumberFromOtherTexts) {
  for (const char* zText :
       {"",   " ",   "abc", "12a", "1 2", "inf", "-inf",  "infinity", "nan",   "0x10", "&H10", "1,000",
        "1e", "1e+", "e5",  ".",   "+",   "-",   "1.2.3", "--1",      "1e2.5", "True", "$1",   "1e 2"}) {
    EXPECT_EQ(RaisedNumber([&] { return Variant(zText).ToInteger(); }), 13) << '"' << zText << '"';
    EXPECT_EQ(RaisedNumber([&] { return Variant(zText).ToDouble(); }), 13) << '"' << zText << '"';
    EXPECT_EQ(RaisedNumber([&] { return Variant(zText).ToCurrency(); }), 13) << '"' << zText << '"';
  }
}

TEST(Variant, IsTrueForAnyNumberButZero) {
  for (const Variant& vValue : {Variant(true), Variant(1), Variant(-1), Variant(0.1), Variant("-1"),
                                Variant("0.1"), Variant("1e-999"), Variant(Currency::FromScaled(1)),
                                Variant(std::numeric_limits<double>::infinity())}) {
    EXPECT_TRUE(vValue.ToBoolean()) << vValue.ToString();
  }
  for (const Variant& vValue : {Variant(false), Variant(0), Variant(0.0), Variant(-0.0), Variant("0"),
                                Variant("-0.00"), Variant("0e5"), Variant(Currency())}) {
    EXPECT_FALSE(vValue.ToBoolean()) << vValue.ToString();
  }
}

TEST(Variant, ReadsTrueAndFalseInAnyLetterCase) {
  for (const char* zText : {"True", "true", "TRUE", "tRuE"}) {
    EXPECT_TRUE(Variant(zText).ToBoolean()) << zText;
  }
  for (const char* zText : {"False", "false", "FALSE"}) {
    EXPECT_FALSE(Variant(zText).ToBoolean()) << zText;
  }
  for (const char* zText : {"", "yes", "Truee", "Tru", "T", "on"}) {
    EXPECT_EQ(RaisedNumber([&] { return Variant(zText).ToBoolean(); }), 13) << zText;
  }
}

TEST(Variant, ConvertsToTheNearestDouble) {
  EXPECT_EQ(Variant(5).ToDouble(), 5.0);
  EXPECT_EQ(Variant(0.1).ToDouble(), 0.1);
  EXPECT_EQ(Variant("0.1").ToDouble(), 0.1);
  EXPECT_EQ(Variant(" -12.5e1 ").ToDouble(), -125.0);
  EXPECT_EQ(Variant("0").ToDouble(), 0.0);
  EXPECT_EQ(Variant(Currency::Parse("0.1")).ToDouble(), 0.1);
  EXPECT_EQ(Variant(Currency::FromScaled(std::numeric_limits<std::int64_t>::max())).ToDouble(),
            922337203685477.5807);
  EXPECT_EQ(Variant("1.7976931348623157e308").ToDouble(), std::numeric_limits<double>::max());
  EXPECT_EQ(Variant("4.9e-324").ToDouble(), std::numeric_limits<double>::denorm_min());
}

TEST(Variant, RaisesOverflowForATextBeyondEveryDouble) {
  EXPECT_EQ(RaisedNumber([] { return Variant("1e400").ToDouble(); }), 6);
  EXPECT_EQ(RaisedNumber([] { return Variant("-1e999999999999999999999").ToDouble(); }), 6);
  EXPECT_EQ(Variant("1e-400").ToDouble(), 0.0);
  EXPECT_EQ(Variant("1e-999999999999999999999").ToDouble(), 0.0);
}

TEST(Variant, ConvertsToCurrencyExactly) {
  EXPECT_EQ(Variant(12).ToCurrency(), Currency::Parse("12"));
  EXPECT_EQ(Variant(std::numeric_limits<std::int32_t>::min()).ToCurrency(), Currency::Parse("-2147483648"));
  EXPECT_EQ(Variant(Currency::FromScaled(7)).ToCurrency(), Currency::FromScaled(7));
  EXPECT_EQ(Variant("922337203685477.5807").ToCurrency().Scaled(), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(Variant("-9223372036854775808e-4").ToCurrency().Scaled(),
            std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(Variant(" 12.00005 ").ToCurrency(), Currency::Parse("12"));
  EXPECT_EQ(Variant(0.1).ToCurrency(), Currency::Parse("0.1"));
  EXPECT_EQ(Variant(1e-300).ToCurrency(), Currency());
}

TEST(Variant, TakesADoubleToFourDecimalsHalfToEven) {
  EXPECT_EQ(Variant(1.00005).ToCurrency(), Currency::Parse("1"));
  EXPECT_EQ(Variant(1.00015).ToCurrency(), Currency::Parse("1.0002"));
  EXPECT_EQ(Variant(-1.00025).ToCurrency(), Currency::Parse("-1.0002"));
  EXPECT_EQ(Variant(1.000250001).ToCurrency(), Currency::Parse("1.0003"));
}

TEST(Variant, RaisesOverflowForAnAmountOutOfRange) {
  for (const Variant& vValue : {Variant("922337203685477.5808"), Variant(1e15), Variant(-1e300),
                                Variant("1e99"), Variant(std::numeric_limits<double>::infinity()),
                                Variant(std::numeric_limits<double>::quiet_NaN())}) {
    EXPECT_EQ(RaisedNumber([&] { return vValue.ToCurrency(); }), 6) << vValue.ToString();
  }
}

TEST(Variant, ConvertsToADate) {
  EXPECT_EQ(Variant(Date(2003, 7, 4, 15, 4, 5)).ToDate(), Date(2003, 7, 4, 15, 4, 5));
  EXPECT_EQ(Variant("2003-07-04 15:04:05").ToDate(), Date(2003, 7, 4, 15, 4, 5));
  EXPECT_EQ(Variant("2003-07-04").ToDate(), Date(2003, 7, 4));
  for (const Variant& vValue :
       {Variant(""), Variant("7/4/2003"), Variant(37806), Variant(0.5), Variant(true), Variant(Currency())}) {
    EXPECT_EQ(RaisedNumber([&] { return vValue.ToDate(); }), 13) << vValue.ToString();
  }
}

TEST(Variant, ConvertsNoDateToANumber) {
  const Variant vDate(Date(2003, 7, 4));
  EXPECT_EQ(RaisedNumber([&] { return vDate.ToInteger(); }), 13);
  EXPECT_EQ(RaisedNumber([&] { return vDate.ToBoolean(); }), 13);
  EXPECT_EQ(RaisedNumber([&] { return vDate.ToDouble(); }), 13);
  EXPECT_EQ(RaisedNumber([&] { return vDate.ToCurrency(); }), 13);
}

TEST(Variant, ConvertsToText) {
  EXPECT_EQ(Variant("text").ToString(), "text");
  EXPECT_EQ(Variant(true).ToString(), "True");
  EXPECT_EQ(Variant(false).ToString(), "False");
  EXPECT_EQ(Variant(-12).ToString(), "-12");
  EXPECT_EQ(Variant(Currency::Parse("12.50")).ToString(), "12.5");
  EXPECT_EQ(Variant(Date(2003, 7, 4, 15, 4, 5)).ToString(), "7/4/2003 3:04:05 PM");
  EXPECT_EQ(Variant(Date()).ToString(), "12:00:00 AM");
}

TEST(Variant, WritesADoubleInPlainDigitsThatReadBack) {
  EXPECT_EQ(Variant(0.1).ToString(), "0.1");
  EXPECT_EQ(Variant(100000.0).ToString(), "100000");
  EXPECT_EQ(Variant(-12.5).ToString(), "-12.5");
  EXPECT_EQ(Variant(0.00001).ToString(), "0.00001");
  for (const double dValue : {1.0 / 3.0, 1e23, 123456789.123456789, std::numeric_limits<double>::max(),
                              std::numeric_limits<double>::lowest(), std::numeric_limits<double>::min(),
                              -std::numeric_limits<double>::denorm_min(), 2.2250738585072011e-308}) {
    const std::string zText = Variant(dValue).ToString();
    EXPECT_EQ(zText.find_first_of("eE"), std::string::npos) << zText;
    EXPECT_EQ(Variant(zText).ToDouble(), dValue) << zText;
  }
}

TEST(Variant, GivesTheSameObjectBack) {
  const auto oThing = std::make_shared<Thing>();
  EXPECT_EQ(Variant(oThing).ToObject(), oThing);
  EXPECT_EQ(Variant(std::shared_ptr<Thing>()).ToObject(), nullptr);
  for (const Variant& vValue : {Variant(0), Variant(""), Variant(Date()), Variant(false)}) {
    EXPECT_EQ(RaisedNumber([&] { return vValue.ToObject(); }), 13) << vValue.ToString();
  }
}

TEST(Variant, NamesTheTextThatDoesNotConvert) {
  try {
    Variant("twelve").ToInteger();
    FAIL() << "no failure";
  } catch (const qm_ordering::Failure& caught) {
    EXPECT_EQ(caught.Description(), "Type mismatch: \"twelve\" cannot be made an integer");
  }
}

}  // namespace
