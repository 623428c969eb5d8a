// The formats that the conformance cases run on.
#include <limits>

#include "access/value_text.h"
#include "tests/access/conformance/driver_conformance.h"

namespace velnor::test {
namespace {

std::vector<Value> texts(std::initializer_list<std::string> all)
{
    std::vector<Value> values;
    for (const std::string& text : all)
        values.emplace_back(ValueView::text(text));
    return values;
}

std::vector<Value> integers(std::initializer_list<std::int64_t> all)
{
    std::vector<Value> values;
    for (const std::int64_t i : all)
        values.emplace_back(ValueView::integer(i));
    return values;
}

std::vector<Value> reals(std::initializer_list<double> all)
{
    std::vector<Value> values;
    for (const double d : all)
        values.emplace_back(ValueView::real(d));
    return values;
}

std::vector<Value> dates(std::initializer_list<const char*> all)
{
    std::vector<Value> values;
    for (const char* text : all)
        values.emplace_back(ValueView::date(parseDate(text).value()));
    return values;
}

std::vector<Value> money(std::initializer_list<std::int64_t> all)
{
    std::vector<Value> values;
    for (const std::int64_t units : all)
        values.emplace_back(ValueView::currency(units));
    return values;
}

std::vector<Value> booleans()
{
    std::vector<Value> values;
    values.emplace_back(ValueView::boolean(true));
    values.emplace_back(ValueView::boolean(false));
    return values;
}

std::vector<Value> blocks(std::initializer_list<std::size_t> lengths)
{
    std::vector<Value> values;
    for (const std::size_t length : lengths) {
        std::vector<std::uint8_t> bytes(length);
        for (std::size_t i = 0; i < length; ++i)
            bytes[i] = static_cast<std::uint8_t>(i * 37);
        values.emplace_back(ValueView::bytes(bytes));
    }
    return values;
}

/// The types that every xBase kind keeps, as far as its fields of digits reach. A blank text field
/// reads as an empty text, a blank mark as False.
std::vector<FieldCase> digitFields(int maxText)
{
    const auto longest = static_cast<std::size_t>(maxText);
    return {
        {fieldDef("TEXT", FieldType::Text, maxText), texts({"a", std::string(longest, 'x'), " b"}),
         false},
        {fieldDef("TINY", FieldType::Text, 1), texts({"y", "Z"}), false},
        {fieldDef("BYTE", FieldType::Byte), integers({0, 255, 7})},
        {fieldDef("INTEGER", FieldType::Integer), integers({-32768, 32767, 0})},
        {fieldDef("LONG", FieldType::Long), integers({-2147483647, 2147483647, 0})},
        {fieldDef("DOUBLE", FieldType::Double), reals({-1234567.125, 0, 99999999.5})},
        {fieldDef("CURRENCY", FieldType::Currency), money({-123456789, 1, 90000000000})},
        {fieldDef("FLAG", FieldType::Boolean), booleans(), false},
        {fieldDef("DAY", FieldType::Date), dates({"2004-02-29", "1900-01-01", "9999-12-31"})},
        {fieldDef("NOTE", FieldType::Memo), texts({"short", std::string(70'000, 'm')})},
    };
}

FormatUnderTest xbase(std::string name, std::string connect)
{
    FormatUnderTest format;
    format.name = std::move(name);
    format.connect = std::move(connect);
    format.longestTable = 20;
    format.indexes = format.changesIndexes = format.changesFields = true;
    format.keysBlindToCase = false;
    format.primaryKeys = false;                              // a DBF has unique keys only
    format.fallingIndexes = format.connect != "dBASE III;";  // an NDX has no mark for it
    format.fields = digitFields(254);
    format.texts = {"plain", "two words", "tab\there", "äöüÄÖÜß", "éèêçñ", "!\"#$%&'()*+,-./[]{}~"};
    return format;
}

FormatUnderTest foxPro3()
{
    FormatUnderTest format = xbase("FoxPro3", "FoxPro 3.0;");
    format.fields.push_back({fieldDef("MOMENT", FieldType::TimeStamp),
                             dates({"2004-02-29 23:59:59", "1950-06-01", "2100-01-01 00:00:01"})});
    return format;
}

FormatUnderTest access(std::string name, int options)
{
    FormatUnderTest format;
    format.name = std::move(name);
    format.folder = false;
    format.createOptions = options;
    format.indexes = format.changesIndexes = true;
    format.changesFields = true;
    format.longestField = 64;
    const auto least = std::numeric_limits<std::int64_t>::min();
    const auto most = std::numeric_limits<std::int64_t>::max();
    format.fields = {
        {fieldDef("Text field", FieldType::Text, 255),
         texts({"a", std::string(255, 'x'), " b ", ""})},
        {fieldDef("Boolean", FieldType::Boolean), booleans(), false},
        {fieldDef("Byte", FieldType::Byte), integers({0, 255})},
        {fieldDef("Integer", FieldType::Integer), integers({-32768, 32767})},
        {fieldDef("Long", FieldType::Long), integers({-2147483647 - 1, 2147483647})},
        {fieldDef("Currency", FieldType::Currency), money({least, most, -1})},
        {fieldDef("Single", FieldType::Single), reals({-0.5, 1.5e38, 0})},
        {fieldDef("Double", FieldType::Double), reals({-1.0 / 3, 1.7e308, 5e-324})},
        {fieldDef("Date", FieldType::Date),
         dates({"0100-01-01", "9999-12-31 23:59:59", "1899-12-29 06:00:00", "2004-02-29"})},
        {fieldDef("Binary", FieldType::Binary, 200), blocks({1, 200})},
        {fieldDef("Memo", FieldType::Memo), texts({"short", std::string(70'000, 'm')})},
        {fieldDef("Ole", FieldType::LongBinary), blocks({1, 64, 5000, 200'000})},
        {fieldDef("Guid", FieldType::Guid), texts({"{01234567-89AB-CDEF-0123-456789ABCDEF}"})},
    };
    format.texts = {"plain", "two words", "tab\there", "äöüÄÖÜß", "éèêçñ", "€ „quoted“ …"};
    return format;
}

FormatUnderTest access4()
{
    FormatUnderTest format = access("Access4", 0);
    FieldDef decimal = fieldDef("Decimal", FieldType::Decimal);
    decimal.precision = 18;
    decimal.scale = 4;
    std::vector<Value> values;
    for (const char* text : {"-12345678901234.5678", "0.0001", "99999999999999.9999"})
        values.emplace_back(parseDecimal(text).value());
    format.fields.push_back({decimal, values});
    format.texts.insert(format.texts.end(), {"Ελληνικά", "Русский", "漢字かな", "😀 pair", "a漢b"});
    return format;
}

FormatUnderTest paradox(std::string name, std::string connect)
{
    FormatUnderTest format;
    format.name = std::move(name);
    format.connect = std::move(connect);
    format.indexes = format.changesFields = format.needsKey = true;
    format.cutsNames = false;
    format.longestField = 25;
    format.fields = {
        {fieldDef("Text field", FieldType::Text, 255), texts({"a", std::string(255, 'x'), " b "})},
        {fieldDef("Integer", FieldType::Integer), integers({-32767, 32767, 0})},
        {fieldDef("Long", FieldType::Long), integers({-2147483647, 2147483647, 0})},
        {fieldDef("Currency", FieldType::Currency), money({-123456789, 1, 90000000000})},
        {fieldDef("Double", FieldType::Double), reals({-1.0 / 3, 1.7e308, 5e-324, 0})},
        {fieldDef("Memo", FieldType::Memo), texts({"short", std::string(70'000, 'm')})},
        {fieldDef("Ole", FieldType::LongBinary), blocks({1, 64, 5000, 200'000})},
    };
    format.texts = {"plain", "two words", "tab\there", "äöüÄÖÜß", "éèêçñ", "€ „quoted“ …"};
    return format;
}

FormatUnderTest paradox5(std::string name, std::string connect)
{
    FormatUnderTest format = paradox(std::move(name), std::move(connect));
    FieldDef decimal = fieldDef("Decimal", FieldType::Decimal);
    decimal.precision = 18;
    decimal.scale = 4;
    std::vector<Value> decimals;
    for (const char* digits : {"-12345678901.5678", "0.0001", "99999"})
        decimals.emplace_back(parseDecimal(digits).value());
    format.fields.insert(
        format.fields.end(),
        {{fieldDef("Boolean", FieldType::Boolean), booleans()},
         {fieldDef("Byte", FieldType::Byte), integers({0, 255})},
         {fieldDef("Single", FieldType::Single), reals({-0.5, 1.5e38, 0})},
         {fieldDef("Date", FieldType::Date),
          dates({"0100-01-01", "9999-12-31 23:59:59", "1899-12-29 06:00:00", "2004-02-29"})},
         {fieldDef("Time", FieldType::Time), dates({"00:00:01", "23:59:59"})},
         {fieldDef("Binary", FieldType::Binary, 200), blocks({200})},
         {decimal, decimals}});
    return format;
}

FormatUnderTest paradox7()
{
    FormatUnderTest format = paradox5("Paradox7", "Paradox 7.x;");
    format.changesIndexes = true;
    return format;
}

FormatUnderTest paradox4()
{
    FormatUnderTest format = paradox("Paradox4", "Paradox 4.x;");
    format.fields.push_back(
        {fieldDef("Day", FieldType::Date), dates({"0100-01-01", "9999-12-31", "2004-02-29"})});
    return format;
}

FormatUnderTest text()
{
    FormatUnderTest format;
    format.name = "Text";
    format.connect = "Text;";
    format.edits = format.deletes = false;
    format.tableMark = ".txt";
    format.longestTable = 60;
    format.longestField = 64;
    FieldDef decimal = fieldDef("Decimal", FieldType::Decimal);
    decimal.precision = 28;
    std::vector<Value> decimals;
    for (const char* digits : {"-12345678901234.5678", "0.0001", "79228162514264337593543950335"})
        decimals.emplace_back(parseDecimal(digits).value());
    format.fields = {
        {fieldDef("Text field", FieldType::Text, 255),
         texts({"a", std::string(255, 'x'), " b ", "", "007", "1.50", "a,b", "\"", "l1\r\nl2"})},
        {fieldDef("Boolean", FieldType::Boolean), booleans()},
        {fieldDef("Byte", FieldType::Byte), integers({0, 255})},
        {fieldDef("Integer", FieldType::Integer), integers({-32768, 32767})},
        {fieldDef("Long", FieldType::Long), integers({-2147483647 - 1, 2147483647})},
        {fieldDef("Currency", FieldType::Currency), money({-123456789, 1, 90000000000})},
        {fieldDef("Single", FieldType::Single), reals({-0.5, 1.5e38, 0})},
        {fieldDef("Double", FieldType::Double), reals({-1.0 / 3, 1.7e308, 5e-324})},
        {fieldDef("Date", FieldType::Date),
         dates({"0100-01-01", "9999-12-31 23:59:59", "1899-12-29 06:00:00", "2004-02-29"})},
        {decimal, decimals},
        {fieldDef("Memo", FieldType::Memo), texts({"short", std::string(70'000, 'm')})},
        {fieldDef("Guid", FieldType::Guid), texts({"{01234567-89AB-CDEF-0123-456789ABCDEF}"})},
    };
    format.texts = {"plain",        "two words", "tab\there", "äöüÄÖÜß",
                    "€ „quoted“ …", "Русский",   "漢字かな",  "😀 pair"};
    return format;
}

/// Sheets keep numbers as doubles, and the kind of a column by its cells.
FormatUnderTest lotus()
{
    FormatUnderTest format;
    format.name = "Lotus";
    format.connect = "Lotus WK4;";
    format.folder = false;
    format.deletes = format.blankRecords = false;
    format.longestMemo = 511;
    format.tableMark = ":";
    format.longestTable = 15;
    format.longestField = 64;
    format.fields = {
        {fieldDef("Text field", FieldType::Text, 255), texts({"a", std::string(255, 'x'), " b "})},
        {fieldDef("Long", FieldType::Long), integers({-2147483647 - 1, 2147483647, 0, -16384})},
        {fieldDef("Currency", FieldType::Currency), money({-123456789, 1, 90000000000})},
        {fieldDef("Double", FieldType::Double), reals({-1.0 / 3, 1.7e308, 5e-324, -0.5})},
        {fieldDef("Date", FieldType::Date),
         dates({"1900-01-01", "9999-12-31 23:59:59", "2004-02-29", "1899-12-30 06:00:00"})},
        {fieldDef("Memo", FieldType::Memo), texts({"short", std::string(511, 'm')})},
    };
    format.texts = {"plain",   "two words", "tab\there", "äöüÄÖÜß", "€ „quoted“ …",
                    "Русский", "Ελληνικά",  "漢字かな",  "😀 pair",  "l1\r\nl2"};
    return format;
}

FormatUnderTest excel(std::string name, std::string connect, int longestText)
{
    FormatUnderTest format;
    format.name = std::move(name);
    format.connect = std::move(connect);
    format.folder = false;
    format.deletes = format.blankRecords = false;
    format.longestMemo = static_cast<std::size_t>(longestText);
    format.tableMark = "$";
    format.longestTable = 31;
    format.longestField = 64;
    format.fields = {
        {fieldDef("Text field", FieldType::Text, 255), texts({"a", std::string(255, 'x'), " b "})},
        {fieldDef("Long", FieldType::Long), integers({-2147483647 - 1, 2147483647, 0, -536870912})},
        {fieldDef("Currency", FieldType::Currency), money({-123456789, 1, 90000000000})},
        {fieldDef("Double", FieldType::Double), reals({-1.0 / 3, 1.7e308, 5e-324, -0.5})},
        {fieldDef("Boolean", FieldType::Boolean), booleans()},
        {fieldDef("Date", FieldType::Date),
         dates({"1900-01-01", "9999-12-31 23:59:59", "2004-02-29", "1899-12-30 06:00:00"})},
        {fieldDef("Memo", FieldType::Memo), texts({"short", std::string(format.longestMemo, 'm')})},
    };
    format.texts = {"plain", "two words", "tab\there", "äöüÄÖÜß", "€ „quoted“ …", "l1\r\nl2"};
    return format;
}

FormatUnderTest excel8()
{
    FormatUnderTest format = excel("Excel8", "Excel 8.0;", 32767);
    format.texts.insert(format.texts.end(), {"Русский", "Ελληνικά", "漢字かな", "😀 pair"});
    return format;
}

std::string nameOf(const ::testing::TestParamInfo<FormatUnderTest>& info)
{
    return info.param.name;
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Xbase, DriverConformance,
                         ::testing::Values(xbase("DBase5", "dBASE 5.0;"),
                                           xbase("DBase3", "dBASE III;"),
                                           xbase("FoxPro26", "FoxPro 2.6;"), foxPro3()),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(Access, DriverConformance,
                         ::testing::Values(access4(), access("Access3", 32)), nameOf);

INSTANTIATE_TEST_SUITE_P(Paradox, DriverConformance,
                         ::testing::Values(paradox5("Paradox5", "Paradox 5.x;"), paradox7(),
                                           paradox4()),
                         nameOf);

INSTANTIATE_TEST_SUITE_P(Text, DriverConformance, ::testing::Values(text()), nameOf);
INSTANTIATE_TEST_SUITE_P(Excel, DriverConformance,
                         ::testing::Values(excel8(), excel("Excel5", "Excel 5.0;", 255)), nameOf);
INSTANTIATE_TEST_SUITE_P(Lotus, DriverConformance, ::testing::Values(lotus()), nameOf);

}  // namespace velnor::test
