// Compacting: every record, index and object comes over; nothing else does.
#include <algorithm>
#include <map>

#include <gtest/gtest.h>

#include "access/engine_error.h"
#include "access/formats/jet/jet_driver.h"
#include "access/formats/jet/jet_file.h"
#include "tests/access/jet/corpus_files.h"
#include "tests/access/jet/jet_testing.h"
#include "tests/support/faulty_disk.h"

namespace velnor::testing {
namespace {

constexpr const char* kCopy = "C:\\COPY.MDB";

std::string shown(const FieldDef& f)
{
    return f.name + "/" + f.nativeType + "/" + std::to_string(f.size) +
           (f.required ? " required" : "") + (f.allowZeroLength ? "" : " filled") + " " +
           f.defaultValue + "|" + f.description + "|" + f.validationRule + "|" + f.validationText;
}

std::string shown(const IndexDef& index)
{
    std::string text = index.name + (index.primary ? " primary" : "") +
                       (index.unique ? " unique" : "") + (index.required ? " required" : "") +
                       (index.ignoreNulls ? " ignore" : "") + (index.foreign ? " foreign" : "");
    for (const IndexFieldDef& field : index.fields)
        text += " " + field.name + (field.descending ? " down" : "");
    return text;
}

std::string shown(const TableLayout& layout)
{
    std::string text = layout.name + " " + std::to_string(layout.attributes) + " " +
                       std::to_string(layout.dateCreated) + " " + layout.description + "\n";
    for (const FieldDef& field : layout.fields)
        text += shown(field) + "\n";
    for (const IndexDef& index : layout.indexes)
        text += shown(index) + "\n";
    return text;
}

/// The records in the order of an index, by all their fields.
std::string dumpBy(Store& store, const std::string& table, const std::string& index)
{
    const std::size_t fields = store.layout(table).fields.size();
    const auto cursor = store.cursor(table, index);
    std::string text;
    for (bool on = cursor->first(); on; on = cursor->next()) {
        for (std::size_t i = 0; i < fields; ++i) {
            const ValueView v = cursor->field(static_cast<int>(i));
            if (v.kind() == ValueKind::Text)
                text += std::string(v.asText());
            else if (v.kind() == ValueKind::Integer)
                text += std::to_string(v.asInteger());
            text += ',';
        }
        text += '\n';
    }
    return text;
}

void expectSound(const MemoryFileSystem& files, const std::string& password,
                 const std::string& what, bool outside)
{
    MemoryFileSystem own;
    own.put(kTestFile, files.content(kCopy));
    jet::JetDriver().open(own, reading(password))->check({}, [&](const Problem& problem) {
        if (!problem.harmless)
            ADD_FAILURE() << what << ": " << problem.where << ": " << problem.text;
    });
    const Verdict verdict = outside ? outsideCheck(files.content(kCopy), password) : Verdict{};
    if (verdict.available) {
        EXPECT_TRUE(verdict.sound) << what << ": " << verdict.output;
    }
}

CreateRequest copyRequest(int options = 0)
{
    CreateRequest request;
    request.name = kCopy;
    request.options = options;
    request.keepPassword = true;
    return request;
}

OpenRequest copyReading(const std::string& password)
{
    OpenRequest request = reading(password);
    request.name = kCopy;
    return request;
}

void expectSameContent(Store& before, Store& after, const std::string& what)
{
    const auto tables = before.catalogue();
    ASSERT_EQ(tables.size(), after.catalogue().size()) << what;
    for (const TableEntry& entry : tables) {
        const std::string where = what + ", table " + entry.name;
        const TableLayout layout = before.layout(entry.name);
        EXPECT_EQ(shown(layout), shown(after.layout(entry.name))) << where;
        if (!layout.sourceTableName.empty() || entry.name == "MSysObjects" ||
            entry.name == "MSysACEs")
            continue;
        EXPECT_EQ(before.recordCount(entry.name), after.recordCount(entry.name)) << where;
        EXPECT_EQ(dumpTable(before, entry.name), dumpTable(after, entry.name)) << where;
        for (const IndexDef& index : layout.indexes)
            EXPECT_EQ(dumpBy(before, entry.name, index.name), dumpBy(after, entry.name, index.name))
                << where << ", index " << index.name;
    }
}

/// Rows of the catalog without the pages of tables.
std::vector<std::string> objectsOf(Store& store)
{
    const TableLayout layout = store.layout("MSysObjects");
    std::vector<std::string> rows;
    const auto cursor = store.cursor("MSysObjects", std::nullopt);
    for (bool on = cursor->first(); on; on = cursor->next()) {
        std::string row;
        for (std::size_t i = 0; i < layout.fields.size(); ++i) {
            const ValueView v = cursor->field(static_cast<int>(i));
            if (layout.fields[i].name == "Id" && v.asInteger() > 0 && v.asInteger() < 0x0F000000)
                row += "table,";
            else if (v.kind() == ValueKind::Bytes)
                row += std::string(v.asBytes().begin(), v.asBytes().end()) + ",";
            else if (v.kind() == ValueKind::Text)
                row += std::string(v.asText()) + ",";
            else if (v.kind() == ValueKind::Integer)
                row += std::to_string(v.asInteger()) + ",";
        }
        rows.push_back(row);
    }
    return rows;
}

TEST(Compact, everyFileOfTheCorpusKeepsAllItHas)
{
    const auto names = jet::corpusNames();
    if (names.empty())
        GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
    std::size_t before = 0, after = 0, number = 0;
    for (const std::string& name : names) {
        const std::string password = jet::corpusPassword(name);
        const auto files = memoryWith(jet::corpusFile(name));
        jet::JetDriver().compact(*files, reading(password), copyRequest());
        const auto source = jet::JetDriver().open(*files, reading(password));
        const auto copy = jet::JetDriver().open(*files, copyReading(password));
        expectSameContent(*source, *copy, name);
        EXPECT_EQ(objectsOf(*source), objectsOf(*copy)) << name;
        for (std::size_t fact = 0; fact < 8; ++fact)
            if (source->info({})[fact].first != "Pages") {
                EXPECT_EQ(source->info({})[fact], copy->info({})[fact]) << name;
            }
        // Other programs wrote some things that the outside checker minds; they are kept.
        const bool outside =
            number++ % 5 == 0 && outsideCheck(files->content(kTestFile), password).sound;
        expectSound(*files, password, name, outside);
        EXPECT_EQ(files->content(kTestFile), jet::corpusFile(name)) << "the source is as it was";
        before += files->content(kTestFile).size();
        after += files->content(kCopy).size();
    }
    EXPECT_LT(after, before);
}

class Compacting : public ::testing::TestWithParam<int> {
protected:
    void SetUp() override
    {
        CreateRequest request;
        request.name = kTestFile;
        request.options = GetParam() == 3 ? 32 : 0;
        driver_.create(files_, request);
    }
    static TableLayout notes()
    {
        TableLayout layout;
        layout.name = "Notes";
        layout.fields.resize(3);
        layout.fields[0].name = "ID";
        layout.fields[0].type = FieldType::Long;
        layout.fields[0].autonumber = true;
        layout.fields[1].name = "Name";
        layout.fields[1].size = 60;
        layout.fields[2].name = "Text";
        layout.fields[2].type = FieldType::Memo;
        IndexDef key, name, sparse;
        key.name = "PrimaryKey";
        key.fields = {{"ID", false}};
        key.primary = key.unique = key.required = true;
        name.name = "Name";
        name.fields = {{"Name", true}, {"ID", false}};
        sparse.name = "Sparse";
        sparse.fields = {{"Name", false}};
        sparse.ignoreNulls = true;
        layout.indexes = {key, name, sparse};
        return layout;
    }
    void fill(Store& store, int count)
    {
        const auto writer = store.writer("Notes");
        std::vector<RowId> rows;
        for (int i = 0; i < count; ++i) {
            const std::string name = "name " + std::to_string(i * 7919 % count);
            const std::string text(static_cast<std::size_t>(i * 97 % 9000),
                                   static_cast<char>('a' + i % 26));
            std::vector<ValueView> row(3);
            row[1] = i % 7 == 0 ? ValueView::null() : ValueView::text(name);
            row[2] = ValueView::text(text);
            rows.push_back(writer->insert(row));
        }
        const std::string longer(60, 'L');
        for (int i = 0; i < count; i += 5) {
            const FieldChange change{1, ValueView::text(longer)};
            writer->update(rows[static_cast<std::size_t>(i)], std::span(&change, 1));
        }
        for (int i = 1; i < count; i += 2)
            writer->remove(rows[static_cast<std::size_t>(i)]);
        store.commit();
    }
    int errorOf(const OpenRequest& from, const CreateRequest& to)
    {
        try {
            driver_.compact(files_, from, to);
        } catch (const EngineError& error) {
            return error.number();
        }
        return 0;
    }

    MemoryFileSystem files_;
    jet::JetDriver driver_;
};

TEST_P(Compacting, deletedRecordsGiveTheirSpaceBack)
{
    {
        const auto store = driver_.open(files_, writing());
        store->createTable(notes());
        fill(*store, 600);
    }
    driver_.compact(files_, reading(), copyRequest());
    EXPECT_LT(files_.content(kCopy).size() * 3, files_.content(kTestFile).size() * 2);
    const auto source = driver_.open(files_, reading());
    const auto copy = driver_.open(files_, copyReading(""));
    expectSameContent(*source, *copy, "made");
    expectSound(files_, "", "made", true);
}

TEST_P(Compacting, aCopyGoesOnLikeItsSource)
{
    {
        const auto store = driver_.open(files_, writing());
        store->createTable(notes());
        fill(*store, 100);
    }
    driver_.compact(files_, reading(), copyRequest());
    OpenRequest request = copyReading("");
    request.readOnly = false;
    {
        const auto copy = driver_.open(files_, request);
        const auto writer = copy->writer("Notes");
        const std::vector<ValueView> row(3);
        const RowId added = writer->insert(row);
        const auto cursor = copy->cursor("Notes", std::nullopt);
        ASSERT_TRUE(cursor->moveTo(added));
        EXPECT_EQ(cursor->field(0).asInteger(), 101) << "the last number was 100";
        fill(*copy, 300);
        TableLayout second = notes();
        second.name = "Second";
        copy->createTable(second);
        copy->commit();
    }
    expectSound(files_, "", "changed", true);
}

TEST_P(Compacting, aTargetThatIsThereAndASourceInUseAreRefused)
{
    files_.put(kCopy, std::vector<std::uint8_t>{1, 2, 3});
    EXPECT_EQ(errorOf(reading(), copyRequest()), 3204);
    EXPECT_EQ(files_.content(kCopy).size(), 3u);
    files_.remove(kCopy);
    CreateRequest itself = copyRequest();
    itself.name = kTestFile;
    EXPECT_EQ(errorOf(reading(), itself), 3204);
    const auto reader = driver_.open(files_, reading());
    EXPECT_EQ(errorOf(reading(), copyRequest()), 3045);
    EXPECT_FALSE(files_.exists(kCopy));
    EXPECT_FALSE(files_.exists(std::string(kCopy) + "-new"));
}

TEST_P(Compacting, thePasswordStaysOrIsAnotherOne)
{
    driver_.open(files_, writing())->changePassword("one");
    EXPECT_EQ(errorOf(reading(), copyRequest()), 3031);
    ASSERT_EQ(errorOf(reading("one"), copyRequest()), 0);
    EXPECT_THROW(driver_.open(files_, copyReading("two")), EngineError);
    driver_.open(files_, copyReading("one"));
    files_.remove(kCopy);
    CreateRequest other = copyRequest();
    other.keepPassword = false;
    other.password = "two";
    ASSERT_EQ(errorOf(reading("one"), other), 0);
    EXPECT_THROW(driver_.open(files_, copyReading("one")), EngineError);
    driver_.open(files_, copyReading("two"));
    expectSound(files_, "two", "two", true);
}

TEST_P(Compacting, pagesAreEncodedAndWrittenPlainAgain)
{
    {
        const auto store = driver_.open(files_, writing());
        store->createTable(notes());
        fill(*store, 60);
    }
    const auto holds = [](const std::vector<std::uint8_t>& bytes) {
        const std::string text = "LLLLLLLLLLLLLLLL";
        return std::search(bytes.begin(), bytes.end(), text.begin(), text.end()) != bytes.end();
    };
    const auto plain = files_.content(kTestFile);
    ASSERT_TRUE(holds(plain));
    ASSERT_EQ(errorOf(reading(), copyRequest(2)), 0);
    EXPECT_FALSE(holds(files_.content(kCopy)));
    EXPECT_EQ(driver_.open(files_, copyReading(""))->info({})[7].second, "yes");
    expectSameContent(*driver_.open(files_, reading()), *driver_.open(files_, copyReading("")),
                      "encoded");
    expectSound(files_, "", "encoded", true);
    {  // it is written as well as read
        OpenRequest request = copyReading("");
        request.readOnly = false;
        fill(*driver_.open(files_, request), 40);
        expectSound(files_, "", "encoded and changed", true);
    }
    files_.put(kTestFile, files_.content(kCopy));
    files_.remove(kCopy);
    ASSERT_EQ(errorOf(reading(), copyRequest()), 0);
    EXPECT_FALSE(holds(files_.content(kCopy))) << "stays encoded unless told otherwise";
    files_.remove(kCopy);
    ASSERT_EQ(errorOf(reading(), copyRequest(4)), 0);
    EXPECT_TRUE(holds(files_.content(kCopy)));
    EXPECT_EQ(driver_.open(files_, copyReading(""))->info({})[7].second, "no");
}

TEST_P(Compacting, anotherVersionIsRefused)
{
    EXPECT_EQ(errorOf(reading(), copyRequest(GetParam() == 3 ? 64 : 32)), 3251);
    EXPECT_FALSE(files_.exists(kCopy));
    EXPECT_EQ(errorOf(reading(), copyRequest(GetParam() == 3 ? 32 : 64)), 0);
}

TEST_P(Compacting, aFailingDiskLeavesTheSourceAndNoCopy)
{
    {
        const auto store = driver_.open(files_, writing());
        store->createTable(notes());
        fill(*store, 60);
    }
    const auto old = files_.content(kTestFile);
    int failures = 0;
    for (const bool cut : {false, true})
        for (long n = 1;; ++n) {
            ASSERT_LT(n, 2000);
            FaultyDisk disk(static_cast<unsigned>(n));
            disk.put(kTestFile, old);
            if (cut)
                disk.cutAt(n);
            else
                disk.failAt(n, RunErrorNumber::DiskFull);
            int number = 0;
            try {
                driver_.compact(disk, reading(), copyRequest());
            } catch (const EngineError& error) {
                number = error.number();
            } catch (const RunError& error) {
                number = error.number();
            }
            const bool done = cut ? !disk.wasCut() : !disk.hasFailed();
            if (cut)
                disk.restart();
            EXPECT_EQ(disk.content(kTestFile), old) << n;
            if (disk.exists(kCopy)) {
                const auto copy = driver_.open(disk, copyReading(""));
                copy->check({}, [&](const Problem& problem) { ADD_FAILURE() << problem.text; });
                EXPECT_EQ(dumpTable(*driver_.open(disk, reading()), "Notes"),
                          dumpTable(*copy, "Notes"));
            } else {
                EXPECT_NE(number, 0) << n;
            }
            failures += number != 0;
            if (done)
                break;
            if (!cut) {
                disk.clearFaults();
                if (!disk.exists(kCopy))
                    driver_.compact(disk, reading(), copyRequest());
            }
        }
    EXPECT_GT(failures, 10);
}

INSTANTIATE_TEST_SUITE_P(Jet, Compacting, ::testing::Values(3, 4));

TEST(Compact, damageIsRefusedAndLeavesNoCopy)
{
    if (corpusFolder().empty())
        GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
    for (const char* name : {"bad/jet4-map.mdb", "bad/jet4-memo-pointer.mdb",
                             "bad/jet4-zero-page.mdb", "bad/jet3-zero-page.mdb"}) {
        const auto files = memoryWith(readBytes(corpusFolder() + name));
        int number = 0;
        try {
            jet::JetDriver().compact(*files, reading(), copyRequest());
        } catch (const EngineError& error) {
            number = error.number();
        }
        EXPECT_EQ(number, 3197) << name;
        EXPECT_FALSE(files->exists(kCopy));
        EXPECT_FALSE(files->exists(std::string(kCopy) + "-new"));
    }
}

}  // namespace
}  // namespace velnor::testing
