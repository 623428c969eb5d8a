// Maps of pages: in a record, on pages of bits, and in files large enough to need both.
#include <random>
#include <set>

#include <gtest/gtest.h>

#include "access/formats/jet/data_page.h"
#include "access/formats/jet/jet_driver.h"
#include "access/formats/jet/jet_file.h"
#include "access/formats/jet/structure.h"
#include "access/formats/jet/usage_map.h"
#include "tests/access/jet/jet_testing.h"

namespace velnor::testing {
namespace {

using jet::PageNumber;
using jet::UsageMap;

class Maps : public ::testing::TestWithParam<int> {
protected:
    void SetUp() override
    {
        CreateRequest request;
        request.name = kTestFile;
        request.options = GetParam() == 3 ? 32 : 0;
        jet::JetDriver().create(files_, request);
        file_ = std::make_unique<jet::JetFile>(files_, writing());
    }
    UsageMap newMap() { return UsageMap(*file_, jet::MapRecords(*file_).add()); }
    /// What some programs do when the map of free pages gets too short: it begins at a later page.
    void moveFreeMapTo(PageNumber start)
    {
        PageRef page = file_->page(1);
        std::uint8_t* bytes = page.edit();
        const auto row = *jet::DataPage(file_->format(), bytes).row(0);
        std::uint8_t* record = bytes + (row.data() - bytes);
        storeLE(record + 1, start);
        for (std::size_t bit = 0; bit < (row.size() - 5) * 8; ++bit) {
            const auto mask = static_cast<std::uint8_t>(1u << bit % 8);
            std::uint8_t& byte = record[5 + bit / 8];
            const bool free = start + bit >= file_->pageCount();
            byte = static_cast<std::uint8_t>(free ? byte | mask : byte & ~mask);
        }
    }

    MemoryFileSystem files_;
    std::unique_ptr<jet::JetFile> file_;
};

TEST_P(Maps, holdWhatWasPutIn)
{
    std::mt19937 random(3);
    // Near pages stay in the record, far ones need pages of bits.
    for (const PageNumber range : {300u, 3000u, 100000u}) {
        UsageMap map = newMap();
        std::set<PageNumber> model;
        for (int step = 0; step < 3000; ++step) {
            const PageNumber page = 1 + random() % range;
            if (random() % 3) {
                map.add(page);
                model.insert(page);
            } else {
                map.remove(page);
                model.erase(page);
            }
            const PageNumber asked = 1 + random() % range;
            ASSERT_EQ(map.contains(asked), model.contains(asked));
            const auto behind = model.lower_bound(asked);
            ASSERT_EQ(map.next(asked), behind == model.end() ? 0 : *behind);
        }
        EXPECT_EQ(map.mapPages().empty(), range == 300);
        EXPECT_EQ(map.empty(), model.empty());
    }
}

TEST_P(Maps, anEmptyMapMovesToItsFirstPage)
{
    UsageMap map = newMap();
    map.add(9001);
    EXPECT_TRUE(map.mapPages().empty());
    EXPECT_TRUE(map.contains(9001));
    EXPECT_EQ(map.next(1), 9001u);
    map.add(9002);
    EXPECT_TRUE(map.mapPages().empty());
    map.add(20);
    EXPECT_EQ(map.next(1), 20u);
    EXPECT_EQ(map.next(21), 9001u);
    EXPECT_EQ(map.next(9003), 0u);
}

TEST_P(Maps, noPageIsHandedOutTwiceHoweverManyThereAre)
{
    std::set<PageNumber> taken;
    for (int i = 0; i < 20000; ++i)
        ASSERT_TRUE(taken.insert(file_->allocate()).second);
    // The pages that the map of free pages took for itself are in use as well.
    for (const PageNumber page : file_->freePages().mapPages()) {
        EXPECT_FALSE(taken.contains(page));
        EXPECT_FALSE(file_->isFree(page));
    }
    for (const PageNumber page : {*taken.begin(), *taken.rbegin()}) {
        EXPECT_FALSE(file_->isFree(page));
        file_->release(page, jet::page_type::kFreed);
        EXPECT_TRUE(file_->isFree(page));
        EXPECT_EQ(file_->allocate(), page);
    }
}

TEST_P(Maps, pagesBeforeTheStartOfTheFreeMapAreInUse_howeverFarItGrows)
{
    constexpr PageNumber kStart = 16;
    const PageNumber pages = file_->pageCount();
    moveFreeMapTo(kStart);
    for (PageNumber page = 0; page < kStart; ++page)
        EXPECT_FALSE(file_->isFree(page)) << page;
    file_->commit();
    file_.reset();
    file_ = std::make_unique<jet::JetFile>(files_, writing());
    std::set<PageNumber> taken;
    for (int i = 0; i < 5000; ++i)
        ASSERT_TRUE(taken.insert(file_->allocate()).second);
    EXPECT_GE(*taken.begin(), pages);
    EXPECT_FALSE(file_->freePages().mapPages().empty()) << "it has outgrown its record";
    for (PageNumber page = 0; page < kStart; ++page)
        EXPECT_FALSE(file_->isFree(page)) << page;
}

TEST_P(Maps, aPageBeforeTheStartOfTheFreeMapCanBeGivenBack)
{
    moveFreeMapTo(16);
    file_->release(10, jet::page_type::kFreed);
    EXPECT_TRUE(file_->isFree(10));
    EXPECT_FALSE(file_->isFree(9));
    EXPECT_FALSE(file_->isFree(11));
    EXPECT_TRUE(file_->isFree(4000));
    EXPECT_EQ(file_->allocate(), 10u);
    EXPECT_GE(file_->allocate(), 16u);
}

TEST_P(Maps, aFileWhoseFreeMapStartsLaterIsSound)
{
    moveFreeMapTo(16);
    file_->commit();
    file_.reset();
    const auto store = jet::JetDriver().open(files_, reading());
    store->check({}, [](const Problem& problem) {
        ADD_FAILURE() << problem.where << ": " << problem.text;
    });
}

TEST_P(Maps, damagedRecordsAreErrors)
{
    UsageMap map = newMap();
    map.add(100);
    const jet::RowPointer record = map.record();
    const auto patch = [&](std::uint8_t type) {
        PageRef page = file_->page(record.page);
        std::uint8_t* bytes = page.edit();
        const jet::DataPage view(file_->format(), bytes);
        bytes[view.entry(record.slot) & jet::row_flag::kOffset] = type;
    };
    patch(7);
    EXPECT_THROW(map.contains(100), EngineError);
    patch(1);  // a reference map whose first page is no page of bits
    EXPECT_THROW(map.next(1), EngineError);
    EXPECT_THROW(UsageMap(*file_, {2, 0}).next(1), EngineError);
    EXPECT_THROW(UsageMap(*file_, {999999, 0}).next(1), EngineError);
}

TEST_P(Maps, aLargeTableIsSound)
{
    file_.reset();
    TableLayout layout;
    layout.name = "Large";
    layout.fields.resize(3);
    layout.fields[0].name = "ID";
    layout.fields[0].type = FieldType::Long;
    layout.fields[1].name = "Text";
    layout.fields[1].size = 200;
    layout.fields[2].name = "Ole";
    layout.fields[2].type = FieldType::LongBinary;
    IndexDef key;
    key.name = "Text";
    key.fields = {{"Text", false}};
    layout.indexes = {key};
    const int count = 12000;
    const std::vector<std::uint8_t> blob(600000, 0x5A);
    {
        const auto store = jet::JetDriver().open(files_, writing());
        store->createTable(layout);
        const auto writer = store->writer("Large");
        std::vector<ValueView> row(3);
        for (int i = 0; i < count; ++i) {
            const std::string text = std::to_string(i * 7919 % count) + std::string(180, 'x');
            row[0] = ValueView::integer(i);
            row[1] = ValueView::text(text);
            // Jet 3 pages of bits reach over 32 MB: enough long values pass that.
            row[2] = i % 200 == 0 ? ValueView::bytes(blob) : ValueView::null();
            writer->insert(row);
        }
        store->commit();
    }
    const auto store = jet::JetDriver().open(files_, reading());
    EXPECT_EQ(store->recordCount("Large"), count);
    int faults = 0;
    store->check({}, [&](const Problem& problem) {
        if (!problem.harmless && ++faults < 5)
            ADD_FAILURE() << problem.where << ": " << problem.text;
    });
    EXPECT_EQ(faults, 0);
    const auto cursor = store->cursor("Large", "Text");
    int entries = 0;
    for (bool on = cursor->first(); on; on = cursor->next())
        ++entries;
    EXPECT_EQ(entries, count);
    const Verdict verdict = outsideCheck(files_.content(kTestFile));
    if (verdict.available) {
        EXPECT_TRUE(verdict.sound) << verdict.output.substr(0, 2000);
    }
}

INSTANTIATE_TEST_SUITE_P(Jet, Maps, ::testing::Values(3, 4));

}  // namespace
}  // namespace velnor::testing
