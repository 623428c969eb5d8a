#include "access/formats/xbase/index_node.h"

namespace velnor::xbase {
namespace {

std::ptrdiff_t step(std::size_t n)
{
    return static_cast<std::ptrdiff_t>(n);
}

}  // namespace

void TreeNode::clear()
{
    leaf = true;
    marks = 0;
    left = right = kNoNode;
    keys.clear();
    records.clear();
    children.clear();
}

void TreeNode::insertKey(std::size_t i, const std::uint8_t* key, std::uint32_t record)
{
    keys.insert(keys.begin() + step(i * keyLength), key, key + keyLength);
    records.insert(records.begin() + step(i), record);
}

void TreeNode::eraseKey(std::size_t i)
{
    keys.erase(keys.begin() + step(i * keyLength), keys.begin() + step((i + 1) * keyLength));
    records.erase(records.begin() + step(i));
}

void TreeNode::setKey(std::size_t i, const std::uint8_t* key, std::uint32_t record)
{
    std::memmove(keys.data() + i * keyLength, key, keyLength);
    records[i] = record;
}

void TreeNode::takeKeys(const TreeNode& from, std::size_t first, std::size_t number)
{
    keys.assign(from.key(first), from.key(first + number));
    records.assign(from.records.begin() + step(first), from.records.begin() + step(first + number));
}

void NodeStore::storeFilled(const SortedEntries& entries, std::size_t first, std::size_t count,
                            TreeNode& leaf)
{
    leaf.keys.assign(entries.key(first), entries.key(first + count));
    leaf.records.assign(entries.records + first, entries.records + first + count);
    store(leaf);
}

}  // namespace velnor::xbase
