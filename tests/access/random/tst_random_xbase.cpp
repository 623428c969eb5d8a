// Random operations on tables of dBASE and FoxPro.
#include <gtest/gtest.h>

#include <algorithm>

#include "access/formats/xbase/xbase_driver.h"
#include "tests/access/random/random_format.h"

namespace velnor::testing {
namespace {

const xbase::XbaseDriver kDriver;

FieldDef field(std::string name, FieldType type, int size = 0)
{
    FieldDef def;
    def.name = std::move(name);
    def.type = type;
    def.size = size;
    return def;
}

FieldDef number(std::string name, int precision, int scale)
{
    FieldDef def = field(std::move(name), FieldType::Decimal);
    def.precision = static_cast<std::uint8_t>(precision);
    def.scale = static_cast<std::uint8_t>(scale);
    return def;
}

IndexDef index(std::string name, std::vector<IndexFieldDef> fields)
{
    IndexDef def;
    def.name = std::move(name);
    def.fields = std::move(fields);
    return def;
}

/// Where the keys of a kind put Null.
struct NullOrder {
    bool flags = false;     ///< numbers have a flag for Null, which comes first
    bool lateDays = false;  ///< no day comes last
};

bool holdsNumber(const FieldDef& field)
{
    const ValueKind kind = valueKindOf(field.type);
    return kind == ValueKind::Decimal || kind == ValueKind::Integer || kind == ValueKind::Real ||
           kind == ValueKind::Currency;
}

/// Bytes decide. A blank text is empty, and comes first; a blank number counts as zero.
int byBytes(NullOrder nulls, const FieldDef& field, ValueView a, ValueView b)
{
    if (field.type == FieldType::Date && a.isNull() != b.isNull() && nulls.lateDays)
        return a.isNull() ? 1 : -1;
    const bool asZero = field.type == FieldType::Decimal || (holdsNumber(field) && !nulls.flags);
    const ValueView blank = asZero ? ValueView::integer(0) : ValueView::null();
    const bool text = field.type == FieldType::Text;
    a = a.isNull() ? (text ? ValueView::text("") : blank) : a;
    b = b.isNull() ? (text ? ValueView::text("") : blank) : b;
    if (a.kind() == ValueKind::Text && b.kind() == ValueKind::Text)
        return a.asText() < b.asText() ? -1 : a.asText() > b.asText();
    return compareValues(a, b);
}

IndexDef falling(std::string name, const std::string& field)
{
    return index(std::move(name), {{field, true}});
}

IndexDef unique(IndexDef def)
{
    def.unique = true;
    return def;
}

std::vector<FieldDef> startFields(const std::string& word)
{
    std::vector<FieldDef> fields{number("ID", 8, 0),
                                 field("NAME", FieldType::Text, 30),
                                 number("AMOUNT", 12, 2),
                                 field("DAY", FieldType::Date),
                                 field("FLAG", FieldType::Boolean),
                                 field("NOTE", FieldType::Memo)};
    if (word == "FoxPro 3.0;")
        fields.insert(fields.end(),
                      {field("LONG", FieldType::Long), field("REAL", FieldType::Double),
                       field("MONEY", FieldType::Currency)});
    return fields;
}

std::vector<FieldDef> moreFields(const std::string& word)
{
    std::vector<FieldDef> fields{field("CITY", FieldType::Text, 12), number("QTY", 6, 0),
                                 field("DUE", FieldType::Date), field("TALE", FieldType::Memo),
                                 field("WIDE", FieldType::Text, 254)};
    if (word == "FoxPro 3.0;")
        fields.insert(fields.end(),
                      {field("WHOLE", FieldType::Long), field("PRICE", FieldType::Currency),
                       field("RATIO", FieldType::Double)});
    return fields;
}

/// dBASE III knows neither falling indexes nor, in ours, days in keys of several fields that are
/// Null.
std::vector<IndexDef> moreIndexes(const std::string& word)
{
    std::vector<IndexDef> indexes{index("PAIR", {{"NAME"}, {"CITY"}}),
                                  index("BYAMOUNT", {{"AMOUNT"}}), unique(index("ONCE", {{"ID"}})),
                                  index("BYCITY", {{"CITY"}}), index("BYQTY", {{"QTY"}})};
    if (word != "dBASE III;")
        indexes.insert(indexes.end(), {falling("DOWN", "AMOUNT"), falling("ZTOA", "NAME")});
    if (word == "FoxPro 3.0;")
        indexes.insert(indexes.end(), {index("BYLONG", {{"LONG"}}), index("BYMONEY", {{"MONEY"}}),
                                       falling("LONGDOWN", "LONG")});
    return indexes;
}

void packTable(const OpenRequest& open, MemoryFileSystem& files)
{
    OpenRequest from = open;
    from.name = "C:\\T.DBF";
    CreateRequest to;
    to.name = from.name;
    kDriver.compact(files, from, to);
}

RandomFormat tableOf(const std::string& name, const std::string& word)
{
    RandomFormat format;
    format.name = name;
    format.driver = &kDriver;
    format.open.name = "C:\\";
    format.open.readOnly = false;
    format.open.connectWord = word;
    format.start.name = "T";
    format.start.fields = startFields(word);
    format.start.indexes = {index("ID", {{"ID"}}), index("BYNAME", {{"NAME"}}),
                            index("BYDAY", {{"DAY"}})};
    format.moreFields = moreFields(word);
    format.moreIndexes = moreIndexes(word);
    format.emptyTextIsNull = true;
    NullOrder nulls;
    nulls.flags = word == "FoxPro 3.0;";
    nulls.lateDays = word.starts_with("dBASE");
    const bool noDays = word != "dBASE III;";  // the checker has its own mind on them in NDX files
    format.canBeNull = [nulls, noDays](const FieldDef& f) {
        if (f.type == FieldType::Date)
            return noDays;
        return f.type != FieldType::Boolean && (nulls.flags || !holdsNumber(f)) &&
               f.type != FieldType::Decimal;
    };
    format.compare = [nulls](const FieldDef& f, ValueView a, ValueView b) {
        return byBytes(nulls, f, a, b);
    };
    format.judge = outsideJudge("xbase", "C:", "T.DBF", "T");
    format.compactEvery = 700;
    const OpenRequest open = format.open;
    format.compact = [open](MemoryFileSystem& files) { packTable(open, files); };
    return format;
}

TEST(RandomOperations, aFoxProTableStaysAsTheModelSays)
{
    runRandomOperations(tableOf("FoxPro 2.6", "FoxPro 2.6;"));
}

TEST(RandomOperations, aVisualFoxProTableStaysAsTheModelSays)
{
    runRandomOperations(tableOf("FoxPro 3.0", "FoxPro 3.0;"));
}

TEST(RandomOperations, aDBaseTableStaysAsTheModelSays)
{
    runRandomOperations(tableOf("dBASE 5", "dBASE 5.0;"));
}

TEST(RandomOperations, aDBaseFourTableStaysAsTheModelSays)
{
    runRandomOperations(tableOf("dBASE IV", "dBASE IV;"));
}

TEST(RandomOperations, aDBaseThreeTableStaysAsTheModelSays)
{
    runRandomOperations(tableOf("dBASE III", "dBASE III;"));
}

}  // namespace
}  // namespace velnor::testing
