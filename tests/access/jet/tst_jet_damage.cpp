// Damaged files: what can be read is read, the rest is an error, never a crash or a hang.
#include <algorithm>
#include <random>
#include <set>
#include <sstream>

#include <gtest/gtest.h>

#include "access/engine_error.h"
#include "access/formats/jet/jet_driver.h"
#include "access/formats/jet/jet_file.h"
#include "access/storage/byte_reader.h"
#include "tests/access/jet/jet_testing.h"

namespace velnor::testing {
namespace {

using Bytes = std::vector<std::uint8_t>;

int openError(const Bytes& content)
{
    const auto files = memoryWith(content);
    try {
        jet::JetDriver().open(*files, reading());
    } catch (const EngineError& error) {
        return error.number();
    }
    return 0;
}

std::multiset<std::string> linesOf(const std::string& text)
{
    std::multiset<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.insert(line);
    return lines;
}

template <class Action> void attempt(Action action)
{
    try {
        action();
    } catch (const EngineError&) {
    } catch (const RunError&) {
    }
}

/// An index and a field more and less, and all that stood taken away.
void changeStructure(Store& store, const std::string& table)
{
    TableLayout layout;
    attempt([&] { layout = store.layout(table); });
    if (layout.fields.empty())
        return;
    IndexDef index;
    index.name = "Another";
    index.fields = {{layout.fields.back().name, false}};
    FieldDef memo;
    memo.name = "Another";
    memo.type = FieldType::Memo;
    FieldDef number;
    number.name = "A number";
    number.type = FieldType::Long;
    number.autonumber = true;
    attempt([&] { store.addIndex(table, index); });
    attempt([&] { store.addField(table, memo); });
    attempt([&] { store.addField(table, number); });
    attempt([&] { store.dropIndex(table, index.name); });
    for (const IndexDef& standing : layout.indexes)
        attempt([&] { store.dropIndex(table, standing.name); });
    for (const FieldDef& standing : layout.fields)
        attempt([&] { store.dropField(table, standing.name); });
    attempt([&] { dumpTable(store, table); });
}

/// Does with a file whatever a program does: reads all, seeks, writes, checks. Errors are fine.
void useEverything(const Bytes& content)
{
    const auto files = memoryWith(content);
    attempt([&] {
        const auto store = jet::JetDriver().open(*files, writing());
        for (const TableEntry& table : store->catalogue()) {
            attempt([&] { store->recordCount(table.name); });
            attempt([&] { dumpTable(*store, table.name); });
            TableLayout layout;
            attempt([&] { layout = store->layout(table.name); });
            for (const IndexDef& index : layout.indexes) {
                attempt([&] {
                    const auto cursor = store->cursor(table.name, index.name);
                    long steps = 0;
                    for (bool on = cursor->first(); on && steps < 1000000; on = cursor->next())
                        ++steps;
                    EXPECT_LT(steps, 1000000) << "an index walk without end";
                    for (bool on = cursor->last(); on && steps > 0; on = cursor->previous())
                        --steps;
                });
            }
            attempt([&] {
                const auto writer = store->writer(table.name);
                const std::vector<ValueView> row(layout.fields.size());
                const RowId added = writer->insert(row);
                writer->remove(added);
            });
            attempt([&] {
                const auto cursor = store->cursor(table.name, std::nullopt);
                if (cursor->first())
                    store->writer(table.name)->remove(cursor->row());
            });
        }
        for (const TableEntry& table : store->catalogue())
            changeStructure(*store, table.name);
        attempt([&] { store->check({}, [](const Problem&) {}); });
        attempt([&] {
            TableLayout layout;
            layout.name = "New one";
            layout.fields.resize(1);
            layout.fields[0].name = "A";
            layout.fields[0].size = 10;
            store->createTable(layout);
            store->dropTable("New one");
        });
        attempt([&] { store->commit(); });
    });
}

TEST(Damage, whatIsNoDatabaseIsNotRecognised)
{
    EXPECT_EQ(openError({}), 3343);
    EXPECT_EQ(openError(Bytes(100, 0)), 3343);
    EXPECT_EQ(openError(Bytes(100000, 0)), 3343);
    Bytes text(5000, 'x');
    EXPECT_EQ(openError(text), 3343);
    Bytes ace(8192, 0);
    ace[1] = 1;
    std::copy_n("Standard ACE DB", 15, ace.begin() + 4);
    ace[0x14] = 2;
    EXPECT_EQ(openError(ace), 3343);
    std::copy_n("Standard Jet DB", 15, ace.begin() + 4);
    ace[0x14] = 0;
    EXPECT_EQ(openError(Bytes(ace.begin(), ace.begin() + 3000)), 3343);
}

TEST(Damage, aMissingFileOrFolderHasItsOwnNumber)
{
    MemoryFileSystem files;
    OpenRequest request = reading();
    const auto error = [&] {
        try {
            jet::JetDriver().open(files, request);
        } catch (const EngineError& e) {
            return e.number();
        }
        return 0;
    };
    EXPECT_EQ(error(), 3024);
    request.name = "C:\\NOWHERE\\X.MDB";
    EXPECT_EQ(error(), 3044);
}

TEST(Damage, damagedFilesOfTheCorpusGiveWhatTheyStillHold)
{
    if (corpusFolder().empty())
        GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
    const std::map<std::string, int> whole{
        {"bad/jet3-truncated.mdb", 85},     {"bad/jet3-index-loop.mdb", 120},
        {"bad/jet3-index-order.mdb", 120},  {"bad/jet3-count.mdb", 120},
        {"bad/jet3-map.mdb", 120},          {"bad/jet3-memo-pointer.mdb", 119},
        {"bad/jet3-tdef-length.mdb", 120},  {"bad/jet3-zero-page.mdb", 86},
        {"bad/jet4-index-loop.mdb", 120},   {"bad/jet4-map.mdb", 120},
        {"bad/jet4-memo-pointer.mdb", 119}, {"bad/jet4-zero-page.mdb", 65}};
    int seen = 0;
    for (const Json& entry : corpusManifest().list) {
        const auto wanted = whole.find(entry["file"].text);
        if (wanted == whole.end())
            continue;
        ++seen;
        const Bytes content = readBytes(corpusFolder() + entry["file"].text);
        const auto files = memoryWith(content);
        const auto store = jet::JetDriver().open(*files, reading());
        const Bytes dump = readBytes(corpusFolder() + entry["tables"].list[0]["dump"].text);
        const auto right = linesOf({reinterpret_cast<const char*>(dump.data()), dump.size()});
        const auto got = linesOf(dumpTable(*store, "People"));
        std::vector<std::string> common;
        std::set_intersection(got.begin(), got.end(), right.begin(), right.end(),
                              std::back_inserter(common));
        EXPECT_EQ(static_cast<int>(common.size()) - 1, wanted->second) << entry["file"].text;
        // Records of pages that are gone are not there; a record with a damaged memo is, without
        // it.
        EXPECT_LE(got.size(), right.size()) << entry["file"].text;
        useEverything(content);
    }
    EXPECT_EQ(seen, static_cast<int>(whole.size()));
}

TEST(Damage, aTableWhosePagesWereFoundByOwnerIsNotWritten)
{
    if (corpusFolder().empty())
        GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
    const auto files = memoryWith(readBytes(corpusFolder() + "bad/jet4-map.mdb"));
    const auto store = jet::JetDriver().open(*files, writing());
    EXPECT_FALSE(store->layout("People").updatable);
    EXPECT_FALSE(store->layout("People").whyNotUpdatable.empty());
    EXPECT_THROW(store->writer("People"), EngineError);
}

TEST(Damage, anIndexThatLoopsEndsInAnError)
{
    if (corpusFolder().empty())
        GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
    for (const char* name : {"bad/jet3-index-loop.mdb", "bad/jet4-index-loop.mdb"}) {
        const auto files = memoryWith(readBytes(corpusFolder() + name));
        const auto store = jet::JetDriver().open(*files, reading());
        const auto cursor = store->cursor("People", "Name");
        long steps = 0;
        int error = 0;
        try {
            for (bool on = cursor->first(); on && steps < 100000; on = cursor->next())
                ++steps;
        } catch (const EngineError& e) {
            error = e.number();
        }
        EXPECT_LT(steps, 100000);
        EXPECT_EQ(error, 3197) << name;
    }
}

/// The leaves lead in a ring, and the last entry lies before the first: order alone does not tell.
TEST(Damage, aRingOfLeavesThatDoNotAscendEndsInAnError)
{
    MemoryFileSystem files;
    CreateRequest create;
    create.name = kTestFile;
    jet::JetDriver().create(files, create);
    TableLayout layout;
    layout.name = "Ring";
    layout.fields.resize(1);
    layout.fields[0].name = "ID";
    layout.fields[0].type = FieldType::Long;
    IndexDef index;
    index.name = "ID";
    index.fields = {{"ID", false}};
    layout.indexes = {index};
    {
        const auto store = jet::JetDriver().open(files, writing());
        store->createTable(layout);
        const auto writer = store->writer("Ring");
        for (int i = 0; i < 2000; ++i) {
            const ValueView id = ValueView::integer(i);
            writer->insert(std::span(&id, 1));
        }
        store->commit();
    }
    {
        jet::JetFile file(files, writing());
        const jet::IndexPageLayout& o = jet::kJet4.indexPage;
        jet::PageNumber first = 0, last = 0;
        for (jet::PageNumber page = 14; page < file.pageCount(); ++page) {
            const PageRef held = file.page(page);
            const std::uint8_t* p = held.data();
            if (p[0] != jet::page_type::kIndexLeaf || file.isFree(page))
                continue;
            if (loadLE<std::uint32_t>(p + o.previous) == 0)
                first = page;
            if (loadLE<std::uint32_t>(p + o.next) == 0)
                last = page;
        }
        ASSERT_TRUE(first != 0 && last != 0 && first != last);
        PageRef held = file.page(last);
        std::uint8_t* p = held.edit();
        ASSERT_EQ(loadLE<std::uint16_t>(p + o.prefix), 0);
        storeLE(p + o.next, first);
        const std::size_t used =
            static_cast<std::size_t>(o.entryBytes) - loadLE<std::uint16_t>(p + o.freeBytes);
        std::fill_n(p + o.entries + used - 9, 9, std::uint8_t{0});
        held.release();
        file.commit();
    }
    const auto store = jet::JetDriver().open(files, reading());
    const auto cursor = store->cursor("Ring", "ID");
    long steps = 0;
    int error = 0;
    try {
        for (bool on = cursor->first(); on && steps < 1000000; on = cursor->next())
            ++steps;
    } catch (const EngineError& e) {
        error = e.number();
    }
    EXPECT_LT(steps, 1000000);
    EXPECT_EQ(error, 3197);
}

class Flipped : public ::testing::TestWithParam<const char*> {};

TEST_P(Flipped, anyBitOrByteCanBeWrong)
{
    if (corpusFolder().empty())
        GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
    const Bytes original = readBytes(corpusFolder() + GetParam());
    ASSERT_FALSE(original.empty());
    const std::size_t page = original[0x14] == 0 ? 2048 : 4096;
    std::mt19937 random(7);
    for (int round = 0; round < 60; ++round) {
        Bytes content = original;
        const int faults = 1 + static_cast<int>(random() % 12);
        for (int i = 0; i < faults; ++i) {
            // Most of what matters stands at the beginning of pages.
            const std::size_t start = page * (random() % (content.size() / page));
            const std::size_t at = start + (random() % 2 ? random() % 64 : random() % page);
            if (random() % 2)
                content[at] ^= static_cast<std::uint8_t>(1u << random() % 8);
            else
                content[at] = static_cast<std::uint8_t>(random());
        }
        useEverything(content);
    }
}

TEST_P(Flipped, theFileCanEndAnywhere)
{
    if (corpusFolder().empty())
        GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
    const Bytes original = readBytes(corpusFolder() + GetParam());
    for (std::size_t part = 1; part < 24; ++part)
        useEverything(Bytes(original.begin(),
                            original.begin() + static_cast<long>(original.size() * part / 24)));
}

INSTANTIATE_TEST_SUITE_P(Files, Flipped,
                         ::testing::Values("jahlborn-delTestV2003.mdb",
                                           "jahlborn-delColTestV1997.mdb",
                                           "jahlborn-overflowTestV2000.mdb",
                                           "jahlborn-indexTestV1997.mdb",
                                           "bad/jet4-memo-pointer.mdb", "masspe-test.mdb"));

}  // namespace
}  // namespace velnor::testing
