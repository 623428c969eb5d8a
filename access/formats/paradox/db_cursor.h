// access/formats/paradox/db_cursor.h - walks the records of a table in their own order, which in a
// keyed table is that of the primary key.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "access/formats/paradox/chain_walker.h"
#include "access/formats/paradox/record_view.h"

namespace velnor::paradox {

class DbCursor final : public RowCursor {
public:
    /// `byKey`: by the primary index, so seek() is allowed.
    DbCursor(std::shared_ptr<DbTable> table, bool byKey);

    bool first() override;
    bool last() override;
    bool next() override;
    bool previous() override;
    bool moveTo(RowId row) override;
    bool moveToOrdinal(std::int64_t n) override;
    std::int64_t ordinal() override;
    bool seek(Comparison comparison, std::span<const ValueView> key) override;
    RowId row() const override;
    ValueView field(int n) override { return view_.field(static_cast<std::size_t>(n)); }
    void fields(std::span<ValueView> out) override { view_.fields(out); }

private:
    void refresh();
    bool stand(bool on);

    std::shared_ptr<DbTable> table_;
    bool byKey_;
    ChainWalker walker_;
    RecordView view_;
};

/// The start of a key from the values of its first fields, for a search. False when a value had to
/// be replaced by the nearest one that can be stored: then nothing is equal to it.
bool makeKeyPrefix(const DbTable& table, std::span<const StoredField> fields,
                   std::span<const ValueView> values, std::vector<std::uint8_t>& key);

}  // namespace velnor::paradox
