// Random records added to text files, and read in every way.
#include <gtest/gtest.h>

#include "access/formats/text/text_driver.h"
#include "tests/access/random/random_format.h"

namespace velnor::testing {
namespace {

const text::TextDriver kDriver;

FieldDef field(std::string name, FieldType type, int size = 0)
{
    FieldDef def;
    def.name = std::move(name);
    def.type = type;
    def.size = size;
    return def;
}

RandomFormat fileOf(const std::string& name, const std::string& codePage)
{
    RandomFormat format;
    format.name = name;
    format.driver = &kDriver;
    format.open.name = "C:\\";
    format.open.readOnly = false;
    format.open.connectWord = "Text;";
    format.open.codePage = codePage;
    format.start.name = name;
    format.start.fields = {field("ID", FieldType::Long),      field("NAME", FieldType::Text, 30),
                           field("REAL", FieldType::Double),  field("MONEY", FieldType::Currency),
                           field("DAY", FieldType::Date),     field("FLAG", FieldType::Boolean),
                           field("NOTE", FieldType::Memo),    field("SMALL", FieldType::Integer),
                           field("SHORT", FieldType::Single), field("BYTE", FieldType::Byte)};
    format.removes = format.changes = false;
    format.mostRecords = 100000;
    format.structureEvery = 0;
    format.judge = outsideJudge("text", "C:", name, name);
    return format;
}

TEST(RandomOperations, aCommaSeparatedFileStaysAsTheModelSays)
{
    runRandomOperations(fileOf("T.csv", ""));
}

TEST(RandomOperations, aTabSeparatedFileOfAnOlderPageStaysAsTheModelSays)
{
    runRandomOperations(fileOf("T.tab", "850"));
}

}  // namespace
}  // namespace velnor::testing
