#include "access/formats/xbase/record_mover.h"

#include <algorithm>
#include <cstring>

#include "access/formats/xbase/field_decode.h"
#include "access/formats/xbase/field_encode.h"

namespace velnor::xbase {
namespace {

bool bitOf(const DbfHeader& header, std::int32_t bit, const std::uint8_t* record)
{
    const auto n = static_cast<std::uint32_t>(bit);
    return record[header.nullFlagsOffset + n / 8] >> (n % 8) & 1;
}

void takeBit(const DbfHeader& from, std::int32_t bit, const std::uint8_t* record,
             const DbfHeader& to, std::int32_t toBit, std::uint8_t* out)
{
    if (toBit < 0)
        return;
    const auto n = static_cast<std::uint32_t>(toBit);
    const auto mask = static_cast<std::uint8_t>(1u << (n % 8));
    std::uint8_t& byte = out[to.nullFlagsOffset + n / 8];
    const bool on = bit >= 0 && bitOf(from, bit, record);
    byte = static_cast<std::uint8_t>(on ? byte | mask : byte & ~mask);
}

}  // namespace

RecordMover::RecordMover(const DbfHeader& from, const DbfHeader& to,
                         const std::vector<int>& sources)
    : from_(from), to_(to), blank_(to.recordLength)
{
    blankRecord(to, blank_);
    for (std::size_t i = 0; i < to.fields.size(); ++i) {
        const DbfField* source =
            sources[i] < 0 ? nullptr : &from.fields[static_cast<std::size_t>(sources[i])];
        pairs_.push_back({source, &to.fields[i]});
        if (!source && !to.fields[i].isMemo() && to.fields[i].coding != Coding::Raw)
            encodeField(to, to.fields[i], ValueView::null(), blank_.data(), scratch_);
    }
    for (std::size_t i = 0; i < to.hidden.size() && i < from.hidden.size(); ++i)
        pairs_.push_back({&from.hidden[i], &to.hidden[i]});
}

/// A field that got longer. Numbers that nobody can read keep their characters.
void RecordMover::stretch(const Pair& pair, const std::uint8_t* record, std::uint8_t* out)
{
    const auto& [from, to] = pair;
    const std::uint8_t* bytes = record + from->offset;
    std::uint8_t* into = out + to->offset;
    if (to->coding == Coding::Character) {
        std::memset(into, ' ', to->length);
        std::memcpy(into, bytes, std::min(from->length, to->length));
        return;
    }
    const ValueView value = decodeField(from_, *from, record, text_);
    if (to->coding == Coding::Number && (value.isNull() || from->decimals == to->decimals)) {
        std::memset(into, ' ', to->length);
        std::memcpy(into + (to->length - from->length), bytes, from->length);
        return;
    }
    encodeField(to_, *to, value, out, scratch_);
}

void RecordMover::copyField(const Pair& pair, const std::uint8_t* record, std::uint8_t* out)
{
    const auto& [from, to] = pair;
    const bool same = from->length == to->length && from->decimals == to->decimals;
    if (same)
        std::memcpy(out + to->offset, record + from->offset, to->length);
    else
        stretch(pair, record, out);
    takeBit(from_, from->nullBit, record, to_, to->nullBit, out);
    if (same)
        takeBit(from_, from->lengthBit, record, to_, to->lengthBit, out);
}

void RecordMover::move(const std::uint8_t* record, std::uint32_t number, std::uint8_t* out)
{
    std::memcpy(out, blank_.data(), blank_.size());
    out[0] = record[0];
    for (const Pair& pair : pairs_) {
        if (pair.from)
            copyField(pair, record, out);
        else if (pair.to->autonumber)
            encodeField(to_, *pair.to, ValueView::integer(number), out, scratch_);
    }
}

}  // namespace velnor::xbase
