#include "access/formats/xbase/plain_node.h"

#include <algorithm>
#include <bit>

#include "access/engine_error.h"
#include "access/storage/byte_reader.h"

namespace velnor::xbase {
namespace {

[[noreturn]] void damaged()
{
    throw EngineError(EngineErrorNumber::Corrupt,
                      "A node of an index is damaged: its entries do not fit.");
}

void keyFromFile(const std::uint8_t* file, const KeyForm& form, std::uint8_t* order)
{
    switch (form.coding) {
    case KeyCoding::Double:
    case KeyCoding::LateDay:
        putOrderedDouble(loadLE<double>(file), order);
        break;
    case KeyCoding::Decimal:
        decimalFromFile(file, order);
        break;
    default:
        std::copy_n(file, form.length, order);
    }
    if (form.turned)
        for (std::uint32_t i = 0; i < form.length; ++i)
            order[i] = static_cast<std::uint8_t>(~order[i]);
}

void keyToFile(const std::uint8_t* order, const KeyForm& form, std::uint8_t* file)
{
    std::uint8_t turned[kLongestKey];
    if (form.turned) {
        for (std::uint32_t i = 0; i < form.length; ++i)
            turned[i] = static_cast<std::uint8_t>(~order[i]);
        order = turned;
    }
    switch (form.coding) {
    case KeyCoding::Double:
    case KeyCoding::LateDay:
        storeLE(file, orderedDouble(order));
        break;
    case KeyCoding::Decimal:
        decimalToFile(order, file);
        break;
    default:
        std::copy_n(order, form.length, file);
    }
}

}  // namespace

void decodePlainNode(std::span<const std::uint8_t> bytes, const PlainShape& shape, TreeNode& node)
{
    node.clear();
    const std::size_t count = loadLE<std::uint16_t>(bytes.data());
    const std::size_t end = shape.head + count * shape.item;
    if (count > shape.mostKeys || end > bytes.size())
        damaged();
    const std::size_t teller = (shape.firstChildTells ? shape.head : end) + shape.childAt;
    node.leaf = teller + 4 > bytes.size() || loadLE<std::uint32_t>(bytes.data() + teller) == 0;
    if (!node.leaf && end + shape.childAt + 4 > bytes.size())
        damaged();
    node.keys.resize(count * node.keyLength);
    const std::uint8_t* p = bytes.data() + shape.head;
    for (std::size_t i = 0; i < count; ++i, p += shape.item) {
        keyFromFile(p + shape.keyAt, shape.form, node.keys.data() + i * node.keyLength);
        node.records.push_back(node.leaf ? loadLE<std::uint32_t>(p + shape.recordAt) : 0);
        if (!node.leaf)
            node.children.push_back(loadLE<std::uint32_t>(p + shape.childAt));
    }
    if (!node.leaf)
        node.children.push_back(loadLE<std::uint32_t>(p + shape.childAt));
}

void encodePlainNode(const TreeNode& node, const PlainShape& shape, std::span<std::uint8_t> bytes)
{
    storeLE(bytes.data(), static_cast<std::uint32_t>(node.count()));
    std::fill(bytes.begin() + shape.head, bytes.end(), std::uint8_t{0});
    std::uint8_t* p = bytes.data() + shape.head;
    for (std::size_t i = 0; i < node.count(); ++i, p += shape.item) {
        if (node.leaf)
            storeLE(p + shape.recordAt, node.records[i]);
        else
            storeLE(p + shape.childAt, node.children[i]);
        keyToFile(node.key(i), shape.form, p + shape.keyAt);
    }
    if (!node.leaf)
        storeLE(p + shape.childAt, node.children.back());
}

}  // namespace velnor::xbase
