#include "access/formats/excel/digest.h"

#include <bit>
#include <cmath>
#include <cstring>
#include <utility>
#include <vector>

#include "access/storage/byte_reader.h"

namespace velnor::excel {
namespace {

/// The 64 constants are the whole parts of 2^32 * |sin(n)|.
std::array<std::uint32_t, 64> sineTable()
{
    std::array<std::uint32_t, 64> table{};
    for (std::size_t i = 0; i < table.size(); ++i)
        table[i] = static_cast<std::uint32_t>(std::fabs(std::sin(static_cast<double>(i + 1))) *
                                              4294967296.0);
    return table;
}

void mixBlock(const std::uint8_t* block, std::array<std::uint32_t, 4>& state)
{
    static const std::array<std::uint32_t, 64> kSines = sineTable();
    static constexpr int kShifts[4][4] = {
        {7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};
    auto [a, b, c, d] = state;
    for (unsigned i = 0; i < 64; ++i) {
        std::uint32_t f = 0;
        unsigned word = 0;
        switch (i / 16) {
        case 0:
            f = (b & c) | (~b & d);
            word = i;
            break;
        case 1:
            f = (d & b) | (~d & c);
            word = (5 * i + 1) % 16;
            break;
        case 2:
            f = b ^ c ^ d;
            word = (3 * i + 5) % 16;
            break;
        default:
            f = c ^ (b | ~d);
            word = 7 * i % 16;
        }
        f += a + kSines[i] + loadLE<std::uint32_t>(block + 4 * word);
        a = d;
        d = c;
        c = b;
        b += std::rotl(f, kShifts[i / 16][i % 4]);
    }
    state[0] += a;
    state[1] += b;
    state[2] += c;
    state[3] += d;
}

}  // namespace

Digest md5(std::span<const std::uint8_t> data)
{
    std::array<std::uint32_t, 4> state{0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476};
    std::vector<std::uint8_t> padded(data.begin(), data.end());
    padded.push_back(0x80);
    while (padded.size() % 64 != 56)
        padded.push_back(0);
    padded.resize(padded.size() + 8);
    storeLE(padded.data() + padded.size() - 8, std::uint64_t{data.size()} * 8);
    for (std::size_t at = 0; at < padded.size(); at += 64)
        mixBlock(padded.data() + at, state);
    Digest digest;
    std::memcpy(digest.data(), state.data(), digest.size());
    return digest;
}

Rc4::Rc4(std::span<const std::uint8_t> key)
{
    for (std::size_t i = 0; i < 256; ++i)
        state_[i] = static_cast<std::uint8_t>(i);
    std::uint8_t j = 0;
    for (std::size_t i = 0; i < 256; ++i) {
        j = static_cast<std::uint8_t>(j + state_[i] + key[i % key.size()]);
        std::swap(state_[i], state_[j]);
    }
}

std::uint8_t Rc4::next()
{
    ++i_;
    j_ = static_cast<std::uint8_t>(j_ + state_[i_]);
    std::swap(state_[i_], state_[j_]);
    return state_[static_cast<std::uint8_t>(state_[i_] + state_[j_])];
}

}  // namespace velnor::excel
