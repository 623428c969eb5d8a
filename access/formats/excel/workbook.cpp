#include "access/formats/excel/workbook.h"

#include <algorithm>

#include "access/formats/excel/compound_writer.h"
#include "access/formats/excel/decrypt.h"
#include "access/formats/excel/new_workbook.h"
#include "access/formats/excel/shared_strings.h"
#include "access/storage/replace_file.h"
#include "platform/paths.h"

namespace velnor::excel {
namespace {

constexpr std::uint32_t kNoNumber = 0xFFFFFFFF;
constexpr std::size_t kHead = 512;

[[noreturn]] void refuse(const std::string& name, const std::string& why)
{
    throw EngineError(EngineErrorNumber::UnexpectedFormat, name + " " + why);
}

/// What a file looks like that is named .XLS and is none.
std::string looksLike(Bytes head)
{
    const std::string_view text(reinterpret_cast<const char*>(head.data()), head.size());
    const std::size_t first = text.find_first_not_of(" \t\r\n\xEF\xBB\xBF");
    const std::string_view start = first == text.npos ? std::string_view{} : text.substr(first);
    const auto has = [&](std::string_view word) {
        return paths::sameName(start.substr(0, word.size()), word);
    };
    if (start.starts_with("PK"))
        return "It looks like a ZIP file, perhaps a newer workbook (xlsx, ods).";
    if (has("{\\rtf"))
        return "It looks like a text of a word processor (RTF).";
    if (has("<!doctype html") || has("<html") || has("<table"))
        return "It looks like a page (HTML).";
    if (start.starts_with("<"))
        return "It looks like an XML or HTML file.";
    const bool plain = std::all_of(start.begin(), start.end(), [](char c) {
        return static_cast<unsigned char>(c) >= ' ' || c == '\t' || c == '\r' || c == '\n';
    });
    return plain && !start.empty() ? "It looks like a plain text file." : "";
}

}  // namespace

Workbook::Workbook(FileSystem& files, const OpenRequest& request) : files_(files), request_(request)
{
    openFile();
    readStream();
    unlockStream();
    if (!request_.codePage.empty() && !(givenPage_ = CodePage::find(request_.codePage)))
        throw EngineError(EngineErrorNumber::InvalidArgument,
                          "There is no code page \"" + request_.codePage + "\".");
    globals_ = readGlobals(stream_, streamName_, paths::baseName(request_.name), givenPage_);
    form_ = globals_.form;
    page_ = globals_.page;
    if (!globals_.form->written)
        whyReadOnly_ = "Workbooks of this old version are for reading only.";
}

const Globals& Workbook::globals()
{
    if (stale_) {
        readStream();
        globals_ = readGlobals(stream_, streamName_, paths::baseName(request_.name), givenPage_);
        stale_ = false;
    }
    return globals_;
}

void Workbook::openFile()
{
    file_ = files_.open(request_.name, request_.readOnly ? OpenMode::Read : OpenMode::ReadWrite);
    if (!file_->tryLock(request_.readOnly ? LockKind::Shared : LockKind::Exclusive))
        throw EngineError(EngineErrorNumber::FileInUse,
                          "The file is in use: " + request_.name + ".");
}

void Workbook::readStream()
{
    container_.reset();
    stream_.clear();
    stream_.shrink_to_fit();
    std::vector<std::uint8_t> head(kHead);
    head.resize(file_->readAt(0, head));
    if (CompoundFile::looksLikeOne(head)) {
        container_ = std::make_unique<CompoundFile>(*file_);
        for (const char* name : {"WORKBOOK", "BOOK"})
            if (const auto entry = container_->find(name)) {
                entry_ = *entry;
                streamName_ = name;
                stream_ = container_->read(entry_);
                return;
            }
        refuse(request_.name, "is not a workbook: it has no stream of that kind.");
    }
    const bool bare = head.size() >= 8 && isBof(loadLE<std::uint16_t>(head.data())) &&
                      loadLE<std::uint16_t>(head.data() + 2) >= 4 &&
                      loadLE<std::uint16_t>(head.data() + 2) <= 16;
    if (!bare)
        refuse(request_.name, "is not a workbook. " + looksLike(head));
    stream_.resize(static_cast<std::size_t>(file_->size()));
    stream_.resize(file_->readAt(0, stream_));
}

void Workbook::unlockStream()
{
    Unlocking unlocked = unlock(stream_, request_.password);
    if (unlocked == Unlocking::WrongPassword && !request_.password.empty() &&
        unlock(stream_, {}) == Unlocking::Done)
        unlocked = Unlocking::Done;  // it asks for no password
    switch (unlocked) {
    case Unlocking::NotEncrypted:
        return;
    case Unlocking::Done:
        whyReadOnly_ = "An encrypted workbook is for reading only.";
        return;
    case Unlocking::WrongPassword:
        if (!request_.password.empty())
            throw EngineError(EngineErrorNumber::InvalidPassword,
                              "Not a valid password: " + request_.name + ".");
        break;
    case Unlocking::UnknownMethod:
        break;
    }
    throw EngineError(EngineErrorNumber::CannotDecrypt,
                      "Could not decrypt the file: " + request_.name +
                          " is protected by a password.");
}

void Workbook::requireWriteable() const
{
    if (request_.readOnly)
        throw EngineError(EngineErrorNumber::ReadOnly,
                          request_.name + " is open for reading only.");
    if (!whyReadOnly_.empty())
        throw EngineError(EngineErrorNumber::ReadOnly,
                          request_.name + " cannot be written. " + whyReadOnly_);
}

void Workbook::checkText(std::string_view utf8) const
{
    if (form_->version == 8)
        return;
    std::string bytes;
    if (!page_->encode(utf8, bytes))
        throw EngineError(EngineErrorNumber::TypeConversion,
                          "The code page of the workbook does not have every character of a text.");
    if (bytes.size() > form_->longestText)
        throw EngineError(EngineErrorNumber::ValueTooLong, "The text is too long for a cell.");
}

// Reading

void Workbook::readTexts()
{
    if (textsRead_)
        return;
    textsRead_ = true;
    SharedStrings found = readSharedStrings(globals().sst, texts_);
    textsInFile_ = found.count;
    textsCutOff_ = found.cutOff;
    rich_ = std::move(found.rich);
}

bool Workbook::sharedTextsCutOff()
{
    readTexts();
    return textsCutOff_;
}

OpenSheet& Workbook::sheet(int number)
{
    const auto [place, isNew] = sheets_.try_emplace(number);
    OpenSheet& open = place->second;
    if (!isNew)
        return open;
    try {
        const Globals& globals = this->globals();
        readTexts();
        open.sheet = std::make_shared<sheet::Sheet>();
        open.sheet->texts = &texts_;
        open.sheet->date1904 = globals_.date1904;
        SheetContent content;
        content.cells = &open.sheet->cells;
        content.texts = &texts_;
        readSheet(stream_, globals.sheets[static_cast<std::size_t>(number)].position, globals,
                  content);
        open.blanks = std::move(content.blanks);
        open.faults = std::move(content.faults);
        open.edit.cells = &open.sheet->cells;
        open.sheet->blankType = [this, &open](std::uint32_t row, std::uint16_t column) {
            for (const BlankCell& blank : open.blanks)
                if (blank.row == row && blank.column == column)
                    return StyleBook::typeOfBlank(this->globals(), blank.xf);
            return std::optional<FieldType>{};
        };
    } catch (...) {
        sheets_.erase(place);
        throw;
    }
    return open;
}

// Writing

bool Workbook::hasChanges() const
{
    return std::any_of(sheets_.begin(), sheets_.end(), [](const auto& entry) {
        return entry.second.sheet->cells.changeCount() > 0 || !entry.second.edit.blankTypes.empty();
    });
}

std::size_t Workbook::pendingBytes() const
{
    constexpr std::size_t kBytesOfCell = 8;  // a rewrite costs much, a change little
    std::size_t cells = 0;
    for (const auto& [number, open] : sheets_)
        cells += open.sheet->cells.changeCount();
    return cells * kBytesOfCell;
}

/// Gives every changed text a place in the shared table; returns those that are new there.
std::vector<std::string_view> Workbook::numberNewTexts()
{
    std::vector<std::string_view> added;
    if (globals_.form->version != 8)
        return added;
    for (std::size_t id = textNumbers_.size(); id < texts_.size(); ++id)
        textNumbers_.push_back(id < rich_.size() ? static_cast<std::uint32_t>(id) : kNoNumber);
    for (auto& [number, open] : sheets_)
        for (const sheet::Place& place : open.sheet->cells.changes()) {
            const sheet::Cell* cell = open.sheet->cells.find(place.row, place.column);
            if (!cell || cell->kind != sheet::CellKind::Text ||
                textNumbers_[cell->text] != kNoNumber)
                continue;
            textNumbers_[cell->text] = textsInFile_ + static_cast<std::uint32_t>(added.size());
            added.push_back(texts_.text(cell->text));
        }
    return added;
}

void Workbook::writeFile(WorkbookWriter& writer)
{
    const std::uint64_t size = writer.plan();
    try {
        FileReplacement replacement(files_, request_.name);
        const auto writeStream = [&](StreamSink& sink) { writer.write(sink); };
        if (container_) {
            writeCompound(replacement.file(), *container_, entry_, size, writeStream);
        } else {
            StreamSink sink(replacement.file(), 0);
            writeStream(sink);
            sink.flush();
        }
        replacement.commit();
    } catch (const RunError& error) {
        const bool full = error.code() == RunErrorNumber::DiskFull;
        throw EngineError(full ? EngineErrorNumber::DiskFull : EngineErrorNumber::CannotOpen,
                          error.what());
    }
}

void Workbook::save(const std::function<void(WorkbookWriter&)>& change)
{
    if (!hasChanges() && !change && nameEnds_.empty())
        return;
    requireWriteable();
    globals();
    readTexts();
    if (textsCutOff_)
        refuse(request_.name, "cannot be written: its texts are damaged.");
    WorkbookWriter writer(stream_, globals_);
    std::vector<std::string_view> added = numberNewTexts();
    const std::size_t addedCount = added.size();
    try {
        writer.texts({&texts_, &textNumbers_}, textsInFile_, std::move(added));
        for (auto& [number, open] : sheets_)
            if (open.sheet->cells.changeCount() > 0 || !open.edit.blankTypes.empty())
                writer.edit(number, open.edit);
        for (const NameInfo& name : globals_.names)
            if (const auto end = nameEnds_.find(name.name); end != nameEnds_.end())
                writer.nameEnds(name.lastRowAt, end->second);
        if (change)
            change(writer);
        writeFile(writer);
    } catch (...) {
        for (std::uint32_t& number : textNumbers_)
            if (number != kNoNumber && number >= textsInFile_)
                number = kNoNumber;
        throw;
    }
    textsInFile_ += static_cast<std::uint32_t>(addedCount);
    nameEnds_.clear();
    for (auto& [number, open] : sheets_) {
        open.sheet->cells.forgetChanges();
        open.edit.blankTypes.clear();
    }
    globals_ = {};
    stream_ = {};
    stale_ = true;
    container_.reset();
    openFile();
}

// Structure

bool Workbook::isNew()
{
    globals();
    return isNewWorkbook(stream_);
}

int Workbook::addSheet(const std::string& name)
{
    checkSheetName(name);
    save([&](WorkbookWriter& writer) { writer.addSheet(name); });
    return static_cast<int>(globals().sheets.size()) - 1;
}

void Workbook::renameSheet(int sheet, const std::string& name)
{
    checkSheetName(name);
    save([&](WorkbookWriter& writer) { writer.renameSheet(sheet, name); });
}

bool Workbook::hasStorage(std::string_view name) const
{
    return container_ && std::any_of(container_->entries().begin(), container_->entries().end(),
                                     [&](const DirectoryEntry& e) {
                                         return e.type() == EntryType::Storage && e.name() == name;
                                     });
}

/// The last visible one, and those that a macro or a pivot table may depend on.
bool Workbook::mustKeepSheet(int sheet)
{
    if (hasStorage("_VBA_PROJECT_CUR") || hasStorage("_SX_DB_CUR"))
        return true;
    for (std::size_t i = 0; i < globals_.sheets.size(); ++i)
        if (static_cast<int>(i) != sheet && globals_.sheets[i].visibility == 0)
            return false;
    return true;
}

void Workbook::dropSheet(int sheet)
{
    save();
    bool removed = false;
    save([&](WorkbookWriter& writer) {
        removed = !mustKeepSheet(sheet) && !writer.refersTo(sheet);
        if (removed)
            writer.removeSheet(sheet);
        else
            writer.clear(sheet);
    });
    sheets_.erase(sheet);
    if (!removed)
        return;
    std::map<int, OpenSheet> moved;
    while (!sheets_.empty()) {
        auto node = sheets_.extract(sheets_.begin());
        node.key() -= node.key() > sheet ? 1 : 0;
        moved.insert(std::move(node));
    }
    sheets_ = std::move(moved);
}

void Workbook::hideName(const std::string& name)
{
    const std::vector<NameInfo>& names = globals().names;
    const auto found =
        std::find_if(names.begin(), names.end(), [&](const NameInfo& n) { return n.name == name; });
    if (found != names.end())
        save([at = found->lastRowAt](WorkbookWriter& writer) { writer.hideName(at); });
}

std::vector<std::string> Workbook::containerFaults() const
{
    return container_ ? container_->faults() : std::vector<std::string>{};
}

}  // namespace velnor::excel
