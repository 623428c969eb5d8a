#include "access/formats/text/text_cursor.h"

#include <algorithm>

#include "access/formats/text/text_value.h"
#include "access/value_text.h"

namespace velnor::text {

TextCursor::TextCursor(std::shared_ptr<TextTable> table)
    : table_(std::move(table)), reader_(table_->file(), table_->form(), table_->end()),
      generation_(table_->generation()), scratch_(table_->fields().size())
{
}

void TextCursor::dropStale()
{
    const std::uint64_t generation = table_->generation();
    if (generation == generation_)
        return;
    generation_ = generation;
    reader_.refresh(table_->end());
    gathered_.clear();
}

bool TextCursor::standFrom(std::uint64_t offset)
{
    dropStale();
    if (table_->places().empty() || table_->fields().empty()) {
        standing_ = Standing::Behind;
        return false;
    }
    while (reader_.readAt(offset)) {
        if (!reader_.blank() || table_->facts().blankLinesCount) {
            place_ = reader_.start();
            behind_ = reader_.behind();
            standing_ = Standing::Record;
            return true;
        }
        offset = reader_.behind();
    }
    behind_ = offset;
    standing_ = Standing::Behind;
    return false;
}

/// The places of the records from a known one to this offset.
void TextCursor::gather(std::uint64_t offset)
{
    const auto from = table_->places().atOffset(offset - 1);
    gathered_.clear();
    for (bool there = standFrom(from.offset); there && place_ < offset; there = standFrom(behind_))
        gathered_.push_back(place_);
}

/// Stands on the last record that begins in front of an offset.
bool TextCursor::standBefore(std::uint64_t offset)
{
    dropStale();
    if (table_->places().empty() || offset <= table_->facts().firstRecord) {
        standing_ = Standing::Before;
        return false;
    }
    if (gathered_.empty())
        gather(offset);
    if (gathered_.empty()) {
        standing_ = Standing::Before;
        return false;
    }
    const std::uint64_t place = gathered_.back();
    gathered_.pop_back();
    return standFrom(place);
}

bool TextCursor::first()
{
    gathered_.clear();
    return standFrom(table_->facts().firstRecord);
}

bool TextCursor::last()
{
    gathered_.clear();
    return standBefore(table_->end());
}

bool TextCursor::next()
{
    gathered_.clear();
    return standFrom(standing_ == Standing::Before ? table_->facts().firstRecord : behind_);
}

bool TextCursor::previous()
{
    return standBefore(standing_ == Standing::Behind   ? table_->end()
                       : standing_ == Standing::Record ? place_
                                                       : 0);
}

bool TextCursor::moveTo(RowId row)
{
    gathered_.clear();
    if (row < table_->facts().firstRecord || row >= table_->end())
        return false;
    return standFrom(row);
}

bool TextCursor::moveToOrdinal(std::int64_t n)
{
    gathered_.clear();
    if (n < 0 || n >= table_->recordCount())
        return false;
    const auto from = table_->places().atOrdinal(n);
    bool there = standFrom(from.offset);
    for (std::int64_t at = from.ordinal; there && at < n; ++at)
        there = standFrom(behind_);
    return there;
}

std::int64_t TextCursor::ordinal()
{
    if (standing_ != Standing::Record)
        return 0;
    const std::uint64_t here = place_;
    const auto from = table_->places().atOffset(here);
    std::int64_t at = from.ordinal;
    for (bool there = standFrom(from.offset); there && place_ < here; there = standFrom(behind_))
        ++at;
    return at;
}

ValueView TextCursor::value(std::size_t n)
{
    if (n >= reader_.fields().size())
        return {};  // the line has fewer fields
    const Slice& slice = reader_.fields()[n];
    if (slice.raw.empty())
        return {};
    Scratch& scratch = scratch_[n];
    const TextForm& form = table_->form();
    std::string_view text = reader_.raw(n, scratch.unquoted);
    const FieldType type = table_->fields()[n].type;
    if (valueKindOf(type) == ValueKind::Text && !form.encoding.wide())
        text = form.encoding.page->decode(text, scratch.decoded);
    return readValue(type, text, form, scratch.decoded);
}

ValueView TextCursor::field(int n)
{
    const auto at = static_cast<std::size_t>(n);
    if (standing_ != Standing::Record || at >= scratch_.size())
        throw EngineError(EngineErrorNumber::NoCurrentRecord, "There is no current record.");
    return value(at);
}

void TextCursor::fields(std::span<ValueView> out)
{
    if (standing_ != Standing::Record || out.size() > scratch_.size())
        throw EngineError(EngineErrorNumber::NoCurrentRecord, "There is no current record.");
    for (std::size_t at = 0; at < out.size(); ++at)
        out[at] = value(at);
}

}  // namespace velnor::text
