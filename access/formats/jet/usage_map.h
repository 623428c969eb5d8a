// access/formats/jet/usage_map.h - sets of page numbers, kept in records of map pages.
//
// An inline map is a bitmap in the record itself, from a start page on; a reference map names pages
// of type 5 that hold the bits. An inline map that its page has no room to lengthen becomes a
// reference map, and stays one.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "access/formats/jet/jet_format.h"
#include "access/formats/jet/page_space.h"

namespace velnor::jet {

class UsageMap final : public PageMap {
public:
    enum class Kind {
        Listed,  ///< pages that something owns: what the map does not reach is not in it
        /// The map of free pages: what lies behind its reach is free. What lies before its start is
        /// not: some programs move the start on, past pages in use.
        Free,
    };
    UsageMap(PageSpace& space, RowPointer record, Kind kind = Kind::Listed)
        : space_(space), record_(record), free_(kind == Kind::Free)
    {
    }

    // 3197 when the record or a page of it is damaged.
    bool contains(std::uint32_t page) override;
    void add(std::uint32_t page) override { set(page, true); }
    void remove(std::uint32_t page) override { set(page, false); }
    std::uint32_t next(std::uint32_t from) override;

    /// The first page number that the bitmap does not reach.
    std::uint32_t reach();
    bool empty() { return next(1) == 0; }
    /// The pages of type 5 that a reference map uses; none of an inline map.
    std::vector<PageNumber> mapPages();
    RowPointer record() const { return record_; }

    /// Length of a new record, and its first content: inline, from page 0, nothing in it.
    static std::size_t newBytes(const JetFormat& format);
    static void lay(const JetFormat& format, std::uint8_t* record);

private:
    struct Record {
        PageRef page;
        std::span<const std::uint8_t> bytes;
        bool reference = false;
        std::uint32_t start = 0;               // inline
        std::span<const std::uint8_t> bitmap;  // inline
    };
    Record open();
    std::uint8_t* edit(Record& record);
    void set(std::uint32_t page, bool on);
    void setReference(Record& record, std::uint32_t page, bool on);
    bool makeRoom(Record& record, std::uint32_t page);
    void convert(Record& record);
    PageNumber mapPage(const Record& record, std::uint32_t index);
    PageNumber layMapPage();

    PageSpace& space_;
    RowPointer record_;
    bool free_;
};

}  // namespace velnor::jet
