// access/formats/jet/row_placer.h - where the bytes of records go: pages with room, moves,
// deletion.
//
// A record keeps its home place for life. When it outgrows its page it moves to another and leaves
// a pointer at home; a record that moves again gets its pointer changed, so that there is one hop
// at most. The last page used is kept at hand: a long append looks at no map but for each new page.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "access/formats/jet/data_page.h"
#include "access/formats/jet/jet_table.h"

namespace velnor::jet {

class RowPlacer {
public:
    explicit RowPlacer(JetTable& table) : table_(table) {}

    /// Adds a record and gives its home place.
    RowPointer add(std::span<const std::uint8_t> bytes);
    /// Replaces a record; `stored` is where its bytes are now.
    void replace(RowPointer home, RowPointer stored, std::span<const std::uint8_t> bytes);
    /// Deletes a record. A page without records is given back.
    void remove(RowPointer home, RowPointer stored);

private:
    using Bytes = std::span<const std::uint8_t>;
    static constexpr std::size_t kPointer = 4;

    RowPointer put(Bytes bytes, std::uint16_t flags, PageNumber notOn);
    bool holdWithRoom(std::size_t bytes, PageNumber notOn);
    bool tryPage(PageNumber number, std::size_t bytes);
    void newPage();
    bool replaceOn(RowPointer place, Bytes bytes, std::uint16_t flags);
    void erase(RowPointer place);
    void point(RowPointer home, RowPointer target);

    JetTable& table_;
    PageRef page_;  // the last page used
    std::uint64_t pagesVersion_ = 0;
};

}  // namespace velnor::jet
