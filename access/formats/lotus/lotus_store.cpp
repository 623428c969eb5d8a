#include "access/formats/lotus/lotus_store.h"

#include <algorithm>

#include "access/formats/lotus/lmbcs.h"
#include "access/formats/lotus/sheet_name.h"
#include "access/formats/lotus/wk_check.h"
#include "access/formats/sheet/sheet_cursor.h"
#include "access/formats/sheet/sheet_options.h"
#include "access/storage/replace_file.h"
#include "platform/paths.h"

namespace velnor::lotus {
namespace {

using sheet::Cell;
using sheet::CellKind;
using sheet::SheetTable;

constexpr std::size_t kLongestText = 511;  // bytes in a label
constexpr std::size_t kBytesOfChange = 32;
constexpr std::size_t kMostColumns = 255;

std::optional<FieldType> typeOfEntry(const FormatEntry& entry)
{
    switch (kindOfFormat(entry.format)) {
    case CellKind::Date:
        return FieldType::Date;
    case CellKind::Currency:
        return FieldType::Currency;
    default:
        if (entry == kMemoEntry)
            return FieldType::Memo;
        return entry == kNumberEntry ? std::optional(FieldType::Double) : std::nullopt;
    }
}

/// What a column is shown as before it has values; nothing for texts.
std::optional<FormatEntry> entryOfType(FieldType type)
{
    FormatEntry entry;
    switch (type) {
    case FieldType::Date:
        entry.format = kShortDate;
        return entry;
    case FieldType::Currency:
        entry.format = kMoney;
        return entry;
    case FieldType::Double:
    case FieldType::Boolean:
        return kNumberEntry;
    case FieldType::Memo:
        return kMemoEntry;
    default:
        return std::nullopt;
    }
}

}  // namespace

LotusStore::LotusStore(FileSystem& files, const OpenRequest& request)
    : files_(files), request_(request), options_(sheet::sheetOptions(request.options))
{
    openFile();
    load();
}

void LotusStore::openFile()
{
    file_.reset();
    auto file =
        files_.open(request_.name, request_.readOnly ? OpenMode::Read : OpenMode::ReadWrite);
    if (!file->tryLock(request_.readOnly ? LockKind::Shared : LockKind::Exclusive))
        throw EngineError(EngineErrorNumber::FileInUse,
                          "The file is in use: " + request_.name + ".");
    file_ = std::move(file);
}

void LotusStore::load()
{
    auto book = readBook(*file_, request_.name);
    for (auto& [number, sheet] : book->sheets)
        sheet.cells->blankType =
            [formats = &book->formats,
             number = number](std::uint32_t row, std::uint16_t column) -> std::optional<FieldType> {
            const FormatEntry* entry =
                entryAt(formats->row(number, static_cast<std::uint16_t>(row)), column);
            return entry ? typeOfEntry(*entry) : std::nullopt;
        };
    book_.swap(book);
    for (auto& [name, table] : open_)  // they point into the old book, which goes now
        *table = std::move(*makeTable(originOf(name)));
}

std::vector<LotusStore::Origin> LotusStore::origins() const
{
    std::vector<Origin> all;
    for (const auto& [number, sheet] : book_->sheets)
        if (sheet.listed)
            all.push_back({number, nullptr, book_->tableName(number)});
    for (const WkRange& range : book_->ranges) {
        const auto sheet = book_->sheets.find(range.sheet);
        if (sheet != book_->sheets.end() && sheet->second.listed)
            all.push_back({range.sheet, &range, range.name});
    }
    return all;
}

std::vector<TableEntry> LotusStore::catalogue()
{
    std::vector<TableEntry> tables;
    for (Origin& origin : origins())
        tables.push_back({std::move(origin.name), 0});
    return tables;
}

/// "Orders:" is a sheet; "Orders" a range of this name, else the sheet.
LotusStore::Origin LotusStore::originOf(std::string_view table) const
{
    std::vector<Origin> all = origins();
    for (Origin& origin : all)
        if (paths::sameName(origin.name, table))
            return std::move(origin);
    for (Origin& origin : all)
        if (!origin.range && paths::sameName(origin.name, std::string(table) + ":"))
            return std::move(origin);
    throw EngineError(EngineErrorNumber::TableNotFound,
                      "There is no table \"" + std::string(table) + "\".");
}

std::string LotusStore::whyNotUpdatable() const
{
    if (!book_->writeable())
        return std::string(versionWords(book_->version)) + " files are only read.";
    if (!book_->complete)
        return "The file is damaged: its end is missing.";
    return {};
}

void LotusStore::describe(SheetTable& table) const
{
    if (const std::string why = whyNotUpdatable(); !why.empty()) {
        table.layout().updatable = false;
        table.layout().whyNotUpdatable = why;
    }
}

std::unique_ptr<SheetTable> LotusStore::makeTable(const Origin& origin)
{
    auto table = std::make_unique<SheetTable>(
        origin.name, book_->sheet(origin.sheet).cells,
        origin.range ? std::optional(origin.range->area) : std::nullopt, options_);
    describe(*table);
    return table;
}

std::shared_ptr<SheetTable> LotusStore::open(std::string_view table)
{
    const Origin origin = originOf(table);
    std::shared_ptr<SheetTable>& known = open_[paths::foldName(origin.name)];
    if (!known)
        known = makeTable(origin);
    return known;
}

TableLayout LotusStore::layout(std::string_view table)
{
    return open(table)->layout();
}

std::int64_t LotusStore::recordCount(std::string_view table)
{
    return open(table)->recordCount();
}

std::unique_ptr<RowCursor> LotusStore::cursor(std::string_view table,
                                              std::optional<std::string_view> index)
{
    if (index)
        throw EngineError(EngineErrorNumber::IndexKeyMissing, "Sheets have no indexes.");
    return std::make_unique<sheet::SheetCursor>(open(table));
}

std::unique_ptr<RowWriter> LotusStore::writer(std::string_view table)
{
    const auto opened = open(table);
    requireWriteable(*opened);
    sheet::SheetRules& rules = *this;
    return std::make_unique<sheet::SheetWriter>(opened, rules);
}

std::size_t LotusStore::longestText() const
{
    return kLongestText;
}

/// Nothing but a failure while it was opened again can have taken the file away.
File& LotusStore::file() const
{
    if (!file_)
        throw EngineError(EngineErrorNumber::CannotOpen,
                          request_.name + " could not be kept open.");
    return *file_;
}

void LotusStore::needWriteable() const
{
    if (request_.readOnly)
        throw EngineError(EngineErrorNumber::ReadOnly,
                          request_.name + " is open for reading only.");
    if (const std::string why = whyNotUpdatable(); !why.empty())
        throw EngineError(EngineErrorNumber::ReadOnly,
                          request_.name + " cannot be written. " + why);
}

void LotusStore::requireWriteable(const SheetTable& table)
{
    needWriteable();
    if (!table.layout().updatable)
        throw EngineError(EngineErrorNumber::ReadOnly, table.layout().name +
                                                           " cannot be written. " +
                                                           table.layout().whyNotUpdatable);
}

void LotusStore::checkText(std::string_view text) const
{
    std::string bytes;
    encodeLmbcs(text, book_->group, bytes);
    if (bytes.size() > kLongestText)
        throw EngineError(EngineErrorNumber::ValueTooLong,
                          "A cell holds at most 511 bytes of text.");
}

/// The place for a new table: an empty sheet of its name, sheet A while it is empty and has no
/// name, else the next sheet. 3010 when the name is taken.
std::uint8_t LotusStore::placeForTable(const std::string& name) const
{
    for (const Origin& origin : origins()) {
        if (!paths::sameName(origin.name, name) && !paths::sameName(origin.name, name + ":"))
            continue;
        if (!origin.range && !book_->sheets.at(origin.sheet).cells->cells.usedArea())
            return origin.sheet;
        throw EngineError(EngineErrorNumber::TableAlreadyExists,
                          "The table \"" + name + "\" exists already.");
    }
    const WkSheet& first = book_->sheets.at(0);
    if (first.name.empty() && !first.cells->cells.usedArea())
        return 0;
    const unsigned next = book_->sheets.rbegin()->first + 1u;
    if (next > 0xFF)
        throw EngineError(EngineErrorNumber::DatabaseFull, "The file has 256 sheets already.");
    return static_cast<std::uint8_t>(next);
}

void LotusStore::putHeader(std::uint8_t sheet, const std::vector<FieldDef>& fields)
{
    for (std::size_t i = 0; i < fields.size(); ++i)
        book_->sheet(sheet).cells->cells.change(
            0, Cell::ofText(static_cast<std::uint16_t>(i), book_->texts.intern(fields[i].name)));
}

void LotusStore::createTable(const TableLayout& wanted)
{
    needWriteable();
    const std::string name = sheetNameFor(wanted.name);
    if (!wanted.indexes.empty())
        throw EngineError(EngineErrorNumber::NotSupported, "Sheets have no indexes.");
    if (wanted.fields.size() > kMostColumns)
        throw EngineError(EngineErrorNumber::TooManyFields, "A sheet has at most 255 fields.");
    std::vector<FieldDef> fields;
    for (const FieldDef& field : wanted.fields)
        fields.push_back(sheet::keptField(field));
    commit();

    const std::uint8_t number = placeForTable(name);
    WkChanges changes;
    if (!book_->sheets.contains(number))
        changes.newSheet = number;
    WkSheet& sheet = book_->sheet(number);
    const std::string unnamed = book_->tableName(number);
    if (sheet.name.empty()) {
        changes.namedSheet = number;
        sheet.name = name;
    }
    sheet.listed = true;
    for (std::size_t i = 0; i < fields.size(); ++i)
        if (const auto entry = entryOfType(fields[i].type))
            changes.emptyCells.push_back({{number, 1, static_cast<std::uint8_t>(i)},
                                          kindOfFormat(entry->format),
                                          *entry,
                                          entry == kNumberEntry || entry == kMemoEntry});
    putHeader(number, fields);
    open_.erase(paths::foldName(unnamed));
    write(changes);
    TableLayout layout;
    layout.name = book_->tableName(number);
    layout.fields = std::move(fields);
    const std::string key = paths::foldName(layout.name);
    open_[key] = std::make_shared<SheetTable>(std::move(layout), sheet.cells);
}

void LotusStore::dropTable(std::string_view table)
{
    needWriteable();
    const Origin origin = originOf(table);
    if (origin.range)
        throw EngineError(EngineErrorNumber::NotSupported,
                          "A named range cannot be deleted, only a sheet: " + origin.name + ".");
    commit();
    WkChanges changes;
    changes.droppedSheet = origin.sheet;
    for (auto at = open_.begin(); at != open_.end();)
        at = originOf(at->first).sheet == origin.sheet ? open_.erase(at) : std::next(at);
    WkSheet& sheet = book_->sheet(origin.sheet);
    sheet.cells->cells = sheet::CellGrid();
    sheet.name.clear();
    write(changes);
    load();
}

bool LotusStore::changed() const
{
    return std::any_of(book_->sheets.begin(), book_->sheets.end(), [](const auto& sheet) {
        return sheet.second.cells->cells.changeCount() > 0;
    });
}

/// Ranges through which records were added.
WkChanges LotusStore::gathered()
{
    WkChanges changes;
    for (WkRange& range : book_->ranges) {
        const auto table = open_.find(paths::foldName(range.name));
        if (table == open_.end() || !table->second->isRange() ||
            table->second->lastRow() <= range.area.lastRow)
            continue;
        range.area.lastRow = table->second->lastRow();
        changes.rangeEnds[range.record] = static_cast<std::uint16_t>(range.area.lastRow);
    }
    return changes;
}

/// Writes the file anew beside the old one, then puts it in its place.
void LotusStore::write(const WkChanges& changes)
{
    try {
        FileReplacement replacement(files_, request_.name);
        rewriteBook(file(), replacement.file(), *book_, changes);
        replacement.commit();
    } catch (const RunError& error) {
        const bool full = error.code() == RunErrorNumber::DiskFull;
        openFile();  // the old one, or the new one when only its folder could not be synced
        load();
        throw EngineError(full ? EngineErrorNumber::DiskFull : EngineErrorNumber::CannotOpen,
                          error.what());
    }
    openFile();
    book_->bytes = file_->size();
    for (auto& [number, sheet] : book_->sheets)
        sheet.cells->cells.forgetChanges();
}

void LotusStore::commit()
{
    if (changed())
        write(gathered());
}

std::size_t LotusStore::pendingBytes() const
{
    std::size_t changes = 0;
    for (const auto& [number, sheet] : book_->sheets)
        changes += sheet.cells->cells.changeCount();
    return changes * kBytesOfChange;
}

void LotusStore::check(std::string_view, const ProblemSink& report)
{
    checkBook(file(), *book_, report);
}

std::vector<std::pair<std::string, std::string>> LotusStore::info(std::string_view)
{
    return bookInfo(*book_);
}

}  // namespace velnor::lotus
