// access/formats/paradox/index_cursor.h - walks and searches the records of a table in the order of
// a secondary index.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "access/formats/paradox/chain_walker.h"
#include "access/formats/paradox/record_view.h"

namespace velnor::paradox {

class IndexCursor final : public RowCursor {
public:
    /// 3015 when there is no such index, 3800 when it is older than the table.
    IndexCursor(std::shared_ptr<DbTable> table, std::string_view index);

    bool first() override;
    bool last() override;
    bool next() override;
    bool previous() override;
    bool moveTo(RowId row) override;
    bool moveToOrdinal(std::int64_t n) override;
    std::int64_t ordinal() override;
    bool seek(Comparison comparison, std::span<const ValueView> key) override;
    RowId row() const override { return row_; }
    ValueView field(int n) override { return view_.field(static_cast<std::size_t>(n)); }
    void fields(std::span<ValueView> out) override { view_.fields(out); }

private:
    SecondaryIndex& refresh();
    bool stand(bool on, bool forward);
    std::optional<Place> recordOf(const std::uint8_t* entry);

    std::shared_ptr<DbTable> table_;
    std::string name_;
    SecondaryIndex* index_ = nullptr;
    ChainWalker walker_;
    RecordView view_;
    std::vector<std::uint8_t> record_;
    RowId row_ = 0;
};

/// The secondary index with this name; null when there is none.
SecondaryIndex* findIndex(DbTable& table, std::string_view name);

}  // namespace velnor::paradox
