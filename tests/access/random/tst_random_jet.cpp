// Random operations on tables of Access files.
#include <gtest/gtest.h>

#include "access/formats/jet/jet_driver.h"
#include "tests/access/random/random_format.h"

namespace velnor::testing {
namespace {

const jet::JetDriver kDriver;

FieldDef field(std::string name, FieldType type, int size = 0)
{
    FieldDef def;
    def.name = std::move(name);
    def.type = type;
    def.size = size;
    return def;
}

IndexDef index(std::string name, std::vector<IndexFieldDef> fields)
{
    IndexDef def;
    def.name = std::move(name);
    def.fields = std::move(fields);
    return def;
}

RandomFormat tableOf(const std::string& name, int version)
{
    RandomFormat format;
    format.name = name;
    format.driver = &kDriver;
    format.creates = true;
    format.create.name = "C:\\TEST.MDB";
    format.create.locale = ";LANGID=0x0409;CP=1252;COUNTRY=0";
    format.create.options = version;
    format.open.name = "C:\\TEST.MDB";
    format.open.readOnly = false;
    format.start.name = "T";
    format.start.fields = {field("ID", FieldType::Long),         field("NAME", FieldType::Text, 30),
                           field("AMOUNT", FieldType::Currency), field("RATIO", FieldType::Double),
                           field("DAY", FieldType::Date),        field("FLAG", FieldType::Boolean),
                           field("NOTE", FieldType::Memo),       field("PART", FieldType::Guid)};
    IndexDef key = index("PrimaryKey", {{"ID"}});
    key.primary = key.unique = key.required = true;
    format.start.fields[0].required = true;
    format.start.indexes = {key, index("BYNAME", {{"NAME"}, {"DAY", true}}),
                            index("BYRATIO", {{"RATIO", true}})};
    format.keyIndex = "PrimaryKey";
    format.canBeNull = [](const FieldDef& f) { return f.type != FieldType::Boolean; };
    format.judge = outsideJudge("jet", "C:", "TEST.MDB", "T");
    format.structureEvery = 0;
    return format;
}

TEST(RandomOperations, anAccessTableStaysAsTheModelSays)
{
    runRandomOperations(tableOf("Jet 4", 0));
}

TEST(RandomOperations, anOldAccessTableStaysAsTheModelSays)
{
    RandomFormat format = tableOf("Jet 3", 32);
    runRandomOperations(format);
}

}  // namespace
}  // namespace velnor::testing
