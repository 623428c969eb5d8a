// access/formats/excel/workbook.h - an open workbook: its stream, its sheets as they are read and
// changed, and how it is written.
//
// Invariants:
//
// 1. The file is replaced as a whole (storage/replace_file.h): the old one stays until the new one
// is complete and safe.
//
// 2. After save() stream and globals are read again from the new file when they are next asked for;
// the cells in memory stay, so that tables and cursors on them go on.
//
// 3. Number n of the text pool is text n of the file's shared texts as they were when first read;
// later texts have the numbers in textNumbers_.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "access/formats/driver.h"
#include "access/formats/excel/compound_file.h"
#include "access/formats/excel/globals.h"
#include "access/formats/excel/sheet_read.h"
#include "access/formats/excel/workbook_writer.h"
#include "access/formats/sheet/sheet_table.h"

namespace velnor::excel {

/// A sheet that was read.
struct OpenSheet {
    std::shared_ptr<sheet::Sheet> sheet;
    SheetEdit edit;
    std::vector<BlankCell> blanks;
    std::vector<std::string> faults;
};

class Workbook {
public:
    /// 3274 for what is no workbook, 3161 for an encrypted one, 3031 for a wrong password, 3045
    /// when somebody else has it open.
    Workbook(FileSystem& files, const OpenRequest& request);

    const Globals& globals();
    const BiffForm& form() const { return *form_; }
    const sheet::TextPool& texts() const { return texts_; }
    /// The cells of a sheet, read at the first call.
    OpenSheet& sheet(int number);
    /// Its cells are read again when they are next asked for.
    void forget(int sheet) { sheets_.erase(sheet); }
    bool isEmpty(int sheet) { return !this->sheet(sheet).sheet->cells.usedArea(); }

    /// Why it cannot be written; empty when it can.
    const std::string& whyReadOnly() const { return whyReadOnly_; }
    void requireWriteable() const;
    /// 3421 for a text that version 5 cannot hold.
    void checkText(std::string_view utf8) const;

    /// Writes every change, and what `change` does to the structure. 3026 when the disk is full;
    /// then, and after any other failure, the changes wait for the next save().
    void save(const std::function<void(WorkbookWriter&)>& change = {});
    /// The area of a name ends in this row from the next save() on.
    void nameEnds(const std::string& name, std::uint32_t row) { nameEnds_[name] = row; }
    bool hasChanges() const;
    std::size_t pendingBytes() const;

    // Structure; each saves.
    int addSheet(const std::string& name);
    void renameSheet(int sheet, const std::string& name);
    /// Removes it where nothing can refer to it, else clears its cells.
    void dropSheet(int sheet);
    void hideName(const std::string& name);
    /// Nobody has written into it since it was made.
    bool isNew();

    bool hasContainer() const { return container_ != nullptr; }
    std::vector<std::string> containerFaults() const;
    Bytes stream()
    {
        globals();
        return stream_;
    }
    bool sharedTextsCutOff();
    std::size_t fileSize() { return static_cast<std::size_t>(file_->size()); }

private:
    void openFile();
    void readStream();
    void unlockStream();
    void readTexts();
    void writeFile(WorkbookWriter& writer);
    std::vector<std::string_view> numberNewTexts();
    bool hasStorage(std::string_view name) const;
    bool mustKeepSheet(int sheet);

    FileSystem& files_;
    OpenRequest request_;
    std::unique_ptr<File> file_;
    std::unique_ptr<CompoundFile> container_;  // none for a bare stream
    std::size_t entry_ = 0;                    // of the stream in the container
    std::string streamName_;
    std::vector<std::uint8_t> stream_;
    Globals globals_;
    bool stale_ = false;  // stream and globals are of an older file
    const BiffForm* form_ = nullptr;
    const CodePage* page_ = nullptr;       // of 8-bit texts
    const CodePage* givenPage_ = nullptr;  // by the connect string
    std::string whyReadOnly_;

    sheet::TextPool texts_;
    bool textsRead_ = false;
    bool textsCutOff_ = false;
    std::uint32_t textsInFile_ = 0;
    std::vector<std::uint32_t> textNumbers_;  // by number in the pool; kNoNumber: not in the file
    std::vector<bool> rich_;
    std::map<int, OpenSheet> sheets_;
    std::map<std::string, std::uint32_t> nameEnds_;
};

}  // namespace velnor::excel
