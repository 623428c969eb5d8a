// Fields that come, go and grow; packing. Records, memos and indexes stay what they were.
#include "access/formats/xbase/xbase_store.h"
#include "tests/access/xbase/index_testing.h"

namespace {

using namespace velnor;
using namespace velnor::xbase_testing;

using Rows = std::vector<std::string>;

const char* const kAllWords[] = {"dBASE III;", "dBASE IV;", "dBASE 5.0;", "FoxPro 2.6;",
                                 "FoxPro 3.0;"};

xbase::XbaseStore& own(Store& store)
{
    return dynamic_cast<xbase::XbaseStore&>(store);
}

std::uint8_t versionOf(MemoryFileSystem& files)
{
    return files.content("C:\\T.DBF")[0];
}

/// T: A Text, N number, M Memo; the second of four records is deleted.
void makeTable(MemoryFileSystem& files, std::string_view word, bool memo = true)
{
    const auto store = openStore(files, word);
    std::vector<FieldDef> fields{fieldDef("A", FieldType::Text, 6), numberDef("N", 7, 2)};
    if (memo)
        fields.push_back(fieldDef("M", FieldType::Memo));
    store->createTable(layoutOf("T", fields));
    const auto writer = store->writer("T");
    for (int i = 1; i <= 4; ++i) {
        const std::string name = "a" + std::to_string(i), note = "memo " + std::to_string(i);
        std::vector<ValueView> row{text(name), ValueView::integer(10 * i)};
        if (memo)
            row.push_back(text(note));
        writer->insert(row);
    }
    writer->remove(2);
    store->commit();
}

TEST(TableRewrite, aNewFieldIsNull_andAllElseStays)
{
    for (const char* word : kAllWords) {
        SCOPED_TRACE(word);
        MemoryFileSystem files;
        makeTable(files, word);
        auto store = openStore(files, word);
        store->addField("T", fieldDef("DAY", FieldType::Date));
        const Rows expected{"'a1' 10 'memo 1' -", "'a3' 30 'memo 3' -", "'a4' 40 'memo 4' -"};
        EXPECT_EQ(rowsOf(*store, "T"), expected);
        EXPECT_FALSE(store->cursor("T", std::nullopt)->moveTo(2));  // deleted, and in its place
        EXPECT_TRUE(store->cursor("T", std::nullopt)->moveTo(3));
        const FieldChange change{3, ValueView::date(36526)};
        store->writer("T")->update(3, std::span(&change, 1));
        store->commit();
        store.reset();
        const auto again = openStore(files, word, true);
        EXPECT_EQ(rowsOf(*again, "T")[1], "'a3' 30 'memo 3' 2000-01-01");
        EXPECT_EQ(faultsOf(*again, "T"), Rows{});
        EXPECT_EQ(files.list("C:\\").size(), 2u);  // no sibling is left
    }
}

TEST(TableRewrite, aFieldGoes_andTheOthersKeepTheirValues)
{
    for (const char* word : kAllWords) {
        SCOPED_TRACE(word);
        MemoryFileSystem files;
        makeTable(files, word);
        auto store = openStore(files, word);
        store->dropField("T", "n");
        EXPECT_EQ(rowsOf(*store, "T"), (Rows{"'a1' 'memo 1'", "'a3' 'memo 3'", "'a4' 'memo 4'"}));
        EXPECT_EQ(errorOf([&] { store->dropField("T", "N"); }), 3265);
        store->dropField("T", "A");
        EXPECT_EQ(errorOf([&] { store->dropField("T", "M"); }), 3001);
        store.reset();
        EXPECT_EQ(faultsOf(*openStore(files, word, true), "T"), Rows{});
    }
}

TEST(TableRewrite, theMemoFileComesAndGoesWithItsFields)
{
    const std::map<std::string_view, std::pair<int, const char*>> kinds{
        {"dBASE III;", {0x83, "C:\\T.DBT"}},  {"dBASE IV;", {0x8B, "C:\\T.DBT"}},
        {"dBASE 5.0;", {0x8B, "C:\\T.DBT"}},  {"FoxPro 2.6;", {0xF5, "C:\\T.FPT"}},
        {"FoxPro 3.0;", {0x30, "C:\\T.FPT"}},
    };
    for (const auto& [word, kind] : kinds) {
        SCOPED_TRACE(word);
        MemoryFileSystem files;
        makeTable(files, word, false);
        const std::uint8_t plain = versionOf(files);
        const auto store = openStore(files, word);
        store->addField("T", fieldDef("NOTE", FieldType::Memo));
        EXPECT_EQ(versionOf(files), kind.first);
        ASSERT_TRUE(files.fileExists(kind.second));
        const FieldChange change{2, text("a note")};
        store->writer("T")->update(1, std::span(&change, 1));
        store->commit();
        EXPECT_EQ(rowsOf(*store, "T")[0], "'a1' 10 'a note'");
        EXPECT_EQ(faultsOf(*store, "T"), Rows{});
        store->dropField("T", "NOTE");
        EXPECT_EQ(versionOf(files), plain);
        EXPECT_FALSE(files.fileExists(kind.second));
        EXPECT_EQ(rowsOf(*store, "T")[0], "'a1' 10");
        EXPECT_EQ(files.list("C:\\").size(), 1u);
    }
}

TEST(TableRewrite, indexesAreThereAfterwards_withAllTheyAre)
{
    for (const char* word : {"FoxPro 2.6;", "dBASE 5.0;", "dBASE III;"}) {
        SCOPED_TRACE(word);
        MemoryFileSystem files;
        const bool ndx = std::string_view(word) == "dBASE III;";
        {
            const auto store = openStore(files, word);
            store->createTable(peopleLayout());
            for (int i = 0; i < 300; ++i)
                insertPerson(*store, "P" + std::to_string(i * 37 % 300), i, i % 40);
            store->writer("T")->remove(7);
            if (ndx)
                store->addIndex("T", indexDef("BYNAME", {"NAME"}));
            else
                for (const IndexDef& def : severalIndexes())
                    store->addIndex("T", def);
            IndexDef once = indexDef("ONCE", {"NAME"});
            once.expression = "NAME+CITY";
            once.unique = true;
            store->addIndex("T", once);
            store->commit();
        }
        auto store = openStore(files, word);
        std::map<std::string, Rows> before;
        for (const IndexDef& def : store->layout("T").indexes)
            before[def.name] = namesBy(*store, def.name);
        store->addField("T", fieldDef("MORE", FieldType::Text, 100));
        const auto after = store->layout("T").indexes;
        ASSERT_EQ(after.size(), before.size());
        for (const IndexDef& def : after) {
            EXPECT_EQ(namesBy(*store, def.name), before[def.name]) << def.name;
            EXPECT_EQ(def.unique, def.name == "ONCE") << def.name;
        }
        EXPECT_EQ(errorOf([&] { insertPerson(*store, "P0", 0, 1); }), 3001);  // one field more
        const FieldChange twice{0, text("P37")};
        EXPECT_EQ(errorOf([&] { store->writer("T")->update(5, std::span(&twice, 1)); }), 0);
        const FieldChange same[] = {{0, text("P0")}, {3, text("Ulm")}};
        EXPECT_EQ(errorOf([&] { store->writer("T")->update(5, same); }), 3022);
        store->commit();
        store.reset();
        EXPECT_EQ(faultsOf(*openStore(files, word, true), "T"), Rows{});
    }
}

TEST(TableRewrite, aFieldThatAnIndexNeedsStays)
{
    for (const char* word : {"FoxPro 2.6;", "dBASE 5.0;"}) {
        MemoryFileSystem files;
        const auto store = openStore(files, word);
        store->createTable(peopleLayout());
        for (const IndexDef& def : severalIndexes())
            store->addIndex("T", def);
        for (const char* field : {"NAME", "QTY", "DAY", "CITY"})  // QTY also in a condition
            EXPECT_EQ(errorOf([&] { store->dropField("T", field); }), 3280) << field;
        store->dropIndex("T", "MIXED");
        store->dropField("T", "CITY");
        EXPECT_EQ(store->layout("T").fields.size(), 4u);
        EXPECT_EQ(store->layout("T").indexes.size(), 5u);
    }
}

TEST(TableRewrite, namesAreCutAtTen_andMayNotBeThereTwice)
{
    MemoryFileSystem files;
    makeTable(files, "dBASE 5.0;");
    const auto store = openStore(files, "dBASE 5.0;");
    store->addField("T", fieldDef("CustomerAddress", FieldType::Text, 10));
    EXPECT_EQ(store->layout("T").fields.back().name, "CUSTOMERAD");
    EXPECT_EQ(errorOf([&] { store->addField("T", fieldDef("customerAdvice", FieldType::Date)); }),
              3191);
    EXPECT_EQ(errorOf([&] { store->addField("T", fieldDef("a", FieldType::Date)); }), 3191);
}

TEST(TableRewrite, aTableHasItsLimits)
{
    MemoryFileSystem files;
    const auto store = openStore(files, "dBASE III;");
    std::vector<FieldDef> fields;
    for (int i = 0; i < 127; ++i)
        fields.push_back(fieldDef("F" + std::to_string(i), FieldType::Text, 20));
    store->createTable(layoutOf("T", fields));
    store->addField("T", fieldDef("LAST", FieldType::Text, 20));
    EXPECT_EQ(errorOf([&] { store->addField("T", fieldDef("OVER", FieldType::Text, 1)); }), 3190);
    for (int i = 0; i < 30; ++i)
        store->dropField("T", "F" + std::to_string(i));
    for (int i = 0; i < 8; ++i)
        store->addField("T", fieldDef("W" + std::to_string(i), FieldType::Text, 254));
    EXPECT_EQ(errorOf([&] { store->addField("T", fieldDef("OVER", FieldType::Text, 254)); }), 3047);
    EXPECT_EQ(errorOf([&] { store->addField("T", fieldDef("B", FieldType::LongBinary)); }), 3251);
    EXPECT_EQ(store->layout("T").fields.size(), 106u);
}

TEST(TableRewrite, aFieldOnlyGrows)
{
    MemoryFileSystem files;
    makeTable(files, "dBASE 5.0;");
    const auto store = openStore(files, "dBASE 5.0;");
    own(*store).widenField("T", "A", fieldDef("A", FieldType::Text, 40));
    own(*store).widenField("T", "N", numberDef("N", 12, 4));
    EXPECT_EQ(rowsOf(*store, "T")[1], "'a3' 30 'memo 3'");
    EXPECT_EQ(store->layout("T").fields[0].nativeType, "C(40)");
    EXPECT_EQ(store->layout("T").fields[1].nativeType, "N(14,4)");
    const std::string longer(40, 'x');
    const FieldChange changes[] = {{0, text(longer)}, {1, ValueView::decimal(0, 0, 12345678, 4)}};
    store->writer("T")->update(3, changes);
    EXPECT_EQ(rowsOf(*store, "T")[1], "'" + longer + "' 1234.5678 'memo 3'");
    const auto widen = [&](const char* name, const FieldDef& to) {
        return errorOf([&] { own(*store).widenField("T", name, to); });
    };
    EXPECT_EQ(widen("A", fieldDef("A", FieldType::Text, 39)), 3251);
    EXPECT_EQ(widen("A", numberDef("A", 12, 2)), 3251);
    EXPECT_EQ(widen("N", numberDef("N", 14, 7)), 3251);  // fewer places in front of the point
    EXPECT_EQ(widen("M", fieldDef("M", FieldType::Memo)), 3251);
    EXPECT_EQ(faultsOf(*store, "T"), Rows{});
}

TEST(TableRewrite, numbersThatNobodyCanReadKeepTheirCharacters)
{
    MemoryFileSystem files;
    makeTable(files, "dBASE 5.0;", false);
    patch(files, "C:\\T.DBF", "   30.00", "****,*.*");
    const auto store = openStore(files, "dBASE 5.0;");
    own(*store).widenField("T", "N", numberDef("N", 10, 3));
    store->addField("T", fieldDef("X", FieldType::Text, 3));
    const auto bytes = files.content("C:\\T.DBF");
    const std::string_view all(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    EXPECT_NE(all.find("a3        ****,*.*"), all.npos);
}

TEST(TableRewrite, theNullFlagsFollowTheirFields)
{
    MemoryFileSystem files;
    const auto store = openStore(files, "FoxPro 3.0;");
    store->createTable(
        layoutOf("T", {fieldDef("A", FieldType::Long), fieldDef("B", FieldType::Double),
                       fieldDef("C", FieldType::Currency)}));
    const auto null = ValueView::null();
    store->writer("T")->insert(std::array{ValueView::integer(1), null, ValueView::currency(10000)});
    store->writer("T")->insert(std::array{null, ValueView::real(2), null});
    store->commit();
    store->dropField("T", "A");
    EXPECT_EQ(rowsOf(*store, "T"), (Rows{"- 1", "2 -"}));
    store->addField("T", fieldDef("D", FieldType::Long));
    EXPECT_EQ(rowsOf(*store, "T"), (Rows{"- 1 -", "2 - -"}));
    for (int i = 0; i < 7; ++i)  // a second byte of flags
        store->addField("T", fieldDef("L" + std::to_string(i), FieldType::Long));
    EXPECT_EQ(rowsOf(*store, "T"), (Rows{"- 1 - - - - - - - -", "2 - - - - - - - - -"}));
    for (const char* field : {"B", "D", "L0", "L1", "L2", "L3", "L4", "L5", "L6"})
        store->dropField("T", field);
    EXPECT_EQ(rowsOf(*store, "T"), (Rows{"1", "-"}));
    EXPECT_EQ(faultsOf(*store, "T"), Rows{});
}

TEST(TableRewrite, aNewCounterNumbersTheRecords)
{
    MemoryFileSystem files;
    makeTable(files, "FoxPro 3.0;");
    const auto store = openStore(files, "FoxPro 3.0;");
    FieldDef counter = fieldDef("ID", FieldType::Long);
    counter.autonumber = true;
    store->addField("T", counter);
    EXPECT_EQ(versionOf(files), 0x31);
    EXPECT_EQ(rowsOf(*store, "T")[2], "'a4' 40 'memo 4' 4");
    store->writer("T")->insert(
        std::array{text("new"), ValueView::null(), ValueView::null(), ValueView::null()});
    EXPECT_EQ(rowsOf(*store, "T")[3], "'new' - - 5");
}

TEST(TableRewrite, packingTakesDeletedRecordsAndUnusedMemosAway)
{
    for (const char* word : kAllWords) {
        SCOPED_TRACE(word);
        MemoryFileSystem files;
        const std::string_view kind = word;
        const std::string memo = kind.starts_with("Fox") ? "C:\\T.FPT" : "C:\\T.DBT";
        makeTable(files, word);
        const auto store = openStore(files, word);
        store->addIndex("T", indexDef("BYNAME", {"A"}));
        for (int length : {3000, 9000, 20000}) {
            const std::string longText(static_cast<std::size_t>(length), 'm');
            const FieldChange change{2, text(longText)};
            store->writer("T")->update(1, std::span(&change, 1));
        }
        const FieldChange shorter{2, text("short again")};
        store->writer("T")->update(1, std::span(&shorter, 1));
        store->commit();
        const std::size_t before = files.content(memo).size();
        own(*store).pack("T");
        EXPECT_LT(files.content(memo).size(), 3000u);
        EXPECT_GT(before, 20000u);
        EXPECT_EQ(rowsOf(*store, "T"),
                  (Rows{"'a1' 10 'short again'", "'a3' 30 'memo 3'", "'a4' 40 'memo 4'"}));
        EXPECT_TRUE(store->cursor("T", std::nullopt)->moveTo(3));
        EXPECT_FALSE(store->cursor("T", std::nullopt)->moveTo(4));
        EXPECT_EQ(namesBy(*store, "BYNAME"), (Rows{"a1", "a3", "a4"}));
        EXPECT_EQ(faultsOf(*store, "T"), Rows{});
        store->writer("T")->insert(std::array{text("a5"), ValueView::integer(5), text("memo 5")});
        store->commit();
        EXPECT_EQ(rowsOf(*store, "T").back(), "'a5' 5 'memo 5'");
        EXPECT_EQ(faultsOf(*store, "T"), Rows{});
    }
}

TEST(TableRewrite, packingKeepsTheKindAndBlocksOfMemos)
{
    MemoryFileSystem files;
    makeTable(files, "FoxPro 2.6;");
    patch(files, "C:\\T.FPT", std::string_view("\0\0\0\1\0\0\0\6memo 3", 14),
          std::string_view("\0\0\0\0\0\0\0\6memo 3", 14));  // a picture
    const auto store = openStore(files, "FoxPro 2.6;");
    own(*store).pack("T");
    const auto bytes = files.content("C:\\T.FPT");
    const std::string_view all(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    EXPECT_NE(all.find(std::string_view("\0\0\0\0\0\0\0\6memo 3", 14)), all.npos);
    EXPECT_NE(all.find(std::string_view("\0\0\0\1\0\0\0\6memo 4", 14)), all.npos);
    EXPECT_EQ(all.find("memo 2"), all.npos);
    EXPECT_EQ(bytes[7], 64);
    EXPECT_EQ(bytes.size(), 512u + 3 * 64);
}

TEST(TableRewrite, marksOfOtherProgramsStayOnTheirIndexes)
{
    MemoryFileSystem files;
    makeTable(files, "FoxPro 2.6;");
    openStore(files, "FoxPro 2.6;")->addIndex("T", indexDef("PLAIN", {"A"}));
    IndexDef once = indexDef("ONCE", {"N"});
    once.unique = true;
    openStore(files, "FoxPro 2.6;")->addIndex("T", once);
    {  // a candidate of Visual FoxPro in place of our own mark
        const auto file = files.open("C:\\T.CDX", OpenMode::ReadWrite);
        std::vector<std::uint8_t> bytes(file->size());
        file->readAt(0, bytes);
        const std::string_view mark = "UNIQ";
        const auto at = std::search(bytes.begin(), bytes.end(), mark.begin(), mark.end());
        ASSERT_NE(at, bytes.end());
        const auto head = static_cast<std::uint64_t>(at - bytes.begin()) - 480;
        file->writeAt(head + 14, std::array{std::uint8_t{0x64}});
        file->writeAt(head + 480, std::array<std::uint8_t, 4>{});
    }
    const auto store = openStore(files, "FoxPro 2.6;");
    own(*store).pack("T");
    const FieldChange same{1, ValueView::integer(10)};
    EXPECT_EQ(errorOf([&] { store->writer("T")->update(2, std::span(&same, 1)); }), 3022);
    const auto bytes = files.content("C:\\T.CDX");
    const std::string_view all(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    EXPECT_EQ(all.find("UNIQ"), all.npos);
}

TEST(TableRewrite, anIndexThatNobodyHereCanBuildRefusesAll)
{
    MemoryFileSystem files;
    makeTable(files, "FoxPro 2.6;");
    openStore(files, "FoxPro 2.6;")->addIndex("T", indexDef("BYNAME", {"A"}));
    IndexDef odd = indexDef("ODD", {});
    odd.expression = "UPPER(A)";
    openStore(files, "FoxPro 2.6;")->addIndex("T", odd);
    patch(files, "C:\\T.CDX", "UPPER(A)", "SOUND(A)");
    const auto before = files.content("C:\\T.DBF");
    const auto store = openStore(files, "FoxPro 2.6;");
    EXPECT_EQ(errorOf([&] { store->addField("T", fieldDef("X", FieldType::Date)); }), 3800);
    EXPECT_EQ(errorOf([&] { own(*store).pack("T"); }), 3800);
    EXPECT_EQ(files.content("C:\\T.DBF"), before);
    EXPECT_EQ(files.list("C:\\").size(), 3u);
}

TEST(TableRewrite, aTableThatIsReadElsewhereIsLeftAlone)
{
    MemoryFileSystem files;
    makeTable(files, "dBASE 5.0;");
    const auto store = openStore(files, "dBASE 5.0;");
    {
        const auto cursor = store->cursor("T", std::nullopt);
        EXPECT_EQ(errorOf([&] { store->dropField("T", "N"); }), 3045);
        EXPECT_TRUE(cursor->first());
    }
    const auto reading = openStore(files, "dBASE 5.0;", true);
    EXPECT_EQ(errorOf([&] { reading->dropField("T", "N"); }), 3027);
    store->dropField("T", "N");
    EXPECT_EQ(rowsOf(*store, "T")[0], "'a1' 'memo 1'");
}

TEST(TableRewrite, thePlaceInADatabaseContainerIsKept)
{
    MemoryFileSystem files;
    makeTable(files, "FoxPro 3.0;");
    {
        const auto file = files.open("C:\\T.DBF", OpenMode::ReadWrite);
        const std::string_view link = "shop.dbc";
        file->writeAt(32 * 4 + 1,
                      {reinterpret_cast<const std::uint8_t*>(link.data()), link.size()});
    }
    const auto store = openStore(files, "FoxPro 3.0;");
    store->addField("T", fieldDef("DAY", FieldType::Date));
    const auto bytes = files.content("C:\\T.DBF");
    EXPECT_EQ(std::string_view(reinterpret_cast<const char*>(&bytes[32 * 5 + 1]), 9),
              std::string_view("shop.dbc\0", 9));
    EXPECT_EQ(bytes[8] + 256 * bytes[9], 32 * 5 + 1 + 263);
    EXPECT_EQ(bytes[32 * 4 + 12], 1 + 6 + 9 + 4);  // the place of the new field
}

}  // namespace
