// The driver as the engine sees it: tables, records, orders, refusals.
#include "access/storage/byte_reader.h"
#include "platform/host.h"
#include "tests/access/paradox/paradox_testing.h"

using namespace velnor;
using namespace velnor::paradox_testing;

namespace {

TableLayout people()
{
    return layoutOf({fieldDef("ID", FieldType::Long), fieldDef("NAME", FieldType::Text, 20),
                     fieldDef("NOTE", FieldType::Memo)},
                    {primaryDef({"ID"})});
}

void add(RowWriter& writer, int id, std::string_view name, std::string_view note = {})
{
    writer.insert(std::array{whole(id), name.empty() ? ValueView() : text(name),
                             note.empty() ? ValueView() : text(note)});
}

/// Changes one byte of a file.
void poke(MemoryFileSystem& files, const char* path, std::size_t at, std::uint8_t value)
{
    Bytes bytes = files.content(path);
    bytes.at(at) = value;
    files.put(path, bytes);
}

std::uint8_t peek(MemoryFileSystem& files, const char* path, std::size_t at)
{
    return files.content(path).at(at);
}

}  // namespace

TEST(ParadoxStore, aKeyedTableIsInTheOrderOfItsKey)
{
    MemoryFileSystem files;
    const auto store = openStore(files);
    store->createTable(people());
    const auto writer = store->writer("T");
    for (const int id : {30, 10, 20})
        add(*writer, id, "n");
    store->commit();
    EXPECT_EQ(rowsOf(*store), (Rows{"10 'n' -", "20 'n' -", "30 'n' -"}));
    const TableLayout layout = store->layout("t");
    ASSERT_EQ(layout.indexes.size(), 1u);
    EXPECT_EQ(layout.indexes[0].name, "T#PX");
    EXPECT_TRUE(layout.indexes[0].primary && layout.indexes[0].unique);
    EXPECT_EQ(faultsOf(*store), Rows{});
    EXPECT_TRUE(files.fileExists("C:\\T.PX"));
    EXPECT_TRUE(files.fileExists("C:\\T.MB"));
}

TEST(ParadoxStore, aTableWithoutAKeyIsAddedToButNotEdited)
{
    MemoryFileSystem files;
    const auto store = openStore(files);
    store->createTable(layoutOf({fieldDef("A", FieldType::Text, 5)}));
    const auto writer = store->writer("T");
    const RowId row = writer->insert(std::array{text("one")});
    writer->insert(std::array{text("two")});
    EXPECT_EQ(errorOf([&] { writer->update(row, std::array{FieldChange{0, text("x")}}); }), 3027);
    EXPECT_EQ(errorOf([&] { writer->remove(row); }), 3027);
    store->commit();
    EXPECT_EQ(rowsOf(*store), (Rows{"'one'", "'two'"}));
    const auto cursor = store->cursor("T", std::nullopt);
    ASSERT_TRUE(cursor->moveTo(row));
    EXPECT_EQ(rowOf(*cursor, 1), "'one'");
    EXPECT_FALSE(files.fileExists("C:\\T.PX"));
    EXPECT_EQ(faultsOf(*store), Rows{});
}

TEST(ParadoxStore, everyKindHasItsVersionByte)
{
    const auto versionOf = [](std::string_view word, TableLayout layout) {
        MemoryFileSystem files;
        openStore(files, word)->createTable(layout);
        return static_cast<int>(peek(files, "C:\\T.DB", 0x39));
    };
    const TableLayout plain = layoutOf({fieldDef("A", FieldType::Text, 5)}, {primaryDef({"A"})});
    EXPECT_EQ(versionOf("Paradox 3.x;", plain), 4);
    EXPECT_EQ(versionOf("Paradox 4.x;", plain), 9);
    EXPECT_EQ(versionOf("Paradox 5.x;", plain), 0x0B);
    EXPECT_EQ(versionOf("Paradox 7.x;", plain), 0x0C);
    TableLayout unique =
        layoutOf({fieldDef("A", FieldType::Text, 5), fieldDef("B", FieldType::Long)},
                 {primaryDef({"A"}), indexDef("ONCE", {"B"}, true)});
    EXPECT_EQ(versionOf("Paradox 5.x;", unique), 0x0C);  // such indexes came with level 7
}

TEST(ParadoxStore, oldLevelsLackTheNewTypes)
{
    MemoryFileSystem files;
    const auto three = openStore(files, "Paradox 3.x;");
    EXPECT_EQ(errorOf([&] { three->createTable(layoutOf({fieldDef("M", FieldType::Memo)})); }),
              3251);
    EXPECT_EQ(
        errorOf([&] { openStore(files)->createTable(layoutOf({fieldDef("G", FieldType::Guid)})); }),
        3251);
    three->createTable(layoutOf({fieldDef("N", FieldType::Long), fieldDef("B", FieldType::Boolean),
                                 fieldDef("D", FieldType::TimeStamp)},
                                {primaryDef({"N"})}));
    std::string types;
    for (const FieldDef& field : three->layout("T").fields)
        types += field.nativeType + " ";
    EXPECT_EQ(types, "N S D ");
    const auto writer = three->writer("T");
    for (int i = 0; i < 500; ++i)
        writer->insert(std::array{whole(i * 7 % 500), whole(i % 2), ValueView::date(40000 + i)});
    three->commit();
    EXPECT_EQ(faultsOf(*three), Rows{});
    EXPECT_EQ(rowsOf(*three)[3], "3 1 " + rowsOf(*three)[3].substr(4));
}

TEST(ParadoxStore, autonumbersGoOnFromTheLastOne)
{
    MemoryFileSystem files;
    TableLayout layout = layoutOf(
        {fieldDef("ID", FieldType::Long), fieldDef("A", FieldType::Text, 5)}, {primaryDef({"ID"})});
    layout.fields[0].autonumber = true;
    {
        const auto store = openStore(files);
        store->createTable(layout);
        const auto writer = store->writer("T");
        writer->insert(std::array{ValueView(), text("a")});
        writer->insert(std::array{whole(41), text("b")});
        writer->remove(writer->insert(std::array{ValueView(), text("c")}));
        store->commit();
    }
    EXPECT_EQ(loadLE<std::uint32_t>(&files.content("C:\\T.DB")[0x49]), 42u);  // the last one given
    const auto store = openStore(files);
    EXPECT_TRUE(store->layout("T").fields[0].autonumber);
    store->writer("T")->insert(std::array{ValueView(), text("d")});
    EXPECT_EQ(rowsOf(*store), (Rows{"1 'a'", "41 'b'", "43 'd'"}));
    EXPECT_EQ(faultsOf(*store), Rows{});
}

TEST(ParadoxStore, longValuesFollowTheirRecord)
{
    MemoryFileSystem files;
    const auto store = openStore(files);
    store->createTable(people());
    const auto writer = store->writer("T");
    add(*writer, 1, "short", "ten bytes.");  // as long as the leader: stays in the record
    add(*writer, 2, "small", std::string(500, 's'));
    add(*writer, 3, "large", std::string(9000, 'l'));
    add(*writer, 4, "none");
    store->commit();
    EXPECT_EQ(files.content("C:\\T.MB").size(), 4096u * 5);
    EXPECT_EQ(faultsOf(*store), Rows{});
    const auto cursor = store->cursor("T", std::nullopt);
    ASSERT_TRUE(cursor->first() && cursor->next());
    writer->update(cursor->row(), std::array{FieldChange{2, text(std::string(3000, 'n'))}});
    ASSERT_TRUE(cursor->next());
    EXPECT_EQ(cursor->field(2).asText(), std::string(9000, 'l'));
    writer->remove(cursor->row());
    store->commit();
    EXPECT_EQ(faultsOf(*store), Rows{});  // no value without a record, the free table right
    EXPECT_EQ(rowsOf(*store).size(), 3u);
    EXPECT_EQ(rowsOf(*store)[1], "2 'small' '" + std::string(3000, 'n') + "'");
}

TEST(ParadoxStore, aDuplicateKeyChangesNothing)
{
    MemoryFileSystem files;
    const auto store = openStore(files, "Paradox 7.x;");
    TableLayout layout = people();
    layout.indexes.push_back(indexDef("ONENAME", {"NAME"}, true));
    store->createTable(layout);
    const auto writer = store->writer("T");
    add(*writer, 1, "Anna", std::string(700, 'a'));
    add(*writer, 2, "Bert");
    store->commit();
    const Bytes before = files.content("C:\\T.MB");
    EXPECT_EQ(errorOf([&] { add(*writer, 1, "Carl", std::string(700, 'x')); }), 3022);
    EXPECT_EQ(errorOf([&] { add(*writer, 3, "ANNA", std::string(700, 'x')); }), 3022);
    const auto cursor = store->cursor("T", std::nullopt);
    ASSERT_TRUE(cursor->last());
    EXPECT_EQ(errorOf([&] {
                  writer->update(cursor->row(), std::array{FieldChange{0, whole(1)}});
              }),
              3022);
    writer->update(cursor->row(), std::array{FieldChange{1, text("BERT")}});  // its own is no other
    store->commit();
    EXPECT_EQ(files.content("C:\\T.MB"), before);
    EXPECT_EQ(rowsOf(*store).size(), 2u);
    EXPECT_EQ(faultsOf(*store), Rows{});
}

TEST(ParadoxStore, secondaryIndexesOrderAndFind)
{
    MemoryFileSystem files;
    const auto store = openStore(files);
    TableLayout layout = people();
    layout.indexes.push_back(indexDef("NAME", {"NAME"}));          // with case
    layout.indexes.push_back(indexDef("BYNAME", {"NAME", "ID"}));  // blind to case
    store->createTable(layout);
    EXPECT_TRUE(files.fileExists("C:\\T.X02") && files.fileExists("C:\\T.Y02"));
    EXPECT_TRUE(files.fileExists("C:\\T.XG0") && files.fileExists("C:\\T.YG0"));
    const auto writer = store->writer("T");
    add(*writer, 1, "b");
    add(*writer, 2, "B");
    add(*writer, 3, "a");
    add(*writer, 4, "");
    store->commit();
    EXPECT_EQ(rowsOf(*store, "NAME"), (Rows{"4 - -", "2 'B' -", "3 'a' -", "1 'b' -"}));
    EXPECT_EQ(rowsOf(*store, "byname"), (Rows{"4 - -", "3 'a' -", "1 'b' -", "2 'B' -"}));
    const auto cursor = store->cursor("T", "BYNAME");
    const auto find = [&](Comparison how, std::string_view name) {
        const ValueView key = text(name);
        return cursor->seek(how, {&key, 1}) ? rowOf(*cursor, 2) : "none";
    };
    EXPECT_EQ(find(Comparison::Equal, "B"), "1 'b'");
    EXPECT_EQ(find(Comparison::Equal, "c"), "none");
    EXPECT_EQ(find(Comparison::Greater, "A"), "1 'b'");
    EXPECT_EQ(find(Comparison::LessEqual, "B"), "2 'B'");
    EXPECT_EQ(find(Comparison::Less, "b"), "3 'a'");
    EXPECT_EQ(find(Comparison::Equal, std::string(40, 'b')), "none");  // longer than the field
    EXPECT_EQ(faultsOf(*store), Rows{});
    EXPECT_EQ(errorOf([&] { store->cursor("T", "NONE"); }), 3015);
}

TEST(ParadoxStore, stampsTieTheIndexesToTheTable)
{
    MemoryFileSystem files;
    const auto store = openStore(files);
    TableLayout layout = people();
    layout.indexes.push_back(indexDef("NAME", {"NAME"}));
    store->createTable(layout);
    for (int i = 0; i < 600; ++i) {  // the stamps run over twice
        add(*store->writer("T"), i, "n");
        store->commit();
        const int table = peek(files, "C:\\T.DB", 0x2D), sum = table + 78;
        const int wanted = sum > 255 ? sum - 255 : sum;
        ASSERT_GE(table, 1);
        ASSERT_EQ(peek(files, "C:\\T.PX", 0x2C), wanted);
        ASSERT_EQ(peek(files, "C:\\T.X02", 0x2F), wanted);
    }
    EXPECT_EQ(faultsOf(*store), Rows{});
}

TEST(ParadoxStore, aStaleIndexIsNotWalkedAndMadeAnewByTheNextWriter)
{
    MemoryFileSystem files;
    {
        const auto store = openStore(files);
        TableLayout layout = people();
        layout.indexes.push_back(indexDef("NAME", {"NAME"}));
        store->createTable(layout);
        const auto writer = store->writer("T");
        for (int i = 0; i < 300; ++i)
            add(*writer, i, std::to_string(i * 7 % 300));
        store->commit();
    }
    // As when a program changed the table that knows nothing of indexes.
    poke(files, "C:\\T.DB", 0x2D, static_cast<std::uint8_t>(peek(files, "C:\\T.DB", 0x2D) + 1));
    files.remove("C:\\T.PX");
    {
        const auto store = openStore(files, "Paradox 5.x;", true);
        EXPECT_EQ(rowsOf(*store).size(), 300u);  // the table needs no index to be read
        EXPECT_EQ(errorOf([&] { store->cursor("T", "NAME"); }), 3800);
        EXPECT_NE(faultsOf(*store), Rows{});
    }
    const auto store = openStore(files);
    add(*store->writer("T"), 1000, "x");
    store->commit();
    EXPECT_EQ(rowsOf(*store, "NAME").size(), 301u);
    EXPECT_EQ(faultsOf(*store), Rows{});
}

TEST(ParadoxStore, whatAWriterThatDiedLeftBehindIsMadeRightByTheNextOne)
{
    MemoryFileSystem files;
    const auto makeIndexed = [&] {
        const auto store = openStore(files);
        TableLayout layout = people();
        layout.indexes.push_back(indexDef("NAME", {"NAME"}));
        store->createTable(layout);
        for (int i = 0; i < 30; ++i)
            add(*store->writer("T"), i, std::to_string(i * 7 % 30));
        store->commit();
    };
    makeIndexed();
    Bytes wrong = files.content("C:\\T.X02");
    wrong.at(wrong[2] + 256u * wrong[3] + 6) = '~';  // the first entry is of no record
    for (const char* marked : {"C:\\T.DB", "C:\\T.X02"}) {
        files.put("C:\\T.X02", wrong);
        poke(files, marked, 0x14, 1);
        EXPECT_NE(faultsOf(*openStore(files)), Rows{});
        const auto store = openStore(files);
        const auto cursor = store->cursor("T", std::nullopt);
        ASSERT_TRUE(cursor->last());
        store->writer("T")->update(cursor->row(), std::array{FieldChange{2, text("note")}});
        store->commit();
        EXPECT_EQ(peek(files, marked, 0x14), 0);
        EXPECT_EQ(faultsOf(*store), Rows{}) << marked;
        wrong[0x2D] = peek(files, "C:\\T.X02", 0x2D);
        wrong[0x2F] = peek(files, "C:\\T.X02", 0x2F);
    }
}

TEST(ParadoxStore, anIndexInAnUnknownOrderThatLacksRecordsIsLeftAndTold)
{
    MemoryFileSystem files;
    {
        const auto store = openStore(files);
        TableLayout layout = people();
        layout.indexes.push_back(indexDef("NAME", {"NAME"}));
        store->createTable(layout);
        for (int i = 0; i < 10; ++i)
            add(*store->writer("T"), i, std::to_string(i));
        store->commit();
    }
    const Bytes old = files.content("C:\\T.X02"), oldTree = files.content("C:\\T.Y02");
    {
        const auto store = openStore(files);
        add(*store->writer("T"), 10, "ten");
        store->commit();
    }
    const std::uint8_t link = peek(files, "C:\\T.X02", 0x2F);
    files.put("C:\\T.X02", old);
    files.put("C:\\T.Y02", oldTree);
    poke(files, "C:\\T.X02", 0x2F, link);
    for (const char* path : {"C:\\T.DB", "C:\\T.X02"}) {  // an order of some country
        Bytes bytes = files.content(path);
        const std::string_view name = "DBWINUS0", other = "DBWINXX0";
        std::copy(other.begin(), other.end(),
                  std::search(bytes.begin(), bytes.end(), name.begin(), name.end()));
        files.put(path, bytes);
    }
    const Bytes found = files.content("C:\\T.X02");
    const auto store = openStore(files);
    const auto cursor = store->cursor("T", std::nullopt);
    ASSERT_TRUE(cursor->first());
    store->writer("T")->update(cursor->row(), std::array{FieldChange{2, text("note")}});
    store->commit();
    EXPECT_EQ(files.content("C:\\T.X02"), found);  // not filled by an order that is not its own
    EXPECT_EQ(errorOf([&] { store->cursor("T", "NAME"); }), 3800);
}

TEST(ParadoxStore, anIndexFileThatIsNoneKeepsFromWriting)
{
    MemoryFileSystem files;
    const auto store = openStore(files);
    store->createTable(people());
    files.put("C:\\T.X03", Bytes(3000, 'x'));
    EXPECT_EQ(errorOf([&] { openStore(files)->writer("T"); }), 3800);
    EXPECT_EQ(rowsOf(*openStore(files)), Rows{});
}

TEST(ParadoxStore, unknownSortOrdersAreReadAndNeverWrittenIntoAWrongPlace)
{
    const auto folder = corpusFolder();
    if (folder.empty())
        GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
    MemoryFileSystem files;
    // Key +, order ANSII850, an index on a text.
    putFamily(files, folder / "db" / "CUSTOMER.DB");
    const auto store = openStore(files);
    const Rows before = rowsOf(*store);
    const auto writer = store->writer("T");
    const auto cursor = store->cursor("T", std::nullopt);
    ASSERT_TRUE(cursor->first());
    const auto fields = store->layout("T").fields.size();
    EXPECT_EQ(errorOf([&] { writer->insert(std::vector<ValueView>(fields)); }), 3800);
    const FieldChange city{5, text("Elsewhere")}, name{1, text("Other")};
    EXPECT_EQ(errorOf([&] { writer->update(cursor->row(), std::array{city}); }), 3800);
    writer->update(cursor->row(), std::array{name});  // no index has this field
    ASSERT_TRUE(cursor->next());
    writer->remove(cursor->row());
    store->commit();
    const Rows after = rowsOf(*store);
    EXPECT_EQ(after.size(), before.size() - 1);
    EXPECT_NE(after[0].find("'Other'"), std::string::npos);
    EXPECT_EQ(faultsOf(*store), Rows{});
    EXPECT_EQ(rowsOf(*store, "City").size(), after.size());
}

TEST(ParadoxStore, numbersSortByTheirBytesInEveryOrder)
{
    const auto folder = corpusFolder();
    if (folder.empty())
        GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
    MemoryFileSystem files;
    putFamily(files, folder / "joins" / "C.DB");  // ANSII850, three numbers, two indexes
    const auto store = openStore(files);
    const auto writer = store->writer("T");
    for (int i = 4; i < 900; ++i)
        writer->insert(std::array{whole(i * 7 % 1000 + 10), whole(i % 5), whole(-i)});
    store->commit();
    EXPECT_EQ(faultsOf(*store), Rows{});
    EXPECT_EQ(store->recordCount("T"), 899);
}

TEST(ParadoxStore, aTableWithAPasswordNeedsIt)
{
    const auto folder = corpusFolder();
    if (folder.empty())
        GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
    MemoryFileSystem files;
    putFamily(files, folder / "encrypt" / "encryptedmemo.db");
    EXPECT_EQ(errorOf([&] { openStore(files)->layout("T"); }), 3031);
    EXPECT_EQ(errorOf([&] { openStore(files, "Paradox 5.x;", true, "124")->layout("T"); }), 3031);
    auto later = openStore(files, "Paradox 5.x;", true);
    EXPECT_TRUE(later->acceptsPassword("123"));
    EXPECT_EQ(rowsOf(*later).size(), 2u);
    later.reset();
    const Bytes plain = files.content("C:\\T.DB");
    {
        const auto store = openStore(files, "Paradox 5.x;", false, "123");
        const auto writer = store->writer("T");
        for (int i = 0; i < 60; ++i)
            writer->insert(std::array{text(std::string(static_cast<std::size_t>(i) * 97, 'q'))});
        store->commit();
        EXPECT_EQ(faultsOf(*store), Rows{});
    }
    const auto store = openStore(files, "Paradox 5.x;", true, "123");
    EXPECT_EQ(rowsOf(*store).size(), 62u);
    EXPECT_EQ(rowsOf(*store)[61], "'" + std::string(59 * 97, 'q') + "'");
    const Bytes file = files.content("C:\\T.DB");
    EXPECT_EQ(std::string(file.begin(), file.end()).find("qqqq"), std::string::npos);
    const Bytes mb = files.content("C:\\T.MB");
    EXPECT_EQ(std::string(mb.begin(), mb.end()).find("qqqq"), std::string::npos);
}

TEST(ParadoxStore, everyRealTableTakesARecordOrSaysWhyNot)
{
    const auto folder = corpusFolder();
    if (folder.empty())
        GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
    int written = 0, refused = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        const std::string extension = entry.path().extension().string();
        if ((extension != ".DB" && extension != ".db") || entry.file_size() < 100)
            continue;
        MemoryFileSystem files;
        putFamily(files, entry.path());
        const auto store = openStore(files, "Paradox 5.x;", false, "123");
        const Rows faults = faultsOf(*store);
        const std::int64_t count = store->recordCount("T");
        try {
            const auto writer = store->writer("T");
            std::vector<ValueView> values;
            for (const FieldDef& field : store->layout("T").fields)
                values.push_back(field.autonumber                                ? ValueView()
                                 : valueKindOf(field.type) == ValueKind::Text    ? text("z")
                                 : valueKindOf(field.type) == ValueKind::Integer ? whole(31999)
                                                                                 : ValueView());
            const RowId row = writer->insert(values);
            store->commit();
            ++written;
            EXPECT_EQ(store->recordCount("T"), count + 1) << entry.path();
            const auto cursor = store->cursor("T", std::nullopt);
            EXPECT_TRUE(cursor->moveTo(row)) << entry.path();
        } catch (const EngineError& error) {
            EXPECT_TRUE(error.number() == 3800 || error.number() == 3027) << error.what();
            ++refused;
        }
        EXPECT_LE(faultsOf(*store).size(), faults.size()) << entry.path();
    }
    EXPECT_GT(written, 45);
    EXPECT_LT(refused, 6);
}

TEST(ParadoxStore, someoneElseInTheFolderIsRespected)
{
    class FixedClock final : public Clock {
    public:
        LocalTime now() const override { return {2026, 3, 1, 12, 0, 0}; }
        LocalTime local(std::int64_t seconds) const override
        {
            return {2026,
                    3,
                    1,
                    static_cast<int>(seconds / 3600),
                    static_cast<int>(seconds / 60 % 60),
                    static_cast<int>(seconds % 60)};
        }
    } clock;
    Host own = host();
    own.clock = &clock;
    setHost(&own);
    MemoryFileSystem files;
    openStore(files)->createTable(people());
    files.setTime(11 * 3600 + 58 * 60);
    files.put("C:\\PDOXUSRS.LCK", Bytes(1024, 1));
    EXPECT_EQ(errorOf([&] { openStore(files)->writer("T"); }), 3045);
    EXPECT_EQ(rowsOf(*openStore(files, "Paradox 5.x;", true)), Rows{});
    files.setTime(11 * 3600);  // left behind by a program that crashed
    files.put("C:\\PDOXUSRS.LCK", Bytes(1024, 1));
    EXPECT_EQ(errorOf([&] { openStore(files)->writer("T"); }), 0);
    setHost(nullptr);
}

TEST(ParadoxStore, aTableGoesWithAllItsFiles)
{
    MemoryFileSystem files;
    {
        const auto store = openStore(files);
        TableLayout layout = people();
        layout.indexes.push_back(indexDef("NAME", {"NAME"}));
        layout.indexes.push_back(indexDef("G", {"NAME", "ID"}));
        store->createTable(layout);
        files.put("C:\\T.VAL", Bytes(10, 1));
        files.put("C:\\TT.DB", files.content("C:\\T.DB"));
        files.put("C:\\T.TXT", Bytes(10, 1));
        store->dropTable("t");
    }
    Rows left;
    for (const FileInfo& file : files.list("C:\\"))
        left.push_back(file.name);
    std::sort(left.begin(), left.end());
    EXPECT_EQ(left, (Rows{"T.TXT", "TT.DB"}));
}

TEST(ParadoxStore, namesOfTablesAreFileNames)
{
    MemoryFileSystem files;
    const auto store = openStore(files);
    TableLayout layout = people();
    layout.name = "a.b";
    store->createTable(layout);
    EXPECT_EQ(store->catalogue().at(0).name, "a.b");
    EXPECT_EQ(store->layout("A.B").name, "a.b");
    for (const char* name : {"", "x\\y", "..\\z", "a*"}) {
        layout.name = name;
        EXPECT_EQ(errorOf([&] { store->createTable(layout); }), 3125) << name;
        EXPECT_EQ(errorOf([&] { store->layout(name); }), 3078) << name;
    }
    EXPECT_EQ(errorOf([&] { store->layout("none"); }), 3078);
}
