#include "access/formats/jet/index_builder.h"

#include <algorithm>

#include "access/engine_error.h"
#include "access/storage/byte_reader.h"

namespace velnor::jet {

IndexBuilder::IndexBuilder(IndexTree& tree) : tree_(tree), levels_(1) {}

IndexBuilder::~IndexBuilder()
{
    if (finished_)
        return;
    tree_.reserve_.insert(tree_.reserve_.end(), taken_.begin(), taken_.end());
    tree_.returnReserve();
}

std::uint32_t IndexBuilder::takePage()
{
    taken_.reserve(taken_.size() + 1);
    const std::uint32_t page = tree_.reservePage();
    taken_.push_back(page);
    return page;
}

void IndexBuilder::add(KeyView key, RowPointer row)
{
    entry_.assign(key.begin(), key.end());
    entry_.resize(key.size() + 4);
    storeBE(entry_.data() + key.size(), row.word());
    if (!last_.empty() && compareEntries(last_, entry_) >= 0)
        throw EngineError(EngineErrorNumber::InvalidArgument, "Index entries do not ascend.");
    std::swap(last_, entry_);
    put(0, last_);
    ++count_;
}

bool IndexBuilder::hasRoom(Level& level, bool leaf, KeyView entry) const
{
    const auto area = static_cast<std::size_t>(tree_.format_.indexPage.entryBytes);
    if (level.open.empty()) {
        level.shared = tree_.format_.indexPage.prefixBytes == 1 ? 0xFF : 0xFFFF;
        return true;
    }
    const std::size_t plain = level.open.plainSize() + entry.size();
    const std::uint32_t shared = std::min(level.shared, sharedBytes(level.open.entry(0), entry));
    const std::size_t packed = plain - shared * static_cast<std::size_t>(level.open.count());
    if (plain > area && !(leaf && packed <= area))
        return false;
    level.shared = shared;
    return true;
}

void IndexBuilder::put(std::size_t level, KeyView entry)
{
    if (!hasRoom(levels_[level], level == 0, entry)) {
        closePage(level);
        hasRoom(levels_[level], level == 0, entry);
    }
    levels_[level].open.append(entry);
}

void IndexBuilder::closePage(std::size_t level)
{
    if (levels_[level].page == 0)
        levels_[level].page = takePage();
    const std::uint32_t next = takePage();
    if (level + 1 == levels_.size())
        levels_.emplace_back();
    Level& own = levels_[level];
    const std::uint32_t page = own.page;
    const KeyView last = own.open.entry(own.open.count() - 1);
    std::vector<std::uint8_t> separator(last.begin(), last.end());
    if (level > 0) {  // the last child goes into the tail, its separator one level up
        separator.resize(separator.size() - 4);
        own.open.tail = own.open.child(own.open.count() - 1);
        own.open.erase(own.open.count() - 1);
    }
    write(own, level, page, next);
    tree_.space_.breathe();
    own.open.clear();
    own.previous = page;
    own.page = next;
    separator.resize(separator.size() + 4);
    storeBE(separator.data() + separator.size() - 4, page);
    put(level + 1, separator);
}

void IndexBuilder::write(Level& level, std::size_t number, std::uint32_t page, std::uint32_t next)
{
    PageRef held = tree_.space_.page(page);
    std::uint8_t* bytes = held.edit();
    initIndexPage(tree_.format_, bytes, number == 0 ? page_type::kIndexLeaf : page_type::kIndexNode,
                  static_cast<std::uint8_t>(number), tree_.owner_);
    setPrevious(tree_.format_, bytes, level.previous);
    setNext(tree_.format_, bytes, next);
    writeIndexPage(tree_.format_, bytes, level.open);
}

void IndexBuilder::finish()
{
    std::uint32_t child = 0;
    for (std::size_t number = 0; number < levels_.size(); ++number) {
        Level& level = levels_[number];
        level.open.tail = child;
        const bool top = number + 1 == levels_.size();
        child = top ? tree_.root_ : level.page;
        write(level, number, child, 0);
    }
    tree_.nodesChanged();
    finished_ = true;
}

}  // namespace velnor::jet
