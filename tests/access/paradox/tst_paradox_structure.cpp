// Changes of fields and indexes: what stays, what is refused, what a crash leaves.
#include "access/storage/byte_reader.h"
#include "tests/access/paradox/paradox_testing.h"
#include "tests/support/faulty_disk.h"

using namespace velnor;
using namespace velnor::testing;
using namespace velnor::paradox_testing;

namespace {

void makeTable(FileSystem& files, bool keyed = true, std::string_view word = "Paradox 5.x;")
{
    const auto store = openStore(files, word);
    TableLayout layout =
        layoutOf({fieldDef("ID", FieldType::Long), fieldDef("A", FieldType::Text, 10),
                  fieldDef("M", FieldType::Memo), fieldDef("N", FieldType::Memo)});
    if (keyed)
        layout.indexes = {primaryDef({"ID"}), indexDef("A", {"A"})};
    store->createTable(layout);
    const auto writer = store->writer("T");
    for (int i = 1; i <= 50; ++i) {
        const std::string name = "n" + std::to_string(i),
                          note(static_cast<std::size_t>(i * 60), 'm');
        writer->insert(std::array{whole(i * 7 % 51), text(name), text(note),
                                  i % 2 ? text(std::string(300, 'n')) : ValueView()});
    }
    store->commit();
}

std::uint16_t wordAt(const Bytes& bytes, std::size_t at)
{
    return loadLE<std::uint16_t>(&bytes.at(at));
}

/// The permanent ids of a table's fields.
std::vector<int> idsOf(MemoryFileSystem& files)
{
    const Bytes bytes = files.content("C:\\T.DB");
    std::vector<int> ids;
    for (int i = 0; i < wordAt(bytes, 0x21); ++i)
        ids.push_back(wordAt(bytes, 0x58u + wordAt(bytes, 0x66) + 2u * static_cast<unsigned>(i)));
    return ids;
}

}  // namespace

TEST(ParadoxStructure, aNewFieldIsNullInEveryRecordAndKeepsTheOthers)
{
    MemoryFileSystem files;
    makeTable(files);
    const auto store = openStore(files);
    const Rows before = rowsOf(*store);
    const Bytes mb = files.content("C:\\T.MB");
    store->addField("T", fieldDef("B", FieldType::Double));
    const Rows after = rowsOf(*store);
    ASSERT_EQ(after.size(), before.size());
    for (std::size_t i = 0; i < after.size(); ++i)
        EXPECT_EQ(after[i], before[i] + " -");
    EXPECT_EQ(files.content("C:\\T.MB"), mb);  // long values keep their places
    EXPECT_EQ(idsOf(files), (std::vector<int>{1, 2, 3, 4, 5}));
    EXPECT_EQ(rowsOf(*store, "A").size(), 50u);
    EXPECT_EQ(faultsOf(*store), Rows{});
    EXPECT_FALSE(files.info("C:\\T.DB-new"));
}

TEST(ParadoxStructure, fieldIdsStayAndAreNeverUsedAgain)
{
    MemoryFileSystem files;
    makeTable(files);
    const auto store = openStore(files);
    store->dropField("T", "N");
    store->addField("T", fieldDef("X", FieldType::Long));
    EXPECT_EQ(idsOf(files), (std::vector<int>{1, 2, 3, 5}));
    const int stamp = files.content("C:\\T.DB")[0x2E];
    EXPECT_EQ(files.content("C:\\T.X02")[0x2E], stamp);
    EXPECT_EQ(faultsOf(*store), Rows{});
}

TEST(ParadoxStructure, theValuesOfAFieldThatGoesAreFreed)
{
    MemoryFileSystem files;
    makeTable(files);
    const auto store = openStore(files);
    store->dropField("T", "M");
    EXPECT_EQ(faultsOf(*store), Rows{});  // no value without a record
    const auto cursor = store->cursor("T", std::nullopt);
    int long_ = 0;
    for (bool on = cursor->first(); on; on = cursor->next())
        long_ += !cursor->field(2).isNull() && cursor->field(2).asText() == std::string(300, 'n');
    EXPECT_EQ(long_, 25);
}

TEST(ParadoxStructure, theFileOfLongValuesGoesWithTheLastFieldOfThem)
{
    MemoryFileSystem files;
    makeTable(files);
    const auto store = openStore(files);
    const auto before = files.content("C:\\T.MB").size();
    store->dropField("T", "M");
    EXPECT_LT(files.content("C:\\T.MB").size(), before);
    store->dropField("T", "N");
    EXPECT_FALSE(files.fileExists("C:\\T.MB"));
    EXPECT_EQ(faultsOf(*store), Rows{});
    store->addField("T", fieldDef("P", FieldType::Memo));
    EXPECT_TRUE(files.fileExists("C:\\T.MB"));
    EXPECT_EQ(faultsOf(*store), Rows{});
}

TEST(ParadoxStructure, aFieldThatMustStayKeepsItsLongValues)
{
    MemoryFileSystem files;
    makeTable(files);
    const Rows before = rowsOf(*openStore(files));
    Bytes rules(0x35 + 6, 0);  // no checks, but a rule that ties the table to another one
    rules[0] = files.content("C:\\T.DB")[0x2E];
    rules[1] = 0x0B;
    rules[9] = 0x35;
    rules[0x0D] = 1;
    files.put("C:\\T.VAL", rules);
    const Bytes mb = files.content("C:\\T.MB");
    const auto store = openStore(files);
    EXPECT_EQ(errorOf([&] { store->dropField("T", "M"); }), 3251);
    EXPECT_EQ(rowsOf(*store), before);
    EXPECT_EQ(files.content("C:\\T.MB"), mb);
    EXPECT_FALSE(files.info("C:\\T.DB-new"));
}

TEST(ParadoxStructure, aDamagedValueKeepsTheFieldsAsTheyAre)
{
    MemoryFileSystem files;
    makeTable(files);
    Bytes mb = files.content("C:\\T.MB");
    std::fill(mb.begin() + 4096, mb.end(), std::uint8_t{0});
    files.put("C:\\T.MB", mb);
    const Bytes table = files.content("C:\\T.DB");
    const auto store = openStore(files);
    EXPECT_EQ(errorOf([&] { store->dropField("T", "M"); }), 3197);
    EXPECT_EQ(store->layout("T").fields.size(), 4u);
    EXPECT_EQ(files.content("C:\\T.MB"), mb);
    EXPECT_FALSE(files.info("C:\\T.DB-new"));
}

TEST(ParadoxStructure, wideFieldsEnlargeTheBlocks)
{
    MemoryFileSystem files;
    makeTable(files);
    const auto store = openStore(files);
    const Rows before = rowsOf(*store);
    for (const char* name : {"W1", "W2", "W3"})
        store->addField("T", fieldDef(name, FieldType::Text, 250));
    EXPECT_EQ(files.content("C:\\T.DB")[5], 4);  // three records of 804 bytes do not fit into 2 KiB
    EXPECT_EQ(rowsOf(*store).size(), before.size());
    EXPECT_EQ(faultsOf(*store), Rows{});
}

TEST(ParadoxStructure, anIndexThatMindsCaseStillDoes)
{
    MemoryFileSystem files;
    {
        const auto store = openStore(files);
        store->createTable(
            layoutOf({fieldDef("ID", FieldType::Long), fieldDef("A", FieldType::Text, 5)},
                     {primaryDef({"ID"}), indexDef("BOTH", {"A", "ID"})}));
    }
    Bytes index = files.content("C:\\T.XG0");
    index.at(0x55) = 0;  // as other programs make it
    files.put("C:\\T.XG0", index);
    const auto store = openStore(files);
    {
        const auto writer = store->writer("T");
        const char* names[] = {"b", "B", "a", "C"};
        for (int i = 0; i < 4; ++i)
            writer->insert(std::array{whole(i), text(names[i])});
        store->commit();
    }
    const Rows rows{"1 'B'", "3 'C'", "2 'a'", "0 'b'"};
    EXPECT_EQ(rowsOf(*store, "BOTH"), rows);
    store->addField("T", fieldDef("X", FieldType::Long));
    store->dropField("T", "X");
    EXPECT_EQ(files.content("C:\\T.XG0").at(0x55), 0);
    EXPECT_EQ(rowsOf(*store, "BOTH"), rows);
    EXPECT_EQ(faultsOf(*store), Rows{});
}

TEST(ParadoxStructure, fieldsOfAnIndexStay)
{
    MemoryFileSystem files;
    makeTable(files);
    const auto store = openStore(files);
    EXPECT_EQ(errorOf([&] { store->dropField("T", "ID"); }), 3018);
    EXPECT_EQ(errorOf([&] { store->dropField("T", "A"); }), 3018);
    EXPECT_EQ(errorOf([&] { store->dropField("T", "Z"); }), 3265);
    store->dropIndex("T", "A");
    store->dropField("T", "A");
    EXPECT_EQ(store->layout("T").fields.size(), 3u);
    EXPECT_EQ(faultsOf(*store), Rows{});
}

TEST(ParadoxStructure, aPrimaryKeySortsTheTable)
{
    MemoryFileSystem files;
    makeTable(files, false);
    const auto store = openStore(files);
    EXPECT_EQ(errorOf([&] { store->addIndex("T", indexDef("A", {"A"})); }), 3018);
    EXPECT_EQ(errorOf([&] { store->addIndex("T", primaryDef({"A"})); }), 3018);  // not the first
    store->addIndex("T", primaryDef({"ID"}));
    Rows rows = rowsOf(*store);
    ASSERT_EQ(rows.size(), 50u);
    EXPECT_EQ(rows[0].substr(0, 2), "1 ");
    EXPECT_EQ(rows[49].substr(0, 3), "50 ");
    EXPECT_EQ(faultsOf(*store), Rows{});
    store->addIndex("T", indexDef("A", {"A"}));
    EXPECT_EQ(errorOf([&] { store->dropIndex("T", "T#PX"); }), 3018);  // the other one needs it
    store->dropIndex("T", "A");
    store->dropIndex("T", "T#PX");
    EXPECT_FALSE(files.fileExists("C:\\T.PX"));
    EXPECT_EQ(rowsOf(*store), rows);
    EXPECT_EQ(faultsOf(*store), Rows{});
}

TEST(ParadoxStructure, aTableIsMadeWithOnePrimaryKey)
{
    MemoryFileSystem files;
    const auto store = openStore(files);
    TableLayout layout =
        layoutOf({fieldDef("ID", FieldType::Long), fieldDef("A", FieldType::Text, 5)},
                 {primaryDef({"ID"}), primaryDef({"ID"}), indexDef("A", {"A"})});
    store->createTable(layout);
    EXPECT_EQ(store->layout("T").indexes.size(), 2u);
    layout.name = "U";
    layout.indexes = {indexDef("A", {"A"})};
    EXPECT_EQ(errorOf([&] { store->createTable(layout); }), 3018);  // no primary key
    layout.indexes = {primaryDef({"A"})};
    EXPECT_EQ(errorOf([&] { store->createTable(layout); }), 3018);  // not on the first field
    EXPECT_FALSE(files.fileExists("C:\\U.DB"));
}

TEST(ParadoxStructure, aPrimaryKeyOverEqualValuesIsRefusedAndChangesNothing)
{
    MemoryFileSystem files;
    const auto store = openStore(files);
    store->createTable(layoutOf({fieldDef("A", FieldType::Text, 5)}));
    {
        const auto writer = store->writer("T");
        for (const char* name : {"b", "a", "b"})
            writer->insert(std::array{text(name)});
        store->commit();
    }
    const Bytes before = files.content("C:\\T.DB");
    EXPECT_EQ(errorOf([&] { store->addIndex("T", primaryDef({"A"})); }), 3022);
    EXPECT_EQ(files.content("C:\\T.DB"), before);
    EXPECT_EQ(rowsOf(*store), (Rows{"'b'", "'a'", "'b'"}));
    EXPECT_FALSE(files.info("C:\\T.DB-new"));
}

TEST(ParadoxStructure, indexesThatTheLevelLacksAreRefused)
{
    MemoryFileSystem files;
    makeTable(files);
    const auto store = openStore(files);
    EXPECT_EQ(errorOf([&] { store->addIndex("T", indexDef("ONE", {"A"}, true)); }), 3018);
    IndexDef down = indexDef("DOWN", {"A"});
    down.fields[0].descending = true;
    EXPECT_EQ(errorOf([&] { store->addIndex("T", down); }), 3018);
    EXPECT_EQ(errorOf([&] { store->addIndex("T", indexDef("M", {"M"})); }), 3018);
    EXPECT_EQ(errorOf([&] { store->addIndex("T", indexDef("a", {"A"})); }), 3367);
    EXPECT_EQ(store->layout("T").indexes.size(), 2u);
    EXPECT_EQ(faultsOf(*store), Rows{});
}

TEST(ParadoxStructure, aUniqueIndexOverEqualValuesLeavesNoFiles)
{
    MemoryFileSystem files;
    const auto store = openStore(files, "Paradox 7.x;");
    store->createTable(
        layoutOf({fieldDef("ID", FieldType::Long), fieldDef("A", FieldType::Text, 5)},
                 {primaryDef({"ID"})}));
    {
        const auto writer = store->writer("T");
        writer->insert(std::array{whole(1), text("x")});
        writer->insert(std::array{whole(2), text("X")});
        store->commit();
    }
    EXPECT_EQ(errorOf([&] { store->addIndex("T", indexDef("ONE", {"A"}, true)); }), 3022);
    EXPECT_FALSE(files.fileExists("C:\\T.XG0"));
    EXPECT_FALSE(files.fileExists("C:\\T.YG0"));
    EXPECT_EQ(rowsOf(*store).size(), 2u);
}

/// Whether a text can be read in a file as it stands.
bool canBeRead(MemoryFileSystem& files, const std::string& path, const std::string& text)
{
    const Bytes bytes = files.content(path);
    return std::string(bytes.begin(), bytes.end()).find(text) != std::string::npos;
}

TEST(ParadoxStructure, aTableWithAPasswordKeepsItThroughChanges)
{
    const auto folder = corpusFolder();
    if (folder.empty())
        GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
    MemoryFileSystem files;
    putFamily(files, folder / "encrypt" / "encrypted.db");  // without long values, without a key
    const Bytes old = files.content("C:\\T.DB");
    auto store = openStore(files, "Paradox 5.x;", false, "123");
    const Rows before = rowsOf(*store);
    store->addField("T", fieldDef("NOTE", FieldType::Memo));
    store->addField("T", fieldDef("WORD", FieldType::Text, 20));
    const auto fields = store->layout("T").fields.size();
    std::vector<ValueView> values(fields);
    values[0] = store->layout("T").fields[0].type == FieldType::Text ? text("key") : whole(9999);
    const std::string memo = "a secret memo " + std::string(3000, 's');
    values[fields - 2] = text(memo);
    values[fields - 1] = text("a secret word");
    store->writer("T")->insert(values);
    store->commit();
    store->addIndex("T", primaryDef({store->layout("T").fields[0].name}));
    store->addIndex("T", indexDef("WORD", {"WORD"}));
    EXPECT_EQ(rowsOf(*store, "WORD").size(), before.size() + 1);
    EXPECT_EQ(faultsOf(*store), Rows{});
    for (const char* file : {"C:\\T.DB", "C:\\T.MB", "C:\\T.X04"})
        EXPECT_FALSE(canBeRead(files, file, "secret")) << file;

    store->dropIndex("T", "WORD");
    store->dropField("T", "NOTE");
    store->dropField("T", "WORD");
    store.reset();
    const Bytes now = files.content("C:\\T.DB");
    EXPECT_EQ(wordAt(now, 0x40), wordAt(old, 0x40));  // what marks the end follows the start
    EXPECT_EQ(wordAt(now, 0x44), wordAt(old, 0x44));
    EXPECT_EQ(errorOf([&] { openStore(files)->layout("T"); }), 3031);
    const auto again = openStore(files, "Paradox 5.x;", true, "123");
    EXPECT_EQ(rowsOf(*again).size(), before.size() + 1);
    EXPECT_EQ(faultsOf(*again), Rows{});
}

TEST(ParadoxStructure, requiredFieldsAndDefaultsAreReadAndKept)
{
    const auto folder = corpusFolder();
    if (folder.empty())
        GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
    MemoryFileSystem files;
    putFamily(files, folder / "fields" / "logical.db");
    const auto store = openStore(files);
    EXPECT_EQ(store->layout("T").fields[0].defaultValue, "True");
    store->addField("T", fieldDef("B", FieldType::Long));
    EXPECT_EQ(store->layout("T").fields[0].defaultValue, "True");
    EXPECT_EQ(faultsOf(*store), Rows{});  // the VAL file names the new field, too
}

TEST(ParadoxStructure, aNewFieldIsThereOrNotAfterAPowerCut)
{
    int old = 0, made = 0;
    for (long n = 1;; n += 2) {
        FaultyDisk disk(static_cast<unsigned>(n));
        makeTable(disk);
        disk.cutAt(n);
        try {
            openStore(disk)->addField("T", fieldDef("B", FieldType::Double));
        } catch (const std::exception&) {
        }
        if (!disk.wasCut())
            break;
        disk.restart();
        const auto store = openStore(disk);
        const std::size_t fields = store->layout("T").fields.size();
        ASSERT_TRUE(fields == 4 || fields == 5);
        (fields == 5 ? made : old) += 1;
        ASSERT_EQ(rowsOf(*store).size(), 50u) << "at change " << n;
        std::vector<ValueView> values(fields);
        values[0] = whole(900);
        store->writer("T")->insert(values);
        store->commit();
        ASSERT_EQ(faultsOf(*store), Rows{}) << "at change " << n;
        ASSERT_EQ(rowsOf(*store, "A").size(), 51u);
    }
    EXPECT_GT(old, 5);
    EXPECT_GT(made, 1);
}

TEST(ParadoxStructure, aNewIndexIsThereWholeOrNotAtAllAfterAPowerCut)
{
    int old = 0, made = 0;
    for (long n = 1;; ++n) {
        FaultyDisk disk(static_cast<unsigned>(n));
        makeTable(disk);
        disk.cutAt(n);
        try {
            openStore(disk)->addIndex("T", indexDef("BOTH", {"A", "ID"}));
        } catch (const std::exception&) {
        }
        if (!disk.wasCut())
            break;
        disk.restart();
        const auto store = openStore(disk, "Paradox 5.x;", true);
        const std::size_t indexes = store->layout("T").indexes.size();
        ASSERT_EQ(faultsOf(*store), Rows{}) << "at change " << n;
        ASSERT_EQ(disk.fileExists("C:\\T.YG0"), indexes == 3) << "at change " << n;
        (indexes == 3 ? made : old) += 1;
        if (indexes == 3) {
            ASSERT_EQ(rowsOf(*store, "BOTH").size(), 50u);
        }
    }
    EXPECT_GT(old, 5);
    EXPECT_GT(made, 0);
}

TEST(ParadoxStructure, aFieldOfLongValuesGoesWholeOrNotAtAllAtAPowerCut)
{
    int old = 0, made = 0;
    for (long n = 1;; n += 2) {
        FaultyDisk disk(static_cast<unsigned>(n));
        makeTable(disk);
        const Rows before = rowsOf(*openStore(disk));
        disk.cutAt(n);
        try {
            openStore(disk)->dropField("T", "M");
        } catch (const std::exception&) {
        }
        if (!disk.wasCut())
            break;
        disk.restart();
        const auto store = openStore(disk);
        const bool gone = store->layout("T").fields.size() == 3;
        (gone ? made : old) += 1;
        const Rows rows = rowsOf(*store);
        ASSERT_EQ(rows.size(), before.size()) << "at change " << n;
        if (!gone) {
            ASSERT_EQ(rows, before) << "at change " << n;
        }
        ASSERT_EQ(faultsOf(*store), Rows{}) << "at change " << n;
    }
    EXPECT_GT(old, 5);
    EXPECT_GT(made, 1);
}
