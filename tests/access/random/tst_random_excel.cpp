// Random operations on a sheet of an Excel workbook, in both versions that are written.
#include <gtest/gtest.h>

#include "access/formats/excel/excel_driver.h"
#include "tests/access/random/random_format.h"

namespace velnor::testing {
namespace {

const excel::ExcelDriver kDriver;

FieldDef field(std::string name, FieldType type, int size = 0)
{
    FieldDef def;
    def.name = std::move(name);
    def.type = type;
    def.size = size;
    return def;
}

/// A text holds at most `most` bytes.
std::function<Value(const FieldDef&, Random&)> textsUpTo(std::size_t most)
{
    return [most](const FieldDef& def, Random& random) {
        Value value = randomValue(def, random);
        if (def.type == FieldType::Memo && value.view().asText().size() > most)
            value.assign(ValueView::text(std::string(value.view().asText().substr(0, most))));
        return value;
    };
}

RandomFormat workbook(const char* word, std::size_t longestText)
{
    RandomFormat format;
    format.name = word;
    format.driver = &kDriver;
    format.creates = true;
    format.create.name = format.open.name = "C:\\T.XLS";
    format.create.connectWord = format.open.connectWord = word;
    format.open.readOnly = false;
    format.start.name = "Table one";
    format.start.fields = {field("ID", FieldType::Long),         field("NAME", FieldType::Text, 30),
                           field("AMOUNT", FieldType::Currency), field("DAY", FieldType::Date),
                           field("NOTE", FieldType::Memo),       field("REAL", FieldType::Double),
                           field("FLAG", FieldType::Boolean)};
    format.removes = false;
    format.emptyTextIsNull = true;
    format.structureEvery = 0;
    format.makeValue = textsUpTo(longestText);
    format.judge = outsideJudge("sheet", "C:", "T.XLS", "Table one$");
    return format;
}

TEST(RandomOperations, aWorkbookStaysAsTheModelSays)
{
    runRandomOperations(workbook("Excel 8.0;", 32767));
}

TEST(RandomOperations, anOlderWorkbookStaysAsTheModelSays)
{
    runRandomOperations(workbook("Excel 5.0;", 255));
}

}  // namespace
}  // namespace velnor::testing
