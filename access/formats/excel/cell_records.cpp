#include "access/formats/excel/cell_records.h"

#include <bit>
#include <cmath>

#include "access/formats/excel/sheet_read.h"

namespace velnor::excel {
namespace {

using sheet::Cell;
using sheet::CellKind;

constexpr double kRkLimit = 536870912;  // 2^29
constexpr std::uint64_t kLowBits = (std::uint64_t{1} << 34) - 1;

std::optional<std::uint32_t> plainRk(double number)
{
    const auto bits = std::bit_cast<std::uint64_t>(number);
    if (number >= -kRkLimit && number < kRkLimit && number == std::floor(number) &&
        bits != std::bit_cast<std::uint64_t>(-0.0))
        return static_cast<std::uint32_t>(static_cast<std::int32_t>(number) * 4) | 2u;
    if ((bits & kLowBits) == 0)
        return static_cast<std::uint32_t>(bits >> 32);
    return std::nullopt;
}

template <class T> void append(std::vector<std::uint8_t>& out, T value)
{
    const std::size_t at = out.size();
    out.resize(at + sizeof value);
    storeLE(out.data() + at, value);
}

}  // namespace

std::optional<std::uint32_t> rkOfNumber(double number)
{
    if (const auto rk = plainRk(number))
        return rk;
    if (const auto rk = plainRk(number * 100); rk && numberOfRk(*rk | 1) == number)
        return *rk | 1;
    return std::nullopt;
}

void CellEncoder::writeText(std::uint32_t text)
{
    if (globals_.form->version == 8) {
        append(data_, (*texts_.numbers)[text]);
        return sink_.record(rec::kLabelSst, data_);
    }
    bytes_.clear();
    globals_.page->encode(texts_.texts->text(text), bytes_);
    append(data_, static_cast<std::uint16_t>(bytes_.size()));
    data_.insert(data_.end(), bytes_.begin(), bytes_.end());
    sink_.record(rec::kLabel, data_);
}

void CellEncoder::write(std::uint32_t row, const Cell& cell, std::uint16_t xf)
{
    data_.clear();
    append(data_, static_cast<std::uint16_t>(row));
    append(data_, cell.column);
    append(data_, xf);
    switch (cell.kind) {
    case CellKind::Text:
        return writeText(cell.text);
    case CellKind::Boolean:
        append(data_, std::uint8_t{cell.number != 0});
        append(data_, std::uint8_t{0});
        return sink_.record(rec::kBoolErr, data_);
    case CellKind::Number:
    case CellKind::Currency:
    case CellKind::Date:
        if (const auto rk = rkOfNumber(cell.number)) {
            append(data_, *rk);
            return sink_.record(rec::kRk, data_);
        }
        append(data_, cell.number);
        return sink_.record(rec::kNumber, data_);
    default:
        return sink_.record(rec::kBlank, data_);
    }
}

}  // namespace velnor::excel
