// access/formats/xbase/index_cursor.h - walks and searches the records of a table in the order of
// one index.
#pragma once

#include <array>
#include <optional>
#include <string>

#include "access/formats/xbase/dbf_cursor.h"
#include "access/formats/xbase/index_tree.h"
#include "access/formats/xbase/table_index.h"

namespace velnor::xbase {

class IndexCursor final : public RowCursor {
public:
    /// 3015 when there is no such index, 3800 when it cannot be walked.
    IndexCursor(std::shared_ptr<DbfTable> table, std::string_view index);

    bool first() override;
    bool last() override;
    bool next() override;
    bool previous() override;
    bool moveTo(RowId row) override;
    bool seek(Comparison comparison, std::span<const ValueView> key) override;
    RowId row() const override { return rows_.row(); }
    ValueView field(int n) override { return rows_.field(n); }
    void fields(std::span<ValueView> out) override { rows_.fields(out); }

private:
    enum class Stand { Before, On, Behind };

    TableIndex& index();
    void refresh();
    bool step(bool forward);
    bool settle(bool there, bool forward);
    bool makeSeekKey(std::span<const ValueView> key, std::size_t& length);
    void putSeekValues(std::span<const ValueView> key, std::uint8_t filler);

    std::shared_ptr<DbfTable> table_;
    std::string name_;
    DbfCursor rows_;
    TableIndex* index_ = nullptr;
    std::optional<TreeWalker> walker_;
    std::uint64_t epoch_ = 0, generation_ = 0;
    Stand stand_ = Stand::Before;
    bool exact_ = true;  // the walker stands on the entry; else behind where it was
    std::array<std::uint8_t, kLongestKey> key_{}, wanted_{};
    std::uint32_t record_ = 0;
    std::vector<std::uint8_t> image_;
    std::string scratch_;
    bool cut_ = false;  // a wanted text was longer than its field
};

}  // namespace velnor::xbase
