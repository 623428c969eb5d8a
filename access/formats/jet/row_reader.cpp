// A stored row to values.
#include <charconv>
#include <cmath>

#include "access/formats/jet/column_width.h"
#include "access/formats/jet/row_codec.h"
#include "access/formats/jet/text_compression.h"
#include "access/storage/byte_reader.h"

namespace velnor::jet {
namespace {

using Bytes = std::span<const std::uint8_t>;

ValueView decimalValue(Bytes stored, std::uint8_t scale)
{
    const std::uint8_t* p = stored.data();
    const auto word = [p](int n) { return loadLE<std::uint32_t>(p + 1 + 4 * n); };
    // 128 bits are stored, most significant word first; values have at most 96.
    const std::uint64_t low = std::uint64_t{word(2)} << 32 | word(3);
    return ValueView::decimal(p[0] != 0, word(1), low, scale);
}

std::string_view asChars(Bytes bytes)
{
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace

bool RowReader::open(Bytes row)
{
    row_ = row.data();
    size_ = static_cast<std::uint32_t>(row.size());
    slots_ = 0;
    return plan_->format->row.wide ? openWide() : openNarrow();
}

bool RowReader::openWide()
{
    if (size_ < 3)
        return false;
    columns_ = loadLE<std::uint16_t>(row_);
    const std::uint32_t mask = (columns_ + 7) / 8;
    if (columns_ > kMaxColumns || size_ < 2 + mask)
        return false;
    dataEnd_ = size_ - mask;
    mask_ = row_ + dataEnd_;
    if (plan_->firstVariableId >= columns_)
        return true;
    if (dataEnd_ < 6)
        return false;
    slots_ = loadLE<std::uint16_t>(row_ + dataEnd_ - 2);
    if (slots_ > kMaxColumns || dataEnd_ < 2 + 2 + 2 * (slots_ + 1))
        return false;
    offsetsAt_ = dataEnd_ - 4;
    dataEnd_ = dataEnd_ - 2 - 2 * (slots_ + 1);
    return true;
}

bool RowReader::openNarrow()
{
    if (size_ < 2)
        return false;
    columns_ = row_[0];
    const std::uint32_t mask = (columns_ + 7) / 8;
    if (size_ < 1 + mask)
        return false;
    dataEnd_ = size_ - mask;
    mask_ = row_ + dataEnd_;
    if (plan_->firstVariableId >= columns_)
        return true;
    jumps_ = (size_ - 1) / 256;
    if (dataEnd_ < 1 + 1 + jumps_ + 1)
        return false;
    slots_ = row_[dataEnd_ - 1];
    if (dataEnd_ < 1 + 1 + jumps_ + slots_ + 1)
        return false;
    offsetsAt_ = dataEnd_ - 1 - jumps_ - 1;
    dataEnd_ = dataEnd_ - 1 - jumps_ - (slots_ + 1);
    return true;
}

bool RowReader::isNull(int field) const
{
    const FieldPlan& f = plan_->fields[field];
    return f.id >= columns_ || !(mask_[f.id / 8] >> (f.id % 8) & 1);
}

/// Where a slot's data begins; of the slot behind the last: where the last one's ends.
std::uint32_t RowReader::offset(std::uint16_t slot) const
{
    if (plan_->format->row.wide)
        return loadLE<std::uint16_t>(row_ + offsetsAt_ - 2 * slot);
    std::uint32_t at = row_[offsetsAt_ - slot];
    // A jump byte tells from which slot on 256 more is meant; 0xFF: from none.
    const std::uint8_t* jump = row_ + offsetsAt_ + jumps_;
    for (std::uint32_t k = 0; k < jumps_ && *jump <= slot && *jump != 0xFF; ++k, --jump)
        at += 256;
    return at;
}

std::optional<Bytes> RowReader::variable(std::uint16_t slot) const
{
    if (slot >= slots_)
        return std::nullopt;
    const std::uint32_t from = offset(slot);
    const std::uint32_t to = offset(static_cast<std::uint16_t>(slot + 1));
    if (from > to || to > dataEnd_)
        return std::nullopt;
    return Bytes(row_ + from, to - from);
}

std::optional<Bytes> RowReader::raw(int field) const
{
    if (isNull(field))
        return std::nullopt;
    const FieldPlan& f = plan_->fields[field];
    if (!f.fixed)
        return variable(f.place);
    const std::uint32_t from = (plan_->format->row.wide ? 2u : 1u) + f.place;
    if (f.type == column_type::kBoolean)
        return Bytes(row_, 0);
    if (from + f.length > dataEnd_)
        return std::nullopt;
    return Bytes(row_ + from, f.length);
}

ValueView RowReader::value(int field, std::string& scratch) const
{
    const FieldPlan& f = plan_->fields[field];
    if (f.type == column_type::kBoolean)
        return ValueView::boolean(!isNull(field));
    const auto stored = raw(field);
    if (!stored)
        return ValueView::null();
    const std::uint8_t* p = stored->data();
    if (static_cast<int>(stored->size()) < fixedWidth(f.type))
        return ValueView::null();
    switch (f.type) {
    case column_type::kByte:
        return ValueView::integer(*p);
    case column_type::kInteger:
        return ValueView::integer(loadLE<std::int16_t>(p));
    case column_type::kLong:
        return ValueView::integer(loadLE<std::int32_t>(p));
    case column_type::kCurrency:
        return ValueView::currency(loadLE<std::int64_t>(p));
    case column_type::kSingle:
        return ValueView::real(shortestDouble(loadLE<float>(p)));
    case column_type::kDouble:
        return ValueView::real(loadLE<double>(p));
    case column_type::kDate:
        return ValueView::date(loadLE<double>(p));
    case column_type::kText:
        return ValueView::text(plan_->format->wideText
                                   ? decodeText(*stored, scratch)
                                   : plan_->codePage->decode(asChars(*stored), scratch));
    case column_type::kGuid:
        return ValueView::text(guidText(stored->first<16>(), scratch));
    case column_type::kDecimal:
        return decimalValue(*stored, f.scale);
    default:
        return ValueView::bytes(*stored);
    }
}

bool RowReader::sound() const
{
    for (int i = 0; i < static_cast<int>(plan_->fields.size()); ++i) {
        const FieldPlan& f = plan_->fields[i];
        if (isNull(i) || f.type == column_type::kBoolean)
            continue;
        const auto stored = raw(i);
        if (!stored || static_cast<int>(stored->size()) < fixedWidth(f.type))
            return false;
    }
    return true;
}

double shortestDouble(float single)
{
    const double exact = single;
    if (!std::isfinite(single) || (std::fabs(exact) < 0x1p24 && exact == std::nearbyint(exact)))
        return exact;
    // Most values people keep have few digits behind the point: try those before the long way.
    if (std::fabs(exact) < 1e6) {
        for (const double power : {10.0, 100.0, 1000.0}) {
            const double scaled = std::nearbyint(exact * power);
            if (std::fabs(scaled) < 1e6 && static_cast<float>(scaled / power) == single)
                return scaled / power;
        }
    }
    char digits[32];
    const auto end =
        std::to_chars(digits, digits + sizeof digits, single, std::chars_format::scientific).ptr;
    double shortest = exact;
    std::from_chars(digits, end, shortest);
    return shortest;
}

}  // namespace velnor::jet
