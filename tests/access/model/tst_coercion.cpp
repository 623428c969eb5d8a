// Assigned values in the kind and the bounds of their field.
#include <limits>

#include "access/model/coercion.h"
#include "tests/access/model/model_fixture.h"

namespace velnor::model {
namespace {

using test::errorOf;
using test::shown;

FieldDef field(FieldType type, int size = 0)
{
    FieldDef def;
    def.name = "F";
    def.type = type;
    def.size = size;
    return def;
}

/// What a value becomes in a field: its text, or the number of the error.
std::string put(const FieldDef& def, ValueView v)
{
    std::string scratch;
    try {
        const ValueView made = coerce(def, v, scratch);
        EXPECT_TRUE(made.isNull() || made.kind() == valueKindOf(def.type));
        return shown(made);
    } catch (const EngineError& e) {
        return std::to_string(e.number());
    }
}

TEST(Coercion, wholeNumbersKeepToTheirRange)
{
    EXPECT_EQ(put(field(FieldType::Byte), ValueView::integer(0)), "0");
    EXPECT_EQ(put(field(FieldType::Byte), ValueView::integer(255)), "255");
    EXPECT_EQ(put(field(FieldType::Byte), ValueView::integer(256)), "3421");
    EXPECT_EQ(put(field(FieldType::Byte), ValueView::integer(-1)), "3421");
    EXPECT_EQ(put(field(FieldType::Integer), ValueView::integer(32767)), "32767");
    EXPECT_EQ(put(field(FieldType::Integer), ValueView::integer(-32768)), "-32768");
    EXPECT_EQ(put(field(FieldType::Integer), ValueView::integer(32768)), "3421");
    EXPECT_EQ(put(field(FieldType::Long), ValueView::integer(2147483647)), "2147483647");
    EXPECT_EQ(put(field(FieldType::Long), ValueView::integer(2147483648)), "3421");
    EXPECT_EQ(
        put(field(FieldType::BigInt), ValueView::integer(std::numeric_limits<std::int64_t>::min())),
        "-9223372036854775808");
}

TEST(Coercion, otherNumbersAreRoundedIntoWholeOnes)
{
    EXPECT_EQ(put(field(FieldType::Long), ValueView::real(2.5)), "2");
    EXPECT_EQ(put(field(FieldType::Long), ValueView::currency(15000)), "2");
    EXPECT_EQ(put(field(FieldType::Byte), ValueView::real(255.4)), "255");
    EXPECT_EQ(put(field(FieldType::Byte), ValueView::real(255.6)), "3421");
    EXPECT_EQ(put(field(FieldType::Long), ValueView::text(" 12 ")), "12");
    EXPECT_EQ(put(field(FieldType::Long), ValueView::text("12abc")), "3421");
    EXPECT_EQ(put(field(FieldType::Long), ValueView::text("")), "3421");
    EXPECT_EQ(put(field(FieldType::Long), ValueView::boolean(true)), "-1");
}

TEST(Coercion, aSingleIsRoundedAtOnce)
{
    EXPECT_EQ(put(field(FieldType::Single), ValueView::real(0.1)), "0.10000000149011612");
    EXPECT_EQ(put(field(FieldType::Single), ValueView::real(1e39)), "3421");
    EXPECT_EQ(put(field(FieldType::Double), ValueView::real(1e39)), "1e+39");
    EXPECT_EQ(put(field(FieldType::Double), ValueView::decimal(true, 0, 125, 2)), "-1.25");
}

TEST(Coercion, currencyIsExact)
{
    EXPECT_EQ(put(field(FieldType::Currency), ValueView::text("922337203685477.5807")),
              "922337203685477.5807");
    EXPECT_EQ(put(field(FieldType::Currency), ValueView::real(1e15)), "3421");
}

TEST(Coercion, decimalsKeepToScaleAndPrecision)
{
    FieldDef def = field(FieldType::Decimal);
    def.precision = 5;
    def.scale = 2;
    EXPECT_EQ(put(def, ValueView::text("123.455")), "123.46");
    EXPECT_EQ(put(def, ValueView::text("123.445")), "123.44");
    EXPECT_EQ(put(def, ValueView::text("123.4450001")), "123.45");
    EXPECT_EQ(put(def, ValueView::integer(-999)), "-999");
    EXPECT_EQ(put(def, ValueView::integer(1000)), "3421");
    EXPECT_EQ(put(def, ValueView::text("999.995")), "3421");
    EXPECT_EQ(put(def, ValueView::real(0.1)), "0.1");
}

TEST(Coercion, textsKeepToTheirSizeInCharacters)
{
    EXPECT_EQ(put(field(FieldType::Text, 3), ValueView::text("äöü")), "äöü");
    EXPECT_EQ(put(field(FieldType::Text, 3), ValueView::text("abcd")), "3163");
    EXPECT_EQ(put(field(FieldType::Text, 3), ValueView::text("a😀")), "a😀");
    EXPECT_EQ(put(field(FieldType::Text, 3), ValueView::text("ab😀")), "3163");
    EXPECT_EQ(put(field(FieldType::Memo), ValueView::text(std::string(300, 'x'))),
              std::string(300, 'x'));
    EXPECT_EQ(put(field(FieldType::Text, 5), ValueView::real(12.5)), "12.5");
    EXPECT_EQ(put(field(FieldType::Text, 3), ValueView::real(12.25)), "3163");
}

TEST(Coercion, datesComeFromTextsAndNumbersWithinTheCalendar)
{
    EXPECT_EQ(put(field(FieldType::Date), ValueView::text("2004-03-15")), "3/15/2004");
    EXPECT_EQ(put(field(FieldType::Date), ValueView::text("3/15/2004 1:00 PM")),
              "3/15/2004 1:00:00 PM");
    EXPECT_EQ(put(field(FieldType::Date), ValueView::integer(2)), "1/1/1900");
    EXPECT_EQ(put(field(FieldType::Date), ValueView::text("soon")), "3421");
    EXPECT_EQ(put(field(FieldType::Date), ValueView::real(2958466)), "3421");
    EXPECT_EQ(put(field(FieldType::Date), ValueView::real(-657435)), "3421");
    EXPECT_EQ(
        put(field(FieldType::Date), ValueView::real(std::numeric_limits<double>::quiet_NaN())),
        "3421");
}

TEST(Coercion, booleansComeFromWordsAndNumbers)
{
    EXPECT_EQ(put(field(FieldType::Boolean), ValueView::text("yes")), "True");
    EXPECT_EQ(put(field(FieldType::Boolean), ValueView::text("FALSE")), "False");
    EXPECT_EQ(put(field(FieldType::Boolean), ValueView::integer(-1)), "True");
    EXPECT_EQ(put(field(FieldType::Boolean), ValueView::real(0)), "False");
    EXPECT_EQ(put(field(FieldType::Boolean), ValueView::text("maybe")), "3421");
}

TEST(Coercion, guidsAreBroughtToOneForm)
{
    EXPECT_EQ(put(field(FieldType::Guid), ValueView::text("0a1b2c3d-0000-1111-2222-333344445555")),
              "{0A1B2C3D-0000-1111-2222-333344445555}");
    EXPECT_EQ(put(field(FieldType::Guid), ValueView::text("{short}")), "3421");
}

TEST(Coercion, bytesAreNothingElse)
{
    const std::uint8_t three[] = {1, 2, 3};
    EXPECT_EQ(put(field(FieldType::Binary, 3), ValueView::bytes(three)), "010203");
    EXPECT_EQ(put(field(FieldType::Binary, 2), ValueView::bytes(three)), "3163");
    EXPECT_EQ(put(field(FieldType::LongBinary), ValueView::text("x")), "3421");
    EXPECT_EQ(put(field(FieldType::Long), ValueView::bytes(three)), "3421");
}

TEST(Coercion, nullFitsEveryField)
{
    EXPECT_EQ(put(field(FieldType::Long), ValueView::null()), "Null");
    EXPECT_EQ(put(field(FieldType::Text, 1), ValueView::null()), "Null");
}

TEST(Coercion, aKeyBeyondTheBoundsIsLeftToFindNothing)
{
    std::string scratch;
    EXPECT_EQ(shown(coerceKey(field(FieldType::Byte), ValueView::integer(300), scratch)), "300");
    EXPECT_EQ(shown(coerceKey(field(FieldType::Text, 2), ValueView::text("long"), scratch)),
              "long");
    EXPECT_EQ(errorOf([&] { coerceKey(field(FieldType::Byte), ValueView::text("x"), scratch); }),
              3421);
}

TEST(Defaults, areTakenWhenTheyArePlainConstants)
{
    FieldDef number = field(FieldType::Long);
    number.defaultValue = "=0";
    EXPECT_EQ(shown(defaultOf(number).view()), "0");
    FieldDef text = field(FieldType::Text, 20);
    text.defaultValue = "\"say \"\"hi\"\"\"";
    EXPECT_EQ(shown(defaultOf(text).view()), "say \"hi\"");
    text.defaultValue = "Date()";
    EXPECT_TRUE(defaultOf(text).isNull());
    number.defaultValue = "\"many\"";
    EXPECT_TRUE(defaultOf(number).isNull());
    FieldDef flag = field(FieldType::Boolean);
    flag.defaultValue = "Yes";
    EXPECT_EQ(shown(defaultOf(flag).view()), "True");
}

}  // namespace
}  // namespace velnor::model
