#include "access/formats/jet/row_codec.h"

#include <charconv>
#include <cmath>
#include <cstring>

#include "access/engine_error.h"
#include "access/formats/jet/text_compression.h"
#include "access/storage/byte_reader.h"

namespace velnor::jet {
namespace {

using Bytes = std::span<const std::uint8_t>;

int fixedLength(std::uint8_t type)
{
    switch (type) {
    case column_type::kByte:
        return 1;
    case column_type::kInteger:
        return 2;
    case column_type::kLong:
    case column_type::kSingle:
        return 4;
    case column_type::kCurrency:
    case column_type::kDouble:
    case column_type::kDate:
        return 8;
    case column_type::kGuid:
        return 16;
    case column_type::kDecimal:
        return 17;
    default:
        return 0;
    }
}

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

RowPlan::RowPlan(const JetFormat& f, const CodePage& page, const TableDef& table)
    : format(&f), codePage(&page), columnIds(table.maxColumns), variableSlots(table.variableColumns)
{
    for (const int at : table.fieldOrder()) {
        const Column& c = table.columns[at];
        FieldPlan plan;
        plan.type = c.type;
        plan.fixed = c.fixed();
        plan.compress = c.moreFlags & column_flag::kCompressed;
        plan.scale = c.scale;
        plan.id = c.id;
        plan.place = c.fixed() ? c.fixedOffset : c.variableSlot;
        plan.length = c.length;
        plan.column = at;
        if (!plan.fixed)
            firstVariableId = std::min(firstVariableId, c.id);
        else if (c.type != column_type::kBoolean)
            fixedBytes = std::max<std::uint32_t>(fixedBytes, c.fixedOffset + c.length);
        columnIds = std::max<std::uint32_t>(columnIds, c.id + 1);
        if (!plan.fixed)
            variableSlots = std::max<std::uint32_t>(variableSlots, c.variableSlot + 1);
        fields.push_back(plan);
    }
}

int RowPlan::fieldOfId(std::uint16_t id) const
{
    for (std::size_t i = 0; i < fields.size(); ++i)
        if (fields[i].id == id)
            return static_cast<int>(i);
    return -1;
}

// ---- reading

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
    if (static_cast<int>(stored->size()) < fixedLength(f.type))
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
        if (!stored || static_cast<int>(stored->size()) < fixedLength(f.type))
            return false;
    }
    return true;
}

// ---- writing

namespace {

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

// ---- small conversions

namespace {

/// Positions of a GUID's stored bytes in the order in which they are written.
constexpr int kGuidOrder[16] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};

bool dashBefore(int byte)
{
    return byte == 4 || byte == 6 || byte == 8 || byte == 10;
}

int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

}  // namespace

std::string_view guidText(std::span<const std::uint8_t, 16> stored, std::string& out)
{
    static constexpr char kDigits[] = "0123456789ABCDEF";
    out.resize(38);
    char* p = out.data();
    *p++ = '{';
    for (int i = 0; i < 16; ++i) {
        if (dashBefore(i))
            *p++ = '-';
        const std::uint8_t byte = stored[kGuidOrder[i]];
        *p++ = kDigits[byte >> 4];
        *p++ = kDigits[byte & 15];
    }
    *p = '}';
    return out;
}

std::optional<std::array<std::uint8_t, 16>> guidBytes(std::string_view text)
{
    if (text.size() == 38 && text.front() == '{' && text.back() == '}')
        text = text.substr(1, 36);
    if (text.size() != 36)
        return std::nullopt;
    std::array<std::uint8_t, 16> bytes{};
    std::size_t at = 0;
    for (int i = 0; i < 16; ++i) {
        if (dashBefore(i) && text[at++] != '-')
            return std::nullopt;
        const int high = hexDigit(text[at++]);
        const int low = hexDigit(text[at++]);
        if (high < 0 || low < 0)
            return std::nullopt;
        bytes[kGuidOrder[i]] = static_cast<std::uint8_t>(high << 4 | low);
    }
    return bytes;
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
