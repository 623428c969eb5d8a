// access/formats/sheet/text_pool.h - the texts of a workbook's cells, by number.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace velnor::sheet {

/// UTF-8 texts in large blocks. Numbers go up by one from 0; a text stays where it is until the
/// pool goes, so views of it stay good.
class TextPool {
public:
    /// Takes a copy; does not look whether the text is there already.
    std::uint32_t add(std::string_view utf8);
    /// The number of an equal text that was interned before, else of a new copy.
    std::uint32_t intern(std::string_view utf8);
    /// Lets intern() find a text that was added.
    void index(std::uint32_t id);

    /// Empty for a number that is not there: damaged files have such cells.
    std::string_view text(std::uint32_t id) const
    {
        return id < texts_.size() ? texts_[id] : std::string_view{};
    }
    std::size_t size() const { return texts_.size(); }

private:
    static constexpr std::uint32_t kFree = 0xFFFFFFFF;
    /// The hash beside the number spares most looks at the texts, which lie anywhere in memory.
    struct Slot {
        std::uint32_t hash = 0;
        std::uint32_t id = kFree;
    };

    char* room(std::size_t bytes);
    void grow();
    Slot& slotOf(std::string_view utf8, std::uint32_t hash);

    std::vector<std::string_view> texts_;
    std::vector<std::unique_ptr<char[]>> blocks_;
    char* free_ = nullptr;
    std::size_t left_ = 0;
    std::vector<Slot> slots_;  // open addressing, a power of two of places
    std::size_t taken_ = 0;
};

}  // namespace velnor::sheet
