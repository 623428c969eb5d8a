// Single index files of FoxPro, listed by an INF file: the compact form is kept right, the old one
// is read.
#include "tests/access/xbase/index_testing.h"

namespace {

using namespace velnor;
using namespace velnor::xbase_testing;

using Rows = std::vector<std::string>;

void putText(MemoryFileSystem& files, std::string_view path, std::string_view text)
{
    files.put(path, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

/// T with the records "B", "A", "C" and so on backwards in twos, and the INF that lists an IDX.
void makeTable(MemoryFileSystem& files, int records)
{
    const auto store = openStore(files, "FoxPro 2.6;");
    store->createTable(layoutOf("T", {fieldDef("NAME", FieldType::Text, 4), numberDef("N", 5, 0)}));
    for (int i = 0; i < records; ++i) {
        const std::string name(1, static_cast<char>('A' + (i ^ 1)));
        store->writer("T")->insert(std::array{text(name), ValueView::integer(i)});
    }
    store->commit();
    putText(files, "C:\\T.INF", "[FoxPro 2.6]\r\nIDX1=BYNAME.IDX\r\n");
}

/// A compound file with one index is a compact IDX when its head is that of the index.
void makeCompactIdx(MemoryFileSystem& files)
{
    makeTable(files, 12);
    files.remove("C:\\T.INF");
    {
        const auto store = openStore(files, "FoxPro 2.6;");
        store->addIndex("T", indexDef("BYNAME", {"NAME"}));
    }
    std::vector<std::uint8_t> bytes = files.content("C:\\T.CDX");
    std::size_t head = 1024 + 512;  // behind the directory
    ASSERT_EQ(bytes[head + 14], 0x60);
    std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(head), 1024, bytes.begin());
    bytes[14] = 0x20;
    files.put("C:\\BYNAME.IDX", bytes);
    {
        const auto store = openStore(files, "FoxPro 2.6;");
        store->dropIndex("T", "BYNAME");
    }
    putText(files, "C:\\T.INF", "[FoxPro 2.6]\r\nIDX1=BYNAME.IDX\r\n");
}

TEST(IdxFile, aCompactIndexIsWalkedAndSearched)
{
    MemoryFileSystem files;
    makeCompactIdx(files);
    const auto store = openStore(files, "FoxPro 2.6;", true);
    const auto indexes = store->layout("T").indexes;
    ASSERT_EQ(indexes.size(), 1u);
    EXPECT_EQ(indexes[0].name, "BYNAME");
    EXPECT_EQ(indexes[0].expression, "NAME");
    EXPECT_EQ(namesBy(*store, "BYNAME"),
              (Rows{"A", "B", "C", "D", "E", "F", "G", "H", "I", "J", "K", "L"}));
    const auto cursor = store->cursor("T", "BYNAME");
    const ValueView wanted = text("G");
    ASSERT_TRUE(cursor->seek(Comparison::Equal, {&wanted, 1}));
    EXPECT_EQ(cursor->row(), 8u);
    EXPECT_EQ(faultsOf(*store, "T"), Rows{});
    EXPECT_EQ(openStore(files, "dBASE 5.0;", true)->layout("T").indexes.size(), 0u);
}

TEST(IdxFile, aCompactIndexIsKeptRight)
{
    MemoryFileSystem files;
    makeCompactIdx(files);
    auto store = openStore(files, "FoxPro 2.6;");
    for (int i = 0; i < 400; ++i) {
        const std::string name = "n" + std::to_string(i * 7 % 400);
        store->writer("T")->insert(std::array{text(name), ValueView::integer(i)});
    }
    const FieldChange change{0, text("zz")};
    store->writer("T")->update(2, std::span(&change, 1));
    store->writer("T")->remove(3);
    store->commit();
    store = openStore(files, "dBASE 5.0;");  // kept by every word
    store->writer("T")->insert(std::array{text("zzz"), ValueView::integer(0)});
    store->commit();
    store = openStore(files, "FoxPro 2.6;");
    const Rows names = namesBy(*store, "BYNAME");
    EXPECT_EQ(names.size(), 412u);
    EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
    EXPECT_EQ(names[names.size() - 2], "zz");
    EXPECT_EQ(faultsOf(*store, "T"), Rows{});
}

TEST(IdxFile, aCompactIndexComesAlongWhenTheTableIsWrittenAnew)
{
    MemoryFileSystem files;
    makeCompactIdx(files);
    auto store = openStore(files, "FoxPro 2.6;");
    store->addField("T", fieldDef("MORE", FieldType::Date));
    EXPECT_EQ(errorOf([&] { store->dropField("T", "NAME"); }), 3280);
    EXPECT_EQ(namesBy(*store, "BYNAME").size(), 12u);
    const auto bytes = files.content("C:\\BYNAME.IDX");
    EXPECT_EQ(bytes[14], 0x20);
    EXPECT_EQ(faultsOf(*store, "T"), Rows{});
    store->dropIndex("T", "BYNAME");
    EXPECT_FALSE(files.fileExists("C:\\BYNAME.IDX"));
    EXPECT_FALSE(files.fileExists("C:\\T.INF"));
    EXPECT_EQ(store->layout("T").indexes.size(), 0u);
}

/// One leaf, keys of four bytes, record numbers the other way round.
void putOldIdx(MemoryFileSystem& files, bool sound)
{
    makeTable(files, 3);  // B A D
    std::vector<std::uint8_t> bytes(1024);
    bytes[1] = 2;  // root at 512
    bytes[4] = bytes[5] = bytes[6] = bytes[7] = 0xFF;
    bytes[9] = 4;   // 1024 bytes
    bytes[12] = 4;  // key length
    const std::string_view expression = "NAME";
    std::copy(expression.begin(), expression.end(), bytes.begin() + 16);
    bytes[512] = 3;  // root and leaf
    bytes[514] = sound ? 3 : 200;
    std::fill_n(bytes.begin() + 516, 8, std::uint8_t{0xFF});
    const std::string_view names[] = {"A   ", "B   ", "D   "};
    const std::uint8_t records[] = {2, 1, 3};
    for (std::size_t i = 0; i < 3; ++i) {
        std::copy(names[i].begin(), names[i].end(),
                  bytes.begin() + 524 + static_cast<std::ptrdiff_t>(8 * i));
        bytes[524 + 8 * i + 7] = records[i];
    }
    files.put("C:\\BYNAME.IDX", bytes);
}

TEST(IdxFile, theOldFormIsWalked_andItsTableOnlyRead)
{
    MemoryFileSystem files;
    putOldIdx(files, true);
    const auto store = openStore(files, "FoxPro 2.6;");
    EXPECT_EQ(namesBy(*store, "BYNAME"), (Rows{"A", "B", "D"}));
    EXPECT_FALSE(store->layout("T").indexes[0].cannotKeep.empty());
    EXPECT_EQ(errorOf([&] { store->writer("T"); }), 3800);
    EXPECT_EQ(errorOf([&] { store->addField("T", fieldDef("X", FieldType::Date)); }), 3800);
    const auto cursor = store->cursor("T", "BYNAME");
    ASSERT_TRUE(cursor->last());
    EXPECT_EQ(cursor->row(), 3u);
    ASSERT_TRUE(cursor->previous());
    EXPECT_EQ(cursor->row(), 1u);
}

TEST(IdxFile, aDamagedOldIndexIsAnError)
{
    MemoryFileSystem files;
    putOldIdx(files, false);
    const auto store = openStore(files, "FoxPro 2.6;", true);
    EXPECT_EQ(errorOf([&] { namesBy(*store, "BYNAME"); }), 3197);
    EXPECT_EQ(rowsOf(*store, "T").size(), 3u);
}

}  // namespace
