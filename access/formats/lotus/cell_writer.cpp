#include "access/formats/lotus/cell_writer.h"

#include <algorithm>

#include "access/formats/lotus/lmbcs.h"
#include "access/formats/lotus/wk_number.h"

namespace velnor::lotus {
namespace {

using sheet::Cell;
using sheet::CellKind;

constexpr std::size_t kHead = 4;

}  // namespace

void CellWriter::putText(CellPlace place, std::string_view text, std::uint8_t alignment)
{
    label_.assign(kHead, '\0');
    storePlace(reinterpret_cast<std::uint8_t*>(label_.data()), place);
    label_ += static_cast<char>(alignment);
    encodeLmbcs(text, book_.group, label_);
    label_ += '\0';
    sink_.put(wk::kLabel, {reinterpret_cast<const std::uint8_t*>(label_.data()), label_.size()});
}

void CellWriter::put(CellPlace place, const Cell& cell, std::uint8_t alignment)
{
    if (cell.kind == CellKind::Blank)
        return;
    if (cell.kind == CellKind::Text)
        return putText(place, book_.texts.text(cell.text), alignment);
    std::uint8_t data[kHead + 10];
    storePlace(data, place);
    const std::span all(data);
    if (cell.kind == CellKind::Error)
        return sink_.put(wk::kErr, all.first(kHead));
    const auto small = cell.kind == CellKind::Number ? smallNumber(cell.number) : std::nullopt;
    if (small) {
        storeLE(data + kHead, *small);
        return sink_.put(wk::kSmallNumber, all.first(kHead + 2));
    }
    const auto real = real80(cell.number);
    std::copy(real.begin(), real.end(), data + kHead);
    sink_.put(wk::kNumber, all);
}

}  // namespace velnor::lotus
