#include "access/formats/paradox/key_order.h"

#include <algorithm>

#include "platform/paths.h"

namespace velnor::paradox {

bool textsSortByBytes(const FileHeader& table)
{
    if (table.version < 5)
        return table.sortByte == 0 || table.sortByte == 76;
    return table.sortName == "ascii" || table.sortName == "DBWINUS0";
}

KeyOrder keyOrderOf(const FileHeader& table, std::span<const StoredField> keyFields,
                    bool descending)
{
    const bool text = std::any_of(keyFields.begin(), keyFields.end(),
                                  [](const StoredField& field) { return field.isText(); });
    return {!text || textsSortByBytes(table), descending};
}

std::string sortOrderWords(const FileHeader& table)
{
    std::string words = table.sortName.empty() ? "number" : table.sortName;
    words += " " + std::to_string(table.sortByte);
    return words;
}

UpperCase::UpperCase(const CodePage& page) : page_(page)
{
    std::string scratch, made;
    for (unsigned i = 0; i < table_.size(); ++i) {
        table_[i] = static_cast<std::uint8_t>(i >= 'a' && i <= 'z' ? i - 'a' + 'A' : i);
        if (i < 0x80 || !page.singleByte())
            continue;
        const char letter = static_cast<char>(i);
        made.clear();
        if (page.encode(paths::foldName(page.decode({&letter, 1}, scratch)), made) &&
            made.size() == 1)
            table_[i] = static_cast<std::uint8_t>(made[0]);
    }
}

void UpperCase::apply(std::span<std::uint8_t> text) const
{
    const auto end = std::find(text.begin(), text.end(), std::uint8_t{0});
    std::fill(end, text.end(), std::uint8_t{0});
    const auto high = [](std::uint8_t c) { return c >= 0x80; };
    if (page_.singleByte() || std::none_of(text.begin(), end, high)) {
        std::transform(text.begin(), end, text.begin(),
                       [this](std::uint8_t c) { return table_[c]; });
        return;
    }
    std::string scratch, made;
    const std::string_view bytes(reinterpret_cast<const char*>(text.data()),
                                 static_cast<std::size_t>(end - text.begin()));
    if (page_.encode(paths::foldName(page_.decode(bytes, scratch)), made) &&
        made.size() == bytes.size())
        std::copy(made.begin(), made.end(), text.begin());
}

}  // namespace velnor::paradox
