// access/formats/jet/jet_file.h - an Access file as a space of pages: header, password, encoding,
// and the map of free pages.
//
// What a commit writes, and in which order (rule 4 of page_file.h), is told by the type of a page:
// records and long values, index leaves, index nodes, maps, table definitions, the header last.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "access/formats/driver.h"
#include "access/formats/jet/jet_format.h"
#include "access/formats/jet/page_codec.h"
#include "access/formats/jet/page_space.h"
#include "access/formats/jet/table_def.h"
#include "access/formats/jet/usage_map.h"
#include "access/storage/code_page.h"
#include "access/storage/page_file.h"

namespace velnor::jet {

/// What page 0 says.
struct JetHeader {
    SortOrder order;
    std::uint16_t codePage = 1252;
    std::uint16_t columnWord = 0;  // Jet 3
    std::uint16_t build = 0;
    std::uint32_t key = 0;  // of the encoding, 0 when the pages are plain
    double created = 0;     // Jet 4
    bool hasPassword = false;
    RowPointer globalMap, releasedMap;
};

class JetFile final : public PageSpace {
public:
    /// 3343 for what is no such file or an ACE file, 3031 for a wrong password, 3024 and 3044 when
    /// there is none.
    /// `undone`: see PageFileOptions.
    JetFile(FileSystem& files, const OpenRequest& request, bool undone = true);

    const JetFormat& format() const override { return *format_; }
    std::uint32_t pageCount() const override { return file_->pageCount(); }
    PageRef page(std::uint32_t number) override { return file_->read(number); }
    std::uint32_t allocate() override;
    void release(std::uint32_t number, std::uint8_t typeByte) override;
    /// Inside of a LongChange only: what fails drops all changes, and nobody else looks for that.
    void breathe() override;
    std::unique_ptr<File> scratch() override;

    const JetHeader& header() const { return header_; }
    /// Whether a password would open the file; any one does when there is none.
    bool acceptsPassword(std::string_view password);
    /// Page 0 without its mask.
    std::vector<std::uint8_t> plainHeader();
    /// 3001 for one that the header cannot hold; nothing is changed then.
    void setPassword(std::string_view password);
    const CodePage& codePage() const { return *codePage_; }
    NameCoding names() const { return {*format_, *codePage_}; }
    bool readOnly() const { return set_->readOnly(); }
    const std::string& path() const { return set_->path(); }
    UsageMap& freePages() { return *free_; }
    /// Bytes by which the file may still grow.
    std::uint64_t roomLeft() const
    {
        return format_->maxFileBytes - std::uint64_t{pageCount()} * format_->pageSize;
    }
    /// Whether the free map calls a page free; false when the map is damaged.
    bool isFree(PageNumber page);

    /// 3045 when another program has opened the file meanwhile; the caller rolls back.
    void commit();
    /// Takes changed pages out of memory before the commit. Fails as commit() does.
    void spill();
    void rollback();
    FileSet::Savepoint savepoint() { return FileSet::Savepoint(*set_); }
    /// To be called when pages went back to an earlier state.
    void forgetFreePages() { firstFree_ = kFirstOwnPage; }
    std::size_t pendingBytes() const { return set_->pendingBytes(); }
    /// Length at the last commit.
    std::uint64_t committedBytes() const { return committedBytes_; }
    std::uint64_t generation() const { return set_->generation(); }

    /// While one lives, whoever made it rolls back when anything fails. `look` is called now and
    /// then, and may end the change by throwing.
    class LongChange {
    public:
        explicit LongChange(JetFile& file, std::function<void()> look = {}) : file_(file)
        {
            ++file_.longChanges_;
            if (look)
                file_.look_ = std::move(look);
        }
        ~LongChange()
        {
            if (--file_.longChanges_ == 0)
                file_.look_ = nullptr;
        }
        LongChange(const LongChange&) = delete;
        LongChange& operator=(const LongChange&) = delete;

    private:
        JetFile& file_;
    };

private:
    static constexpr PageNumber kFirstOwnPage = 6;
    class Appender;  // gives the map of free pages its own pages

    void readHeader(const OpenRequest& request);
    void requireAlone();
    PageNumber appendTo(PageNumber number);

    FileSystem& files_;
    const JetFormat* format_;
    const CodePage* codePage_ = nullptr;
    JetHeader header_;
    std::unique_ptr<Rc4PageCodec> codec_;
    std::unique_ptr<FileSet> set_;
    PageFile* file_ = nullptr;
    std::unique_ptr<PageSpace> appender_;
    std::unique_ptr<UsageMap> free_;
    std::optional<UsageMap> released_;      // only when it holds pages: they are left alone
    PageNumber firstFree_ = kFirstOwnPage;  // no free page lies before it
    std::uint64_t committedBytes_ = 0;
    int longChanges_ = 0;
    std::function<void()> look_;
};

/// The ANSI code page of a language, where a file does not say its own.
int ansiCodePage(std::uint16_t lcid);

/// The order in which a commit writes pages of the main file.
int writeRank(const JetFormat& format, const std::uint8_t* page);

}  // namespace velnor::jet
