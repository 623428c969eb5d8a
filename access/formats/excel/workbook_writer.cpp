#include "access/formats/excel/workbook_writer.h"

#include <algorithm>

#include "access/formats/excel/biff_text.h"
#include "access/formats/excel/new_workbook.h"
#include "access/formats/excel/shared_strings.h"
#include "access/value_text.h"

namespace velnor::excel {
namespace {

constexpr std::uint64_t kLeastStream = 4096;  // below it would have to lie in the mini stream
constexpr std::size_t kLongestSheetName = 31;
constexpr std::uint8_t kHiddenName = 1;

[[noreturn]] void damaged(const char* what)
{
    throw EngineError(EngineErrorNumber::UnexpectedFormat,
                      std::string("The workbook is damaged and cannot be written: ") + what + ".");
}

std::uint16_t u16(Bytes data, std::size_t at)
{
    return at + 2 <= data.size() ? loadLE<std::uint16_t>(data.data() + at) : 0;
}

bool isOwnBook(Bytes supBook)
{
    return supBook.size() >= 4 && u16(supBook, 2) == 0x0401;
}

}  // namespace

void checkSheetName(std::string_view name)
{
    const std::size_t length = textLength(name);
    const bool quoted = !name.empty() && (name.front() == '\'' || name.back() == '\'');
    if (length == 0 || length > kLongestSheetName || quoted ||
        name.find_first_of(":\\/?*[]") != name.npos)
        throw EngineError(EngineErrorNumber::InvalidTableName,
                          "Not a valid name of a sheet: \"" + std::string(name) + "\".");
}

WorkbookWriter::WorkbookWriter(Bytes stream, const Globals& globals)
    : globals_(globals), styles_(globals)
{
    list_.read(stream, 0);
    if (list_.entries().empty() || list_.entries().back().type != rec::kEof)
        damaged("its globals have no end");
    const auto listed = std::count_if(
        list_.entries().begin(), list_.entries().end(),
        [](const RecordList::Entry& entry) { return entry.type == rec::kBoundSheet; });
    if (globals.sheets.empty() || listed != static_cast<std::ptrdiff_t>(globals.sheets.size()))
        damaged("its list of sheets is not whole");
    Record record;
    RecordReader reader(stream, globals.end);
    int depth = 0;
    std::size_t start = 0;
    while (reader.next(record)) {
        if (depth == 0 && !isBof(record.type))
            break;  // padding
        if (isBof(record.type) && depth++ == 0)
            start = record.at;
        if (record.type == rec::kEof && --depth == 0) {
            parts_.emplace_back();
            parts_.back().old = stream.subspan(start, record.end() - start);
            parts_.back().at = start;
        }
    }
    if (depth != 0)
        damaged("a sheet has no end");
    for (const SheetInfo& sheet : globals.sheets) {
        const auto part = std::find_if(parts_.begin(), parts_.end(),
                                       [&](const Part& p) { return p.at == sheet.position; });
        if (part == parts_.end() || !sheet.sound)
            damaged("a sheet is not where the workbook says");
        partOfSheet_.push_back(static_cast<std::size_t>(part - parts_.begin()));
    }
}

WorkbookWriter::Part& WorkbookWriter::partOf(int sheet)
{
    return parts_[partOfSheet_[static_cast<std::size_t>(sheet)]];
}

RecordList::Entry& WorkbookWriter::boundSheet(int sheet)
{
    std::size_t at = list_.find(rec::kBoundSheet);
    while (sheet-- > 0)
        at = list_.find(rec::kBoundSheet, at + 1);
    return list_.entries()[at];
}

void WorkbookWriter::texts(const TextNumbers& numbers, std::uint32_t oldCount,
                           std::vector<std::string_view> added)
{
    numbers_ = numbers;
    oldTexts_ = oldCount;
    newTexts_ = std::move(added);
}

// Names

RecordList::Entry& WorkbookWriter::nameRecordAt(std::size_t place)
{
    for (RecordList::Entry& entry : list_.entries())
        if (entry.type == rec::kName && entry.at < place &&
            place < entry.at + 4 + entry.data().size())
            return entry;
    damaged("a name is not where it was");
}

void WorkbookWriter::nameEnds(std::size_t lastRowAt, std::uint32_t row)
{
    RecordList::Entry& entry = nameRecordAt(lastRowAt);
    const std::size_t at = lastRowAt - entry.at - 4;
    std::uint8_t* const place = entry.edit().data() + at;
    // Before version 8 the upper two bits tell whether the row is relative.
    const std::uint16_t flags =
        globals_.form->version == 8 ? 0 : loadLE<std::uint16_t>(place) & 0xC000;
    storeLE(place, static_cast<std::uint16_t>(row | flags));
}

void WorkbookWriter::hideName(std::size_t lastRowAt)
{
    nameRecordAt(lastRowAt).edit()[0] |= kHiddenName;
}

// Sheets that come and go

std::vector<std::uint8_t> WorkbookWriter::boundSheetData(std::string_view name) const
{
    std::vector<std::uint8_t> data(6);
    if (globals_.form->version == 8) {
        Units units;
        unitsOf(name, units);
        data.push_back(static_cast<std::uint8_t>(units.count()));
        data.push_back(units.narrow ? 0 : 1);
        units.append(data, 0, units.count());
        return data;
    }
    std::string bytes;
    if (!globals_.page->encode(name, bytes))
        throw EngineError(EngineErrorNumber::InvalidTableName,
                          "The code page of the workbook has not all characters of \"" +
                              std::string(name) + "\".");
    data.push_back(static_cast<std::uint8_t>(bytes.size()));
    data.insert(data.end(), bytes.begin(), bytes.end());
    return data;
}

void WorkbookWriter::addSheet(std::string_view name)
{
    list_.insert(list_.behindLast(rec::kBoundSheet),
                 RecordList::made(rec::kBoundSheet, boundSheetData(name)));
    countSheets(+1);
    partOfSheet_.push_back(parts_.size());
    parts_.emplace_back();
    parts_.back().made = newSheetStream(*globals_.form);
    parts_.back().old = parts_.back().made;
}

void WorkbookWriter::renameSheet(int sheet, std::string_view name)
{
    std::vector<std::uint8_t>& data = boundSheet(sheet).edit();
    std::vector<std::uint8_t> made = boundSheetData(name);
    std::copy_n(data.begin(), 6, made.begin());
    data = std::move(made);
}

/// TABID has an id for each sheet, SUPBOOK of the own workbook their count.
void WorkbookWriter::countSheets(int change)
{
    if (const std::size_t at = list_.find(rec::kTabId); at != RecordList::npos) {
        std::vector<std::uint8_t>& ids = list_.entries()[at].edit();
        std::uint16_t next = 0;
        for (std::size_t i = 0; i + 2 <= ids.size(); i += 2)
            next = std::max(next, u16(ids, i));
        if (change > 0) {
            ++next;
            ids.push_back(static_cast<std::uint8_t>(next & 0xFF));
            ids.push_back(static_cast<std::uint8_t>(next >> 8));
        }
    }
    for (RecordList::Entry& entry : list_.entries())
        if (entry.type == rec::kSupBook && isOwnBook(entry.data())) {
            std::uint8_t* const count = entry.edit().data();
            storeLE(count, static_cast<std::uint16_t>(loadLE<std::uint16_t>(count) + change));
        }
}

bool WorkbookWriter::refersTo(int sheet)
{
    for (std::size_t at = list_.find(rec::kExternSheet); at != RecordList::npos;
         at = list_.find(rec::kExternSheet, at + 1)) {
        if (globals_.form->version < 8)
            return true;  // formulas hold the numbers of sheets themselves
        const Bytes data = list_.entries()[at].data();
        for (std::size_t o = 2; o + 6 <= data.size(); o += 6) {
            const std::uint16_t first = u16(data, o + 2), last = u16(data, o + 4);
            if (first < 0x8000 && first <= sheet && sheet <= last)
                return true;
        }
    }
    return false;
}

void WorkbookWriter::forgetSheetInPairs(int sheet)
{
    const std::size_t at = list_.find(rec::kExternSheet);
    if (at == RecordList::npos || globals_.form->version < 8)
        return;
    std::vector<std::uint8_t>& data = list_.entries()[at].edit();
    for (std::size_t o = 4; o + 2 <= data.size(); o += (o - 4) % 6 == 0 ? 2 : 4) {
        const std::uint16_t number = u16(data, o);
        if (number < 0x8000 && number > sheet)
            storeLE(data.data() + o, static_cast<std::uint16_t>(number - 1));
    }
}

/// Names of the sheet alone are kept, since formulas refer to names by number, but hidden and
/// turned into names of a deleted area.
void WorkbookWriter::forgetSheetInNames(int sheet)
{
    for (RecordList::Entry& entry : list_.entries()) {
        if (entry.type != rec::kName || entry.data().size() < 15)
            continue;
        const int level = u16(entry.data(), 8);
        if (level <= sheet)
            continue;
        std::vector<std::uint8_t>& data = entry.edit();
        if (level > sheet + 1) {
            storeLE(data.data() + 8, static_cast<std::uint16_t>(level - 1));
            continue;
        }
        data[0] |= kHiddenName;
        storeLE(data.data() + 8, std::uint16_t{0});
        const bool wide = globals_.form->version == 8 && (data[14] & 1);
        const std::size_t token =
            (globals_.form->version == 8 ? 15u : 14u) + std::size_t{data[3]} * (wide ? 2 : 1);
        if (token < data.size() && ((data[token] & 0x1F) == 0x1A || (data[token] & 0x1F) == 0x1B))
            data[token] = static_cast<std::uint8_t>(data[token] + 2);
    }
}

void WorkbookWriter::keepWindowInRange()
{
    const std::size_t at = list_.find(rec::kWindow1);
    if (at == RecordList::npos || list_.entries()[at].data().size() < 14)
        return;
    std::uint8_t* const data = list_.entries()[at].edit().data();
    const auto last = static_cast<std::uint16_t>(partOfSheet_.size() - 1);
    for (const std::size_t o : {10u, 12u})
        storeLE(data + o, std::min(loadLE<std::uint16_t>(data + o), last));
}

void WorkbookWriter::removeSheet(int sheet)
{
    partOf(sheet).gone = true;
    std::vector<RecordList::Entry>& entries = list_.entries();
    entries.erase(entries.begin() + (&boundSheet(sheet) - entries.data()));
    partOfSheet_.erase(partOfSheet_.begin() + sheet);
    if (const std::size_t at = list_.find(rec::kTabId); at != RecordList::npos) {
        std::vector<std::uint8_t>& ids = entries[at].edit();
        const auto o = static_cast<std::ptrdiff_t>(2 * sheet);
        if (static_cast<std::size_t>(o) + 2 <= ids.size())
            ids.erase(ids.begin() + o, ids.begin() + o + 2);
    }
    countSheets(-1);
    forgetSheetInPairs(sheet);
    forgetSheetInNames(sheet);
    keepWindowInRange();
}

// The stream

void WorkbookWriter::writePart(Part& part, StreamSink& sink, std::uint32_t& references)
{
    if (part.clear)
        writeClearedSheet(part.old, sink);
    else
        writeSheet(part.old, part.edit, globals_, styles_, numbers_, sink, references);
}

void WorkbookWriter::placeSharedStrings(std::uint32_t references)
{
    if (globals_.form->version != 8 || (globals_.sst.empty() && newTexts_.empty()))
        return;
    std::vector<RecordList::Entry>& entries = list_.entries();
    std::size_t at = list_.find(rec::kSst);
    if (at == RecordList::npos) {
        at = entries.size() - 1;  // the EOF
    } else {
        const auto first = entries.begin() + static_cast<std::ptrdiff_t>(at);
        entries.erase(first, first + static_cast<std::ptrdiff_t>(globals_.sst.size()));
    }
    auto made = extendSharedStrings(globals_.sst, oldTexts_, references, newTexts_);
    entries.insert(entries.begin() + static_cast<std::ptrdiff_t>(at),
                   std::make_move_iterator(made.begin()), std::make_move_iterator(made.end()));
}

std::uint64_t WorkbookWriter::plan()
{
    std::uint32_t references = 0;
    std::vector<std::uint64_t> sizes;
    for (Part& part : parts_) {
        StreamSink counter;
        if (!part.gone)
            writePart(part, counter, references);
        sizes.push_back(counter.size());
    }
    styles_.addTo(list_);
    list_.remove(rec::kExtSst);
    placeSharedStrings(references);
    std::uint64_t at = list_.size();
    for (std::size_t i = 0; i < parts_.size(); ++i) {
        parts_[i].position = static_cast<std::uint32_t>(at);
        at += sizes[i];
    }
    if (at > 0x7FFFFFFF)
        throw EngineError(EngineErrorNumber::DatabaseFull, "The workbook gets too large.");
    for (std::size_t i = 0; i < partOfSheet_.size(); ++i)
        storeLE(boundSheet(static_cast<int>(i)).edit().data(),
                partOf(static_cast<int>(i)).position);
    size_ = std::max(at, kLeastStream);
    return size_;
}

void WorkbookWriter::write(StreamSink& sink)
{
    const std::uint64_t start = sink.size();
    std::uint32_t references = 0;
    list_.write(sink);
    for (Part& part : parts_)
        if (!part.gone)
            writePart(part, sink, references);
    sink.zeros(size_ - (sink.size() - start));
}

}  // namespace velnor::excel
