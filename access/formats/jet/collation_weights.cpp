#include "access/formats/jet/collation_weights.h"

#include <algorithm>
#include <iterator>

namespace velnor::jet {
namespace {

using Kind = UnitWeight::Kind;

/// Units in a row that weigh alike, or each one more than the one before.
struct Run {
    char16_t first, last;
    Kind kind;
    std::uint8_t step, primaryBytes, weights;
    std::array<std::uint8_t, 4> primary;
    std::array<std::uint8_t, 3> secondary;
};

constexpr Run kRuns[] = {
#include "access/formats/jet/jet4_weights.inc"
};

constexpr ByteWeight kByteWeights[256] = {
#include "access/formats/jet/jet3_weights.inc"
};

/// Last bytes of primaries run from 02 to FF, then carry.
void addSteps(UnitWeight& weight, unsigned steps)
{
    std::uint8_t& low = weight.primary[weight.primaryBytes - 1u];
    const unsigned place = low - 2u + steps;
    low = static_cast<std::uint8_t>(2 + place % 254);
    if (weight.primaryBytes > 1)
        weight.primary[weight.primaryBytes - 2u] += static_cast<std::uint8_t>(place / 254);
}

UnitWeight find(char16_t unit)
{
    const Run* run = std::ranges::upper_bound(kRuns, unit, {}, &Run::first);
    if (run == std::begin(kRuns) || (--run)->last < unit)
        return {};
    UnitWeight weight{run->kind, run->primaryBytes, run->weights, run->primary, run->secondary};
    if (run->step && run->primaryBytes > 0)
        addSteps(weight, static_cast<unsigned>(unit - run->first));
    return weight;
}

std::array<UnitWeight, 256> firstUnits()
{
    std::array<UnitWeight, 256> weights;
    for (unsigned u = 0; u < weights.size(); ++u)
        weights[u] = find(static_cast<char16_t>(u));
    return weights;
}

}  // namespace

UnitWeight unitWeight(char16_t unit)
{
    static const std::array<UnitWeight, 256> kFirst = firstUnits();
    return unit < kFirst.size() ? kFirst[unit] : find(unit);
}

const ByteWeight& byteWeight(std::uint8_t byte)
{
    return kByteWeights[byte];
}

}  // namespace velnor::jet
