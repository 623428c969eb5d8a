// access/sql/row_road.h - the ways to the records that a statement asks of a table: past all of
// them, along an index, or through records that were kept in memory.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "access/sql/run_context.h"
#include "access/sql/scan_test.h"
#include "access/sql/source_table.h"

namespace velnor::sql {

class RowRoad {
public:
    virtual ~RowRoad() = default;
    virtual bool first() = 0;
    virtual bool next() = 0;
    virtual RowId row() const = 0;
    /// The field in its plain form; a text is good until the road goes on.
    virtual ValueView plain(int field) = 0;
    virtual ValueView exact(int field) = 0;
    /// The field as the table has it.
    virtual ValueView raw(int field) = 0;
    /// The columns of a grouping (grouping.h), from 0; other roads have none.
    virtual ValueView further(int) { return {}; }
    /// The first out.size() fields as the table has them.
    virtual void rawFields(std::span<ValueView> out)
    {
        for (std::size_t i = 0; i < out.size(); ++i)
            out[i] = raw(static_cast<int>(i));
    }
};

using Tests = std::vector<ScanTest>;

/// What the roads along a cursor share.
class CursorRoad : public RowRoad {
public:
    CursorRoad(std::shared_ptr<RowCursor> cursor, Tests tests, RunContext& context)
        : cursor_(std::move(cursor)), tests_(std::move(tests)), context_(context)
    {
    }
    RowId row() const override { return cursor_->row(); }
    ValueView plain(int field) override { return plainValue(cursor_->field(field)); }
    ValueView exact(int field) override { return exactValue(cursor_->field(field), scratch_); }
    ValueView raw(int field) override { return cursor_->field(field); }
    void rawFields(std::span<ValueView> out) override { cursor_->fields(out); }
    RowCursor& cursor() { return *cursor_; }

protected:
    bool passes() const
    {
        for (const ScanTest& test : tests_)
            if (!test.passes(*cursor_))
                return false;
        return true;
    }
    RunContext& context() { return context_; }

private:
    std::shared_ptr<RowCursor> cursor_;
    Tests tests_;
    RunContext& context_;
    std::string scratch_;
};

/// All records in the cursor's order, or in the opposite one.
class ScanRoad final : public CursorRoad {
public:
    ScanRoad(std::shared_ptr<RowCursor> cursor, Tests tests, RunContext& context, bool backwards)
        : CursorRoad(std::move(cursor), std::move(tests), context), backwards_(backwards)
    {
    }
    bool first() override { return settle(backwards_ ? cursor().last() : cursor().first()); }
    bool next() override { return settle(backwards_ ? cursor().previous() : cursor().next()); }

private:
    bool settle(bool there);
    bool backwards_;
};

/// The part of an index between two keys, both counted in.
class IndexRoad final : public CursorRoad {
public:
    struct Bounds {
        std::vector<Value> low, high;  ///< either may be empty
    };
    /// `end` is a second cursor on the index: it finds where the part ends.
    IndexRoad(std::shared_ptr<RowCursor> cursor, std::shared_ptr<RowCursor> end, Bounds bounds,
              Tests tests, RunContext& context, bool backwards);
    bool first() override;
    bool next() override;

private:
    bool settle(bool there);

    std::shared_ptr<RowCursor> end_;
    Bounds bounds_;
    bool backwards_;
    bool hasEnd_ = false;
    RowId endRow_ = 0;
};

/// An index ordered by character codes, searched for a text blind to case: it jumps from one
/// spelling that may stand there to the next one.
class SpellingRoad final : public CursorRoad {
public:
    SpellingRoad(std::shared_ptr<RowCursor> cursor, int field, std::string text, Tests tests,
                 RunContext& context);
    bool first() override;
    bool next() override;

private:
    bool settle(bool there);

    int field_;
    std::string text_;
    std::string wanted_;
};

/// The least spelling of `text` (ASCII) that is not below `from`, by character codes; false when
/// there is none.
bool nextSpelling(std::string_view text, std::string_view from, std::string& spelling);

}  // namespace velnor::sql
