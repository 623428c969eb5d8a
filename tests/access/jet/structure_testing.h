// tests/access/jet/structure_testing.h - a database of each version whose tables change, judged by
// its own check and by the outside checker.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "access/formats/jet/jet_driver.h"
#include "access/value_text.h"
#include "tests/access/jet/jet_testing.h"
#include "tests/access/support/store_testing.h"

namespace velnor::testing {

using store_testing::errorOf;
using store_testing::fieldDef;
using store_testing::layoutOf;

inline IndexDef indexNamed(std::string name, std::vector<IndexFieldDef> fields)
{
    IndexDef index;
    index.name = std::move(name);
    index.fields = std::move(fields);
    return index;
}

inline IndexDef uniqueIndex(std::string name, std::vector<IndexFieldDef> fields)
{
    IndexDef index = indexNamed(std::move(name), std::move(fields));
    index.unique = true;
    return index;
}

inline IndexDef primaryKey(std::vector<IndexFieldDef> fields)
{
    IndexDef index = uniqueIndex("PrimaryKey", std::move(fields));
    index.primary = index.required = true;
    return index;
}

class Structures : public ::testing::TestWithParam<int> {
protected:
    void SetUp() override
    {
        CreateRequest request;
        request.name = kTestFile;
        request.options = GetParam() == 3 ? 32 : 0;
        driver_.create(files_, request);
        store_ = driver_.open(files_, writing());
    }
    bool jet4() const { return GetParam() == 4; }
    std::vector<std::uint8_t> content() const { return files_.content(kTestFile); }
    void reopen()
    {
        store_->commit();
        store_.reset();
        store_ = driver_.open(files_, writing());
    }
    void expectSound()
    {
        store_->commit();
        EXPECT_THAT(store_testing::faultsOf(*store_), ::testing::IsEmpty());
        const Verdict verdict = outsideCheck(content());
        if (verdict.available) {
            EXPECT_TRUE(verdict.sound) << verdict.output;
        }
    }
    void makeTable(std::vector<FieldDef> fields, std::vector<IndexDef> indexes = {})
    {
        store_->createTable(layoutOf("T", std::move(fields), std::move(indexes)));
    }
    /// ID Long, NAME Text 60, NOTE Memo.
    void makeNotes(std::vector<IndexDef> indexes = {})
    {
        makeTable({fieldDef("ID", FieldType::Long), fieldDef("NAME", FieldType::Text, 60),
                   fieldDef("NOTE", FieldType::Memo)},
                  std::move(indexes));
    }
    void addNotes(int count, int from = 0)
    {
        const auto writer = store_->writer("T");
        for (int i = from; i < from + count; ++i) {
            const std::string name = "name " + std::to_string(i * 7919 % 10007);
            const std::string note(static_cast<std::size_t>(i * 37 % 3000), 'n');
            const ValueView row[] = {ValueView::integer(i), ValueView::text(name),
                                     ValueView::text(note)};
            writer->insert(row);
        }
    }
    /// Field n of all records in the order of an index.
    std::vector<std::string> column(int n, std::optional<std::string_view> index = std::nullopt)
    {
        std::vector<std::string> all;
        const auto cursor = store_->cursor("T", index);
        for (bool on = cursor->first(); on; on = cursor->next())
            all.push_back(shownValue(cursor->field(n)));
        return all;
    }
    static std::string shownValue(ValueView v)
    {
        std::string text;
        appendText(text, v);
        return v.isNull() ? "Null" : text;
    }

    MemoryFileSystem files_;
    jet::JetDriver driver_;
    std::unique_ptr<Store> store_;
};

}  // namespace velnor::testing
