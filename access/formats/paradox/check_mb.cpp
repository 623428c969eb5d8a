#include "access/formats/paradox/check_mb.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <utility>

#include "access/formats/paradox/mb_file.h"
#include "access/formats/paradox/record_view.h"
#include "access/storage/byte_reader.h"

namespace velnor::paradox {
namespace {

constexpr std::size_t kSlots = 64, kSlotsAt = 12, kSlotBytes = 5, kFirstChunk = 21, kChunks = 256;
constexpr std::size_t kTableAt = 0x38, kEntryBytes = 6, kEntries = 673;

class MbCheck {
public:
    MbCheck(DbTable& table, FileCheck& records, CheckReport& report)
        : table_(table), records_(records), report_(report), name_(table.name() + ".MB"),
          size_(table.mb()->fileBytes())
    {
    }

    void run()
    {
        if (size_ < kMbUnit || size_ % kMbUnit)
            fault("its length is not a multiple of 4096");
        if (size_ < kMbUnit)
            return;
        header();
        blocks();
        freeTable();
        pointers();
    }

private:
    struct Value {
        std::uint32_t length = 0;
        std::uint16_t mark = 0;
        bool owned = false;
    };
    struct Room {
        std::uint8_t kind;
        std::uint32_t amount;
        bool listed = false;
    };

    void header();
    void blocks();
    void smallBlock(std::uint64_t at, const std::uint8_t* unit);
    void freeTable();
    void pointers();
    void pointer(const StoredField& field, const std::uint8_t* record, std::int64_t number);
    void leader(const StoredField& field, const std::uint8_t* record, const std::string& where);
    void fault(const std::string& text, const char* sort = nullptr)
    {
        report_.fault(name_, text, sort);
    }
    std::size_t read(std::uint64_t at, std::span<std::uint8_t> out)
    {
        return table_.mb()->readRaw(at, out);
    }

    DbTable& table_;
    FileCheck& records_;
    CheckReport& report_;
    std::string name_;
    std::uint64_t size_;
    std::map<std::uint64_t, Value> values_;  // by offset and slot
    std::map<std::uint64_t, Room> room_;     // by offset
};

void MbCheck::header()
{
    std::array<std::uint8_t, 0x2B> head{};
    read(0, head);
    const std::vector<std::uint8_t> made = MbFile::newHeader();
    for (std::size_t at = 0; at < head.size(); ++at)
        if ((at < 3 || (at >= 5 && at < 0x15) || at >= 0x29) && head[at] != made[at])
            return fault("its header is not the usual one");
}

void MbCheck::blocks()
{
    std::array<std::uint8_t, kMbUnit> unit{};
    for (std::uint64_t at = kMbUnit; at < size_;) {
        read(at, unit);
        const std::uint8_t kind = unit[0];
        const std::uint32_t units = loadLE<std::uint16_t>(&unit[1]);
        if (kind < 2 || kind > 4 || units == 0 || at + std::uint64_t{units} * kMbUnit > size_)
            return fault("the block at " + std::to_string(at) + " is none: the walk ends there");
        if (kind == 2) {
            const auto length = loadLE<std::uint32_t>(&unit[3]);
            if (units != (std::uint64_t{length} + 9 + kMbUnit - 1) / kMbUnit)
                fault("the block at " + std::to_string(at) + " has " + std::to_string(units) +
                          " units for " + std::to_string(length) + " bytes",
                      "units");
            values_[at | 0xFF] = {length, loadLE<std::uint16_t>(&unit[7])};
        } else if (kind == 4) {
            room_[at] = {3, units};
        } else {
            if (units != 1)
                fault("the block of small values at " + std::to_string(at) + " has " +
                      std::to_string(units) + " units");
            smallBlock(at, unit.data());
        }
        at += std::uint64_t{units} * kMbUnit;
    }
}

void MbCheck::smallBlock(std::uint64_t at, const std::uint8_t* unit)
{
    struct Span {
        std::size_t from, to;
    };
    std::vector<Span> spans;
    std::size_t used = 0;
    for (std::size_t n = 0; n < kSlots; ++n) {
        const std::uint8_t* slot = unit + kSlotsAt + n * kSlotBytes;
        const std::size_t start = slot[0], chunks = slot[1], last = slot[4];
        if (start == 0)
            continue;
        if (start < kFirstChunk || start + chunks > kChunks || chunks == 0 || last < 1 || last > 16)
            fault("block at " + std::to_string(at) + ", slot " + std::to_string(n) +
                      ": it cannot be right",
                  "slot");
        spans.push_back({start, start + chunks});
        used += chunks;
        values_[at | n] = {static_cast<std::uint32_t>((chunks - 1) * 16 + last),
                           loadLE<std::uint16_t>(slot + 2)};
    }
    std::sort(spans.begin(), spans.end(),
              [](const Span& a, const Span& b) { return a.from < b.from; });
    for (std::size_t i = 1; i < spans.size(); ++i)
        if (spans[i].from < spans[i - 1].to)
            fault("block at " + std::to_string(at) + ": two values overlap", "overlap");
    const std::size_t all = kChunks - kFirstChunk;
    room_[at] = {2, static_cast<std::uint32_t>(all - std::min(all, used))};
}

void MbCheck::freeTable()
{
    std::vector<std::uint8_t> table(kEntries * kEntryBytes);
    read(kTableAt, table);
    bool any = false;
    for (std::size_t n = 0; n < kEntries; ++n) {
        const std::uint8_t* entry = &table[n * kEntryBytes];
        if (entry[0] < 2)
            continue;
        any = true;
        const std::uint64_t offset =
            (entry[1] | std::uint64_t{entry[2]} << 8 | std::uint64_t{entry[3]} << 16) << 8;
        const auto found = room_.find(offset);
        const bool right = found != room_.end() && found->second.kind == entry[0] &&
                           found->second.amount == loadLE<std::uint16_t>(entry + 4);
        if (!right)
            fault("the table of free space is wrong about offset " + std::to_string(offset),
                  "free");
        if (found != room_.end() && std::exchange(found->second.listed, true))
            fault("the table of free space names offset " + std::to_string(offset) + " twice",
                  "free");
    }
    for (const auto& [offset, room] : room_)
        if (any && room.amount && !room.listed)
            report_.note(name_, "free space at " + std::to_string(offset) + " is not in the table",
                         "room");
}

/// A picture's leader repeats it without its first eight bytes.
void MbCheck::leader(const StoredField& field, const std::uint8_t* record, const std::string& where)
{
    std::string value, why;
    readLongValue(table_, field, record, value, why);
    if (!why.empty())
        return report_.fault(records_.name(), where + ": " + why, "pointer");
    const std::string_view shown(reinterpret_cast<const char*>(record + field.offset),
                                 field.leader());
    const std::string_view text = value;
    if (text.substr(0, shown.size()) != shown &&
        text.substr(std::min<std::size_t>(8, text.size()), shown.size()) != shown)
        report_.fault(records_.name(), where + ": its beginning in the record is another",
                      "leader");
}

void MbCheck::pointer(const StoredField& field, const std::uint8_t* record, std::int64_t number)
{
    const std::uint8_t* bytes = record + field.offset;
    const std::string where = "record " + std::to_string(number) + ", field " + field.name;
    const LongPointer to = LongPointer::read(bytes + field.leader());
    const auto any = [](const std::uint8_t* from, const std::uint8_t* end) {
        return std::any_of(from, end, [](std::uint8_t b) { return b != 0; });
    };
    const auto wrong = [&](const char* text, const char* sort) {
        report_.fault(records_.name(), where + ": " + text, sort);
    };
    if (to.length == 0) {
        if (any(bytes, bytes + field.length))
            wrong("it is Null, but its bytes are not all zero", "null");
        return;
    }
    if (to.length <= field.leader()) {
        if (to.offset || to.slot || to.mark || any(bytes + to.length, bytes + field.leader()))
            wrong("a short value has a pointer, or rubbish behind it", "short");
        return;
    }
    const auto found = values_.find(std::uint64_t{to.offset} | to.slot);
    if (found == values_.end())
        wrong("its value is not in the MB file", "pointer");
    else if (std::exchange(found->second.owned, true))
        wrong("its value belongs to another record, too", "shared");
    else if (found->second.mark != to.mark)
        wrong("its modification number is another than in the MB file", "mark");
    if ((to.slot == 0xFF) != (to.length > 2048))
        wrong("its value is in a block of the wrong kind", "kind");
    leader(field, record, where);
}

void MbCheck::pointers()
{
    std::int64_t number = 0;
    std::vector<std::uint8_t> bytes;
    for (const FileCheck::ChainBlock& block : records_.chain()) {
        const std::uint8_t* start = records_.recordsOf(block);
        bytes.assign(start, start + std::size_t{block.records} * records_.header().recordSize);
        for (std::size_t i = 0; i < block.records; ++i) {
            ++number;
            for (const StoredField& field : records_.header().fields)
                if (field.isLong())
                    pointer(field, bytes.data() + i * records_.header().recordSize, number);
        }
    }
    const auto lost = std::count_if(values_.begin(), values_.end(),
                                    [](const auto& value) { return !value.second.owned; });
    if (lost)
        fault(std::to_string(lost) + " values belong to no record");
}

}  // namespace

void checkLongValues(DbTable& table, FileCheck& records, CheckReport& report)
{
    MbCheck(table, records, report).run();
}

}  // namespace velnor::paradox
