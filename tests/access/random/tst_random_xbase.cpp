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

/// Blanks, which stand for Null and for an empty text, come first.
int byBytes(const FieldDef& field, ValueView a, ValueView b)
{
    if (field.type == FieldType::Text && a.isNull())
        a = ValueView::text("");
    if (field.type == FieldType::Text && b.isNull())
        b = ValueView::text("");
    if (a.kind() == ValueKind::Text && b.kind() == ValueKind::Text)
        return a.asText() < b.asText() ? -1 : a.asText() > b.asText();
    return compareValues(a, b);
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
    format.start.fields = {number("ID", 8, 0),
                           field("NAME", FieldType::Text, 30),
                           number("AMOUNT", 12, 2),
                           field("DAY", FieldType::Date),
                           field("FLAG", FieldType::Boolean),
                           field("NOTE", FieldType::Memo)};
    format.start.indexes = {index("ID", {{"ID"}}), index("BYNAME", {{"NAME"}}),
                            index("BYDAY", {{"DAY"}})};
    format.emptyTextIsNull = true;
    format.canBeNull = [](const FieldDef& f) {
        return f.type == FieldType::Memo || f.type == FieldType::Text;
    };
    format.compare = byBytes;
    format.judge = outsideJudge("xbase", "C:", "T.DBF", "T");
    format.structureEvery = 0;
    return format;
}

TEST(RandomOperations, aFoxProTableStaysAsTheModelSays)
{
    runRandomOperations(tableOf("FoxPro", "FoxPro 2.6;"));
}

TEST(RandomOperations, aDBaseTableStaysAsTheModelSays)
{
    runRandomOperations(tableOf("dBASE 5", "dBASE 5.0;"));
}

}  // namespace
}  // namespace velnor::testing
