#include "access/formats/xbase/dbf_table.h"

#include <algorithm>
#include <array>
#include <exception>

#include "access/formats/xbase/field_decode.h"
#include "access/storage/byte_reader.h"
#include "access/storage/replace_set.h"
#include "platform/host.h"
#include "platform/paths.h"

namespace velnor::xbase {
namespace {

constexpr std::size_t kScanBytes = 256u << 10;
constexpr std::uint8_t kDeleted = '*', kEndOfFile = 0x1A;

PageFileOptions recordFileOptions()
{
    PageFileOptions options;
    options.pageSize = 8192;
    options.rank = 1;
    return options;
}

/// The memo files that a kind of table may have, likeliest first.
struct MemoPlace {
    const char* extension;
    MemoForm form;
};
std::array<MemoPlace, 2> memoPlaces(MemoForm form)
{
    switch (form) {
    case MemoForm::Fpt:
        return {{{"FPT", MemoForm::Fpt}, {"DBT", MemoForm::DbtIII}}};
    case MemoForm::DbtIV:
        return {{{"DBT", MemoForm::DbtIV}, {"FPT", MemoForm::Fpt}}};
    default:
        return {{{"DBT", MemoForm::DbtIII}, {"FPT", MemoForm::Fpt}}};
    }
}

}  // namespace

DbfTable::DbfTable(const TableOpening& opening)
    : opening_(opening), files_(std::make_unique<FileSet>(*opening.files, onDisk(opening.path),
                                                          recordFileOptions(), opening.readOnly))
{
    readHead();
    if (header_.format->fox && !opening_.foxWord)
        throw EngineError(EngineErrorNumber::UnexpectedFormat,
                          opening_.path + " is a FoxPro table, not a dBASE table.");
    findMemo();
}

std::string DbfTable::onDisk(const std::string& path) const
{
    return opening_.beingMade ? SetReplacement::siblingOf(path) : path;
}

/// Nothing but a failure while the files were opened again can have closed them.
FileSet& DbfTable::set() const
{
    if (!files_)
        throw EngineError(EngineErrorNumber::CannotOpen,
                          opening_.path + " could not be kept open.");
    return *files_;
}

std::vector<std::uint8_t> DbfTable::headerBytes()
{
    std::vector<std::uint8_t> head(header_.headerLength);
    head.resize(set().main().readAt(0, head));
    return head;
}

void DbfTable::readHead()
{
    PageFile& file = set().main();
    const std::uint64_t size = file.size();
    try {
        std::vector<std::uint8_t> head(static_cast<std::size_t>(std::min<std::uint64_t>(size, 32)));
        file.readAt(0, head);
        head.resize(headerLengthOf(head, size));
        file.readAt(0, head);
        header_ = readHeader(head, size, opening_.codePage);
    } catch (const EngineError& error) {
        throw EngineError(error.code(), opening_.path + ": " + error.what());
    }
    const std::uint64_t fits = (size - header_.headerLength) / header_.recordLength;
    count_ = static_cast<std::uint32_t>(std::min<std::uint64_t>(fits, header_.statedRecords));
    if (count_ < header_.statedRecords)
        header_.oddities.push_back({"the header tells of " + std::to_string(header_.statedRecords) +
                                    " records, the file holds " + std::to_string(count_)});
    liveCounts_.forget();
    changed_ = appended_ = false;
}

void DbfTable::findMemo()
{
    if (!header_.hasMemoField() || header_.format->memo == MemoForm::Unknown)
        return;
    for (const MemoPlace& place : memoPlaces(header_.format->memo)) {
        const std::string path = paths::withExtension(opening_.path, place.extension);
        if (!opening_.files->fileExists(onDisk(path)))
            continue;
        memo_.emplace(companion(path, memoFileOptions()), place.form);
        memoPath_ = path;
        return;
    }
    header_.oddities.push_back({"the memo file is missing"});
}

std::string DbfTable::whyNotUpdatable() const
{
    if (header_.format->two)
        return "dBASE II tables are only read.";
    if (memoMissing())
        return "Its memo file is missing, so its records are only read.";
    return {};
}

std::vector<std::string> DbfTable::indexFiles() const
{
    if (opening_.beingMade)
        return {};
    return indexFilesOf(*opening_.files, opening_.path, header_);
}

void DbfTable::readRecords(std::uint32_t first, std::uint32_t records, std::span<std::uint8_t> out)
{
    const std::size_t bytes = std::size_t{records} * header_.recordLength;
    if (set().main().readAt(header_.offsetOf(first), out.first(bytes)) != bytes)
        throw EngineError(EngineErrorNumber::Corrupt,
                          opening_.path + " ends before record " + std::to_string(first + records));
}

void DbfTable::readLoneRecord(std::uint32_t number, std::span<std::uint8_t> out)
{
    if (set().main().peekAt(header_.offsetOf(number), out.first(header_.recordLength)) !=
        header_.recordLength)
        throw EngineError(EngineErrorNumber::Corrupt,
                          opening_.path + " ends before record " + std::to_string(number + 1));
}

/// Calls `use` with the number and the flag of each record of a stretch.
template <class Use> void DbfTable::forEachFlag(std::uint32_t first, std::uint32_t records, Use use)
{
    const std::uint32_t length = header_.recordLength;
    const auto atOnce = std::max<std::uint32_t>(1, kScanBytes / length);
    std::vector<std::uint8_t> block(std::size_t{std::min(atOnce, records)} * length);
    for (std::uint32_t number = first; records > 0;) {
        const std::uint32_t now = std::min(atOnce, records);
        readRecords(number, now, block);
        const std::uint8_t* flag = block.data();
        for (std::uint32_t i = 0; i < now; ++i, flag += length)
            use(number++, *flag);
        records -= now;
    }
}

const LiveCounts& DbfTable::liveCounts()
{
    if (liveCounts_.known())
        return liveCounts_;
    liveCounts_.forget();
    forEachFlag(1, count_, [this](std::uint32_t number, std::uint8_t flag) {
        liveCounts_.add(number, flag != kDeleted);
    });
    liveCounts_.becomeKnown();
    return liveCounts_;
}

std::int64_t DbfTable::countLive(std::uint32_t first, std::uint32_t records)
{
    std::int64_t live = 0;
    forEachFlag(first, records,
                [&live](std::uint32_t, std::uint8_t flag) { live += flag != kDeleted; });
    return live;
}

void DbfTable::needRoom() const
{
    const std::uint32_t most = header_.format->two ? 0xFFFF : 0x7FFFFFFF;
    if (count_ >= most)
        throw EngineError(EngineErrorNumber::DatabaseFull, opening_.path + " is full.");
}

std::uint32_t DbfTable::append(std::span<const std::uint8_t> record)
{
    needRoom();
    set().main().writeAt(header_.offsetOf(count_ + 1ull), record);
    ++count_;
    changed_ = appended_ = true;
    if (liveCounts_.known())
        liveCounts_.add(count_, true);
    return count_;
}

void DbfTable::overwrite(std::uint32_t number, std::span<const std::uint8_t> record)
{
    set().main().writeAt(header_.offsetOf(number), record);
    changed_ = true;
}

void DbfTable::markDeleted(std::uint32_t number)
{
    set().main().writeAt(header_.offsetOf(number), std::array{kDeleted});
    changed_ = true;
    if (liveCounts_.known())
        liveCounts_.remove(number);
}

void DbfTable::setNextNumber(std::size_t field, std::uint32_t number)
{
    header_.fields[field].nextNumber = number;
    changed_ = true;
}

void DbfTable::writeHead()
{
    PageFile& file = set().main();
    if (appended_)
        file.writeAt(header_.offsetOf(count_ + 1ull), std::array{kEndOfFile});
    const LocalTime now = host().clock->now();
    std::array<std::uint8_t, 7> head{static_cast<std::uint8_t>(now.year - 1900),
                                     static_cast<std::uint8_t>(now.month),
                                     static_cast<std::uint8_t>(now.day)};
    storeLE(&head[3], count_);
    file.writeAt(1, head);
    for (const DbfField& field : header_.fields)
        if (field.nextNumberAt) {
            std::array<std::uint8_t, 4> next;
            storeLE(next.data(), field.nextNumber);
            file.writeAt(field.nextNumberAt, next);
        }
}

void DbfTable::setProductionIndex(bool there)
{
    header_.tableFlags = static_cast<std::uint8_t>((header_.tableFlags & ~1) | (there ? 1 : 0));
    set().main().writeAt(28, std::array{header_.tableFlags});
    changed_ = true;
}

void DbfTable::markIndexedField(std::size_t field, bool indexed)
{
    const HeaderShape& shape = *header_.format->shape;
    if (header_.format->fox || !shape.productionIndexAt)
        return;
    const std::uint32_t at = header_.fields[field].descriptorAt + shape.productionIndexAt;
    set().main().writeAt(at, std::array{static_cast<std::uint8_t>(indexed)});
    changed_ = true;
}

void DbfTable::removeCompanion(const std::string& path)
{
    changed_ = true;
    commit();
    indexes_.forget();
    memo_.reset();
    files_.reset();
    std::exception_ptr failure;
    try {
        opening_.files->remove(path);
    } catch (const RunError&) {
        failure = std::current_exception();  // a file without its mark in the header is no index
    }
    files_ = std::make_unique<FileSet>(*opening_.files, onDisk(opening_.path), recordFileOptions(),
                                       opening_.readOnly);
    readHead();
    findMemo();
    if (failure)
        std::rethrow_exception(failure);
}

void DbfTable::relieve()
{
    constexpr std::size_t kMostChanged = 4u << 20;
    if (set().pendingBytes() > kMostChanged)
        set().spill();
}

/// 1.
void DbfTable::commit()
{
    if (!changed_)
        return;
    try {
        indexes_.beforeCommit();
        writeHead();
        set().commit();
    } catch (...) {
        rollback();
        throw;
    }
    indexes_.committed();
    header_.statedRecords = count_;
    changed_ = appended_ = false;
}

/// 2.
void DbfTable::rollback()
{
    indexes_.forget();
    if (!files_)
        return;
    set().rollback();
    const bool hadMemo = memo_.has_value();
    readHead();
    if (!hadMemo && header_.hasMemoField())
        header_.oddities.push_back({"the memo file is missing"});
}

}  // namespace velnor::xbase
