#include "access/formats/lotus/sheet_records.h"

#include "access/formats/lotus/lmbcs.h"

namespace velnor::lotus {

Bytes sheetNameRecord(std::uint8_t number, const WkBook& book)
{
    std::string name(4, '\0');
    auto* head = reinterpret_cast<std::uint8_t*>(name.data());
    storeLE(head, wk::kSheetNameKind);
    head[2] = number;
    encodeLmbcs(book.sheets.at(number).name, book.group, name);
    name += '\0';
    return {name.begin(), name.end()};
}

Bytes sheetCellRecord(std::uint8_t number)
{
    Bytes data(16);
    data[0] = number;
    return data;
}

Bytes sheetLayoutRecord(std::uint8_t number)
{
    return {number, 0, 0, 0, 9};
}

Bytes sheetDefaultRecord(std::uint8_t number)
{
    return {number, 1, 0, 0, 0x71, 0x40, 0x04, 0x40, 0x27, 0, 0, 0};
}

Bytes newBook(WkVersion version)
{
    constexpr std::uint8_t kBof[26] = {0, 0, 4, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                                       0, 0, 0, 1, 2, 0, 0, 0, 0, 0, 0, 0, 0};
    constexpr std::uint8_t kCalcSet[] = {1, 0, 0, 0, 1, 0};
    std::uint8_t window[28] = {1, 1, 1, 0};
    constexpr std::uint8_t kZero[] = {0};
    Bytes bytes;
    const auto put = [&bytes](std::uint16_t type, std::span<const std::uint8_t> data) {
        append16(bytes, type);
        append16(bytes, static_cast<unsigned>(data.size()));
        bytes.insert(bytes.end(), data.begin(), data.end());
    };
    put(wk::kBof, kBof);
    storeLE(&bytes[4], static_cast<std::uint16_t>(version));
    put(wk::kCalcSet, kCalcSet);
    put(wk::kWindowSet, window);
    put(wk::kUnknown21, kZero);
    put(wk::kZeroForce, kZero);
    put(wk::kSheetCell, sheetCellRecord(0));
    put(wk::kSheetLayout, sheetLayoutRecord(0));
    put(wk::kFormat, sheetDefaultRecord(0));
    put(wk::kEof, {});
    return bytes;
}

}  // namespace velnor::lotus
