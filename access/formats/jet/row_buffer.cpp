// Values to a stored row.
#include <cstring>

#include "access/engine_error.h"
#include "access/formats/jet/row_codec.h"
#include "access/formats/jet/text_compression.h"
#include "access/storage/byte_reader.h"

namespace velnor::jet {
namespace {

using Bytes = std::span<const std::uint8_t>;

[[noreturn]] void wrongKind()
{
    throw EngineError(EngineErrorNumber::TypeConversion,
                      "The value does not fit the type of its field.");
}

[[noreturn]] void tooLong()
{
    throw EngineError(EngineErrorNumber::ValueTooLong, "The value is too long for its field.");
}

double numberOf(ValueView v)
{
    switch (v.kind()) {
    case ValueKind::Real:
        return v.asReal();
    case ValueKind::Date:
        return v.asDate();
    case ValueKind::Integer:
        return static_cast<double>(v.asInteger());
    case ValueKind::Currency:
        return static_cast<double>(v.asCurrency()) / 10000.0;
    default:
        wrongKind();
    }
}

}  // namespace

RowWriterBuffer::RowWriterBuffer(const RowPlan& plan)
    : plan_(&plan), cells_(plan.fields.size()), fieldOfSlot_(plan.variableSlots, -1)
{
    // A damaged definition can be read as far as it goes, but no record is laid out by it.
    if (plan.columnIds > kMaxColumns || plan.variableSlots > kMaxColumns ||
        plan.fixedBytes > plan.format->pageSize)
        throw EngineError(EngineErrorNumber::Corrupt,
                          "The definition of the table is damaged: no record can be written.");
    for (std::size_t i = 0; i < plan.fields.size(); ++i)
        if (!plan.fields[i].fixed)
            fieldOfSlot_[plan.fields[i].place] = static_cast<int>(i);
    ends_.resize(plan.variableSlots + 1u);
}

void RowWriterBuffer::clear()
{
    bytes_.clear();
    for (Cell& cell : cells_)
        cell = {};
}

std::uint8_t* RowWriterBuffer::room(int field, std::size_t bytes)
{
    Cell& cell = cells_[field];
    cell.at = static_cast<std::uint32_t>(bytes_.size());
    cell.length = static_cast<std::uint32_t>(bytes);
    cell.present = true;
    bytes_.resize(bytes_.size() + bytes);
    return bytes_.data() + cell.at;
}

void RowWriterBuffer::setRaw(int field, Bytes bytes)
{
    std::uint8_t* to = room(field, bytes.size());
    if (!bytes.empty())
        std::memcpy(to, bytes.data(), bytes.size());
}

template <class T> void RowWriterBuffer::setNumber(int field, T value)
{
    storeLE(room(field, sizeof value), value);
}

void RowWriterBuffer::setInteger(int field, ValueView value)
{
    if (value.kind() != ValueKind::Integer)
        wrongKind();
    const std::int64_t i = value.asInteger();
    const auto within = [i](std::int64_t from, std::int64_t to) {
        if (i < from || i > to)
            wrongKind();
    };
    switch (plan_->fields[field].type) {
    case column_type::kByte:
        within(0, 255);
        return setNumber(field, static_cast<std::uint8_t>(i));
    case column_type::kInteger:
        within(INT16_MIN, INT16_MAX);
        return setNumber(field, static_cast<std::int16_t>(i));
    default:
        within(INT32_MIN, INT32_MAX);
        return setNumber(field, static_cast<std::int32_t>(i));
    }
}

void RowWriterBuffer::setFixedText(int field, std::string_view stored)
{
    const std::size_t length = plan_->fields[field].length;
    std::uint8_t* to = room(field, length);
    std::memcpy(to, stored.data(), std::min(stored.size(), length));
    const bool wide = plan_->format->wideText;
    for (std::size_t at = stored.size(); at < length; ++at)
        to[at] = wide && at % 2 ? 0 : ' ';
}

void RowWriterBuffer::setText(int field, ValueView value)
{
    if (value.kind() != ValueKind::Text)
        wrongKind();
    const FieldPlan& f = plan_->fields[field];
    if (plan_->format->wideText) {
        if (2 * utf16Length(value.asText()) > f.length)
            tooLong();
        encodeText(value.asText(), f.compress && !f.fixed, text_);
    } else {
        text_.clear();
        if (!plan_->codePage->encode(value.asText(), text_))
            throw EngineError(EngineErrorNumber::TypeConversion,
                              "The text has letters that the file's code page cannot hold.");
        if (text_.size() > f.length)
            tooLong();
    }
    if (f.fixed)
        setFixedText(field, text_);
    else
        setRaw(field, {reinterpret_cast<const std::uint8_t*>(text_.data()), text_.size()});
}

void RowWriterBuffer::setDecimal(int field, ValueView value)
{
    if (value.kind() != ValueKind::Decimal)
        wrongKind();
    const FieldPlan& f = plan_->fields[field];
    unsigned __int128 magnitude =
        static_cast<unsigned __int128>(value.decimalHigh()) << 64 | value.decimalLow();
    for (int scale = value.decimalScale(); scale < f.scale; ++scale) {
        magnitude *= 10;
        if (magnitude >> 96 != 0)
            wrongKind();
    }
    bool up = false;
    for (int scale = value.decimalScale(); scale > f.scale; --scale) {
        up = magnitude % 10 >= 5;
        magnitude /= 10;
    }
    magnitude += up;
    std::uint8_t* p = room(field, 17);
    p[0] = value.decimalNegative() && magnitude != 0 ? 0x80 : 0;
    for (int word = 0; word < 4; ++word)
        storeLE(p + 1 + 4 * word, static_cast<std::uint32_t>(magnitude >> (96 - 32 * word)));
}

void RowWriterBuffer::set(int field, ValueView value)
{
    const FieldPlan& f = plan_->fields[field];
    if (f.type == column_type::kBoolean) {
        if (!value.isNull() && value.kind() != ValueKind::Boolean)
            wrongKind();
        cells_[field] = {};
        cells_[field].present = !value.isNull() && value.asBoolean();
        return;
    }
    if (value.isNull())
        return setNull(field);
    switch (f.type) {
    case column_type::kByte:
    case column_type::kInteger:
    case column_type::kLong:
        return setInteger(field, value);
    case column_type::kCurrency:
        if (value.kind() != ValueKind::Currency)
            wrongKind();
        return setNumber(field, value.asCurrency());
    case column_type::kSingle:
        return setNumber(field, static_cast<float>(numberOf(value)));
    case column_type::kDouble:
    case column_type::kDate:
        return setNumber(field, numberOf(value));
    case column_type::kText:
        return setText(field, value);
    case column_type::kDecimal:
        return setDecimal(field, value);
    case column_type::kGuid: {
        const auto bytes =
            value.kind() == ValueKind::Text ? guidBytes(value.asText()) : std::nullopt;
        if (!bytes)
            wrongKind();
        return setRaw(field, *bytes);
    }
    default:
        if (value.kind() != ValueKind::Bytes)
            wrongKind();
        if (value.asBytes().size() > f.length)
            tooLong();
        return setRaw(field, value.asBytes());
    }
}

std::size_t RowWriterBuffer::dataBytes() const
{
    std::size_t bytes = plan_->fixedBytes;
    for (std::size_t i = 0; i < cells_.size(); ++i)
        if (cells_[i].present && !plan_->fields[i].fixed)
            bytes += cells_[i].length;
    return bytes;
}

/// Jump bytes lengthen the row, which may ask for a further one.
std::size_t RowWriterBuffer::jumpBytes(std::size_t withoutJumps) const
{
    std::size_t jumps = 0;
    while ((withoutJumps + jumps - 1) / 256 > jumps)
        ++jumps;
    return jumps;
}

std::size_t RowWriterBuffer::size() const
{
    const std::size_t mask = (plan_->columnIds + 7u) / 8;
    const std::size_t slots = plan_->variableSlots;
    if (plan_->format->row.wide)
        return 2 + dataBytes() + (slots ? 2 * (slots + 1) + 2 : 0) + mask;
    const std::size_t plain = 1 + dataBytes() + (slots ? slots + 2 : 0) + mask;
    return plain + (slots ? jumpBytes(plain) : 0);
}

Bytes RowWriterBuffer::build()
{
    const bool wide = plan_->format->row.wide;
    const std::size_t bytes = size();
    if (bytes > static_cast<std::size_t>(plan_->format->row.maxBytes))
        throw EngineError(EngineErrorNumber::RecordTooLarge, "Record is too large.");
    row_.resize(bytes);
    std::uint8_t* row = row_.data();
    if (wide)
        storeLE(row, static_cast<std::uint16_t>(plan_->columnIds));
    else
        row[0] = static_cast<std::uint8_t>(plan_->columnIds);
    std::uint8_t* at = fixedPart(row + (wide ? 2 : 1));
    if (plan_->variableSlots) {
        at = variablePart(at, row);
        if (wide)
            wideEnd(at);
        else
            narrowEnd(at, (bytes - 1) / 256);
    }
    nullMask(row + bytes - (plan_->columnIds + 7u) / 8);
    return row_;
}

std::uint8_t* RowWriterBuffer::fixedPart(std::uint8_t* at)
{
    std::memset(at, 0, plan_->fixedBytes);
    for (std::size_t i = 0; i < cells_.size(); ++i) {
        const FieldPlan& f = plan_->fields[i];
        if (f.fixed && cells_[i].present && cells_[i].length)
            std::memcpy(at + f.place, bytes_.data() + cells_[i].at,
                        std::min<std::size_t>(cells_[i].length, f.length));
    }
    return at + plan_->fixedBytes;
}

std::uint8_t* RowWriterBuffer::variablePart(std::uint8_t* at, const std::uint8_t* row)
{
    for (std::size_t slot = 0; slot < plan_->variableSlots; ++slot) {
        ends_[slot] = static_cast<std::uint32_t>(at - row);
        const int field = fieldOfSlot_[slot];
        if (field < 0 || !cells_[field].present || !cells_[field].length)
            continue;
        std::memcpy(at, bytes_.data() + cells_[field].at, cells_[field].length);
        at += cells_[field].length;
    }
    ends_[plan_->variableSlots] = static_cast<std::uint32_t>(at - row);
    return at;
}

void RowWriterBuffer::wideEnd(std::uint8_t* at)
{
    for (std::size_t slot = plan_->variableSlots + 1u; slot-- > 0; at += 2)
        storeLE(at, static_cast<std::uint16_t>(ends_[slot]));
    storeLE(at, static_cast<std::uint16_t>(plan_->variableSlots));
}

void RowWriterBuffer::narrowEnd(std::uint8_t* at, std::size_t jumps)
{
    const std::size_t slots = plan_->variableSlots;
    for (std::size_t slot = slots + 1; slot-- > 0;)
        *at++ = static_cast<std::uint8_t>(ends_[slot]);
    // Jump byte k stands k places below the slot count: the first slot that lies 256 * k or
    // further.
    for (std::size_t k = jumps; k >= 1; --k) {
        std::size_t slot = 0;
        while (slot <= slots && ends_[slot] < 256 * k)
            ++slot;
        *at++ = slot <= slots ? static_cast<std::uint8_t>(slot) : 0xFF;
    }
    *at = static_cast<std::uint8_t>(slots);
}

void RowWriterBuffer::nullMask(std::uint8_t* mask) const
{
    std::memset(mask, 0, (plan_->columnIds + 7u) / 8);
    for (std::size_t i = 0; i < cells_.size(); ++i)
        if (cells_[i].present) {
            const std::uint16_t id = plan_->fields[i].id;
            mask[id / 8] |= static_cast<std::uint8_t>(1u << (id % 8));
        }
}

}  // namespace velnor::jet
