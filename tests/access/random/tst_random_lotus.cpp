// Random operations on a sheet of a Lotus worksheet.
#include <gtest/gtest.h>

#include "access/formats/lotus/lotus_driver.h"
#include "tests/access/random/random_format.h"

namespace velnor::testing {
namespace {

const lotus::LotusDriver kDriver;

FieldDef field(std::string name, FieldType type, int size = 0)
{
    FieldDef def;
    def.name = std::move(name);
    def.type = type;
    def.size = size;
    return def;
}

/// A label holds 511 bytes.
Value valueFor(const FieldDef& def, Random& random)
{
    Value value = randomValue(def, random);
    if (def.type == FieldType::Memo && value.view().asText().size() > 511)
        value.assign(ValueView::text(std::string(value.view().asText().substr(0, 511))));
    return value;
}

TEST(RandomOperations, aWorksheetStaysAsTheModelSays)
{
    RandomFormat format;
    format.name = "WK4";
    format.driver = &kDriver;
    format.creates = true;
    format.create.name = format.open.name = "C:\\T.WK4";
    format.open.readOnly = false;
    format.open.connectWord = "Lotus WK4;";
    format.start.name = "Table one";
    format.start.fields = {field("ID", FieldType::Long),         field("NAME", FieldType::Text, 30),
                           field("AMOUNT", FieldType::Currency), field("DAY", FieldType::Date),
                           field("NOTE", FieldType::Memo),       field("REAL", FieldType::Double)};
    format.removes = false;
    format.emptyTextIsNull = true;
    format.structureEvery = 0;
    format.makeValue = valueFor;
    format.judge = outsideJudge("sheet", "C:", "T.WK4", "Table one");
    runRandomOperations(format);
}

}  // namespace
}  // namespace velnor::testing
