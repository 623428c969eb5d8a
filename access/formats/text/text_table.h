// access/formats/text/text_table.h - an open text file: its form, its fields, where its records
// are.
//
// Records are added at the end and never moved: the RowId of a record is its place in the file.
// What is added stays in memory until commit(); a failed commit leaves the file as it was.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "access/formats/text/text_form.h"
#include "access/formats/text/text_scan.h"
#include "access/storage/page_file.h"

namespace velnor::text {

struct TextOpening {
    FileSystem* files = nullptr;
    std::string path;
    bool readOnly = true;
    std::string codePage;  ///< overrides what is found; empty: believe the file
    std::string options;   ///< of the connect string: HDR=, FMT=
};

class TextTable {
public:
    /// Reads the file once from end to end.
    explicit TextTable(const TextOpening& opening);

    const std::string& path() const { return opening_.path; }
    const TextForm& form() const { return form_; }
    const ScanResult& facts() const { return facts_; }
    const std::vector<FieldDef>& fields() const { return fields_; }
    bool hasSchema() const { return hasSchema_; }
    std::int64_t recordCount() const { return facts_.places.count(); }
    const RecordPlaces& places() const { return facts_.places; }
    /// Where the records end, without a closing mark 0x1A.
    std::uint64_t end() const { return end_; }
    std::uint64_t fileBytes() const { return set_.main().size(); }
    PageFile& file() { return set_.main(); }
    /// Why records cannot be added; empty when they can.
    std::string whyNotUpdatable() const;

    /// Adds a record, UTF-8 without its line end; returns its place.
    std::uint64_t append(std::string_view record);
    void commit();
    std::size_t pendingBytes() const { return set_.pendingBytes(); }
    /// Grows with every change.
    std::uint64_t generation() const { return set_.generation(); }

private:
    void readForm();
    void applyOptions();
    void settleEncoding();
    void makeFields();
    std::string headText(std::size_t& bytes);
    void noteSaved();
    void rollback();

    TextOpening opening_;
    mutable FileSet set_;
    TextForm form_;
    ScanResult facts_;
    std::vector<FieldDef> fields_;
    bool hasSchema_ = false;
    std::uint64_t end_ = 0;
    std::uint64_t savedEnd_ = 0;
    std::int64_t savedCount_ = 0;
    bool savedLineEnd_ = true;
    bool savedHeaderMissing_ = false;
    std::string bytes_;
};

}  // namespace velnor::text
