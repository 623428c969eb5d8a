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

/// Fields and indexes that come and go. Names are hardly ever unique: 3022 is expected then.
void addStructures(RandomFormat& format, int version)
{
    format.moreFields = {field("CITY", FieldType::Text, 120), field("MORE", FieldType::Memo),
                         field("PIECES", FieldType::Long),    field("MARK", FieldType::Boolean),
                         field("WEIGHT", FieldType::Single),  field("SMALL", FieldType::Integer),
                         field("BITS", FieldType::Binary, 40)};
    if (version == 0) {
        format.moreFields.push_back(field("EXACT", FieldType::Decimal));
        format.moreFields.back().precision = 12;
        format.moreFields.back().scale = 2;
    }
    IndexDef unique = index("ONEAMOUNT", {{"AMOUNT"}});
    IndexDef repeated = index("ONENAME", {{"NAME", true}});
    unique.unique = repeated.unique = true;
    IndexDef ignoring = index("PIECESOFCITY", {{"PIECES", true}, {"CITY"}});
    ignoring.ignoreNulls = true;
    format.moreIndexes = {unique,
                          repeated,
                          ignoring,
                          index("BYDAY", {{"DAY"}, {"FLAG"}, {"ID", true}}),
                          index("BYCITY", {{"CITY"}}),
                          index("BYPART", {{"PART", true}}),
                          index("BYWEIGHT", {{"WEIGHT"}, {"SMALL", true}}),
                          index("BYMARK", {{"MARK"}, {"AMOUNT"}})};
}

/// A compacted copy takes the place of the file.
void compactFile(MemoryFileSystem& files)
{
    OpenRequest from;
    from.name = "C:\\TEST.MDB";
    CreateRequest to;
    to.name = "C:\\COPY.MDB";
    to.keepPassword = true;
    kDriver.compact(files, from, to);
    files.rename(to.name, from.name);
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
    format.readBack = [](const FieldDef& f, const Value& written) {
        return written.isNull() && f.type == FieldType::Boolean ? Value(ValueView::boolean(false))
                                                                : written;
    };
    format.compact = compactFile;
    format.compactEvery = 1300;
    format.judge = outsideJudge("jet", "C:", "TEST.MDB", "T");
    addStructures(format, version);
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
