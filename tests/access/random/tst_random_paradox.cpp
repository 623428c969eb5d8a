// Random operations on Paradox tables.
#include <gtest/gtest.h>

#include <algorithm>

#include "access/formats/paradox/cipher.h"
#include "access/formats/paradox/paradox_driver.h"
#include "access/storage/byte_reader.h"
#include "platform/paths.h"
#include "tests/access/random/random_format.h"

namespace velnor::testing {
namespace {

const paradox::ParadoxDriver kDriver;

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

IndexDef unique(IndexDef def)
{
    def.unique = true;
    return def;
}

FieldDef decimal(std::string name, int precision, int scale)
{
    FieldDef def = field(std::move(name), FieldType::Decimal);
    def.precision = static_cast<std::uint8_t>(precision);
    def.scale = static_cast<std::uint8_t>(scale);
    return def;
}

/// Bytes have no length of their own: they come back filled up with zeros.
Value readBack(const FieldDef& f, const Value& written)
{
    if (f.type != FieldType::Binary || written.isNull())
        return written;
    const auto bytes = written.view().asBytes();
    std::vector<std::uint8_t> whole(bytes.begin(), bytes.end());
    whole.resize(static_cast<std::size_t>(f.size));
    const bool zeros = std::all_of(whole.begin(), whole.end(), [](int b) { return b == 0; });
    return zeros ? Value() : Value(ValueView::bytes(whole));
}

struct Kind {
    const char* word;
    bool five;   ///< has the types of level 5
    bool seven;  ///< has unique and falling indexes
};
constexpr Kind kLevel4{"Paradox 4.x;", false, false}, kLevel5{"Paradox 5.x;", true, false},
    kLevel7{"Paradox 7.x;", true, true};

RandomFormat plainTable(const std::string& name, const Kind& kind)
{
    RandomFormat format;
    format.name = name;
    format.driver = &kDriver;
    format.open.name = "C:\\";
    format.open.readOnly = false;
    format.open.connectWord = kind.word;
    format.start.name = "T";
    format.start.fields = {
        field("ID", FieldType::Long),           field("NAME", FieldType::Text, 30),
        field("AMOUNT", FieldType::Currency),   field("RATIO", FieldType::Double),
        field("DAY", FieldType::Date),          field("NOTE", FieldType::Memo),
        field("PICTURE", FieldType::LongBinary)};
    if (kind.five)
        format.start.fields.push_back(field("FLAG", FieldType::Boolean));
    format.start.fields[0].required = true;
    format.emptyTextIsNull = true;
    format.nullsInUnique = false;
    format.readBack = readBack;
    format.judge = outsideJudge("paradox", "C:", "T.DB", "T");
    return format;
}

/// `keyFields`: the primary key is on so many of the first ones.
RandomFormat keyedTable(const std::string& name, const Kind& kind, std::size_t keyFields = 1)
{
    RandomFormat format = plainTable(name, kind);
    IndexDef key = index("T#PX", {});
    key.primary = key.unique = key.required = true;
    for (std::size_t i = 0; i < keyFields; ++i)
        key.fields.push_back({format.start.fields[i].name, false});
    format.start.indexes = {key, index("BYNAME", {{"NAME"}, {"DAY"}}),
                            index("AMOUNT", {{"AMOUNT"}})};
    format.moreFields = {field("CITY", FieldType::Text, 120), field("MORE", FieldType::Memo),
                         field("SMALL", FieldType::Integer), field("WEIGHT", FieldType::Single)};
    format.moreIndexes = {index("BYCITY", {{"CITY"}}), index("SMALL", {{"SMALL"}}),
                          index("BYDAY", {{"DAY"}, {"RATIO"}, {"ID"}})};
    if (kind.five) {
        format.moreFields.insert(format.moreFields.end(),
                                 {field("PIECES", FieldType::Long), decimal("EXACT", 12, 2),
                                  field("BITS", FieldType::Binary, 40),
                                  field("MOMENT", FieldType::TimeStamp)});
        format.moreIndexes.insert(format.moreIndexes.end(),
                                  {index("PIECES", {{"PIECES"}}), index("EXACT", {{"EXACT"}}),
                                   index("BITS", {{"BITS"}})});
    }
    if (kind.seven)
        format.moreIndexes.insert(
            format.moreIndexes.end(),
            {index("DOWN", {{"AMOUNT", true}}), index("ZTOA", {{"NAME", true}, {"SMALL", true}}),
             unique(index("ONCE", {{"RATIO"}})), unique(index("ONENAME", {{"NAME"}}))});
    return format;
}

/// Gives the files of an empty table a password: there are no blocks yet that would be enciphered.
void protect(MemoryFileSystem& files, const std::string& password)
{
    const std::uint32_t key = paradox::keyOfPassword(password);
    for (const FileInfo& file : files.list("C:\\")) {
        const std::string path = "C:\\" + file.name, extension(paths::extension(file.name));
        std::vector<std::uint8_t> bytes = files.content(path);
        if (extension == "MB")
            paradox::encipherLongValues(bytes, key);
        else if (extension == "DB" || extension[0] == 'X')
            storeLE(&bytes[0x5C], key);
        if (extension == "DB" || extension[0] == 'X')
            bytes[0x3E] = bytes[0x3F] = 0;
        files.put(path, bytes);
    }
}

/// Records are added, and never changed.
RandomFormat tableWithoutKey(const std::string& name, const Kind& kind)
{
    RandomFormat format = plainTable(name, kind);
    format.removes = format.changes = false;
    format.mostRecords = 2000;
    format.renews = true;
    format.moreFields = {field("CITY", FieldType::Text, 120), field("MORE", FieldType::Memo)};
    return format;
}

/// Without an MB file, so that a second reader that is not ours can look, too.
RandomFormat shortTable(RandomFormat format)
{
    for (std::vector<FieldDef>* fields : {&format.start.fields, &format.moreFields})
        std::erase_if(*fields, [](const FieldDef& f) {
            return f.type == FieldType::Memo || f.type == FieldType::LongBinary;
        });
    return format;
}

TEST(RandomOperations, aParadoxTableWithoutLongValuesStaysAsTheModelSays)
{
    for (const Kind& kind : {kLevel4, kLevel5, kLevel7})
        runRandomOperations(shortTable(keyedTable(std::string("short, ") + kind.word, kind)), 1000);
}

TEST(RandomOperations, aParadoxTableStaysAsTheModelSays)
{
    RandomFormat format = keyedTable("Paradox 5", kLevel5);
    format.keyIndex = "T#PX";
    runRandomOperations(format);
}

TEST(RandomOperations, aParadoxTableWithAPasswordStaysAsTheModelSays)
{
    for (const Kind& kind : {kLevel4, kLevel7}) {
        RandomFormat format = keyedTable(std::string("password, ") + kind.word, kind);
        format.open.password = "Secret 7";
        format.prepare = [](MemoryFileSystem& files) { protect(files, "Secret 7"); };
        runRandomOperations(format, 1000);
    }
}

TEST(RandomOperations, aParadoxSevenTableStaysAsTheModelSays)
{
    runRandomOperations(keyedTable("Paradox 7", kLevel7));
}

TEST(RandomOperations, aParadoxFourTableStaysAsTheModelSays)
{
    runRandomOperations(keyedTable("Paradox 4", kLevel4));
}

/// Few entries fit into a block of the primary index: its tree gets several levels.
TEST(RandomOperations, aParadoxTableWithALongKeyStaysAsTheModelSays)
{
    RandomFormat format = keyedTable("Paradox 5, long key", kLevel5, 2);
    format.start.fields[1].size = 220;
    format.start.fields[1].required = true;
    format.mostRecords = 1500;
    // Keys and the indexes named for their only field are compared with case, the others blind to
    // it: here only the former.
    format.start.indexes.erase(format.start.indexes.begin() + 1);
    format.moreIndexes = {index("NAME", {{"NAME"}}), index("CITY", {{"CITY"}}),
                          index("SMALL", {{"SMALL"}})};
    format.compare = [](const FieldDef&, ValueView a, ValueView b) {
        if (a.kind() != ValueKind::Text || b.kind() != ValueKind::Text)
            return compareValues(a, b);
        return a.asText() < b.asText() ? -1 : a.asText() > b.asText() ? 1 : 0;
    };
    runRandomOperations(format);
}

TEST(RandomOperations, aParadoxTableWithoutAKeyStaysAsTheModelSays)
{
    for (const Kind& kind : {kLevel4, kLevel5, kLevel7})
        runRandomOperations(tableWithoutKey(std::string("no key, ") + kind.word, kind), 1000);
}

TEST(RandomOperations, aParadoxTableWithoutAKeyOrLongValuesStaysAsTheModelSays)
{
    for (const Kind& kind : {kLevel4, kLevel5, kLevel7}) {
        const std::string name = std::string("no key, short, ") + kind.word;
        runRandomOperations(shortTable(tableWithoutKey(name, kind)), 1000);
    }
}

}  // namespace
}  // namespace velnor::testing
