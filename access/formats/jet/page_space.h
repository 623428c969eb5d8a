// access/formats/jet/page_space.h - what index trees and long values need of their file: pages, and
// the maps that own them.
#pragma once

#include <cstdint>
#include <memory>

#include "access/storage/page_file.h"

namespace velnor::jet {

struct JetFormat;  // jet_format.h: every offset and limit that differs by version

class PageSpace {
public:
    virtual ~PageSpace() = default;
    virtual const JetFormat& format() const = 0;
    virtual std::uint32_t pageCount() const = 0;
    /// The page, held. 3197 when the number lies outside the file.
    virtual PageRef page(std::uint32_t number) = 0;
    /// A free page, zeroed, marked in use in the global map (the file grows when there is none).
    virtual std::uint32_t allocate() = 0;
    /// Gives a page back: type byte 8 (definitions) or 9 (all others), marked free.
    virtual void release(std::uint32_t number, std::uint8_t typeByte) = 0;
    /// To be called now and then in a long change, while nobody is writing to a page: changed pages
    /// may go to the disk before their commit.
    virtual void breathe() {}
    /// An empty file for what does not fit into memory, which is gone when it is closed; null when
    /// there can be none.
    virtual std::unique_ptr<File> scratch() { return nullptr; }
};

/// One usage map record: a set of page numbers.
class PageMap {
public:
    virtual ~PageMap() = default;
    virtual bool contains(std::uint32_t page) = 0;
    virtual void add(std::uint32_t page) = 0;
    virtual void remove(std::uint32_t page) = 0;
    /// The lowest page in the map that is >= `from`; 0 when there is none.
    virtual std::uint32_t next(std::uint32_t from) = 0;
};

}  // namespace velnor::jet
