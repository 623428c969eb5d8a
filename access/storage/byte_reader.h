// access/storage/byte_reader.h - bounded reading of file structures. Every access is checked: a wrong
// offset is error 3274 (or the number given), never a read outside the bytes.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

#include "access/engine_error.h"

namespace velnor {

/// Little- and big-endian numbers at a place that the caller has checked.
template <class T> inline T loadLE(const std::uint8_t* p)
{
    T v;
    std::memcpy(&v, p, sizeof v);
    static_assert(std::endian::native == std::endian::little);
    return v;
}
template <class T> inline void storeLE(std::uint8_t* p, T v) { std::memcpy(p, &v, sizeof v); }
template <class T> inline T loadBE(const std::uint8_t* p)
{
    T v = 0;
    for (std::size_t i = 0; i < sizeof v; ++i)
        v = static_cast<T>((v << 8) | p[i]);
    return v;
}
template <class T> inline void storeBE(std::uint8_t* p, T v)
{
    for (std::size_t i = sizeof v; i-- > 0; v = static_cast<T>(v >> 8))
        p[i] = static_cast<std::uint8_t>(v);
}

class ByteReader {
public:
    ByteReader(std::span<const std::uint8_t> bytes, const char* what,
               EngineErrorNumber error = EngineErrorNumber::UnexpectedFormat)
        : bytes_(bytes), what_(what), error_(error)
    {
    }

    std::size_t size() const { return bytes_.size(); }
    std::uint8_t u8(std::size_t at) const { return *need(at, 1); }
    std::uint16_t u16(std::size_t at) const { return loadLE<std::uint16_t>(need(at, 2)); }
    std::uint32_t u32(std::size_t at) const { return loadLE<std::uint32_t>(need(at, 4)); }
    std::int32_t i32(std::size_t at) const { return loadLE<std::int32_t>(need(at, 4)); }
    std::uint64_t u64(std::size_t at) const { return loadLE<std::uint64_t>(need(at, 8)); }
    std::uint32_t u24(std::size_t at) const
    {
        const std::uint8_t* p = need(at, 3);
        return p[0] | p[1] << 8 | p[2] << 16;
    }
    std::uint16_t u16be(std::size_t at) const { return loadBE<std::uint16_t>(need(at, 2)); }
    std::uint32_t u32be(std::size_t at) const { return loadBE<std::uint32_t>(need(at, 4)); }
    std::span<const std::uint8_t> bytes(std::size_t at, std::size_t count) const
    {
        return {need(at, count), count};
    }
    std::string_view text(std::size_t at, std::size_t count) const
    {
        return {reinterpret_cast<const char*>(need(at, count)), count};
    }

private:
    const std::uint8_t* need(std::size_t at, std::size_t count) const
    {
        if (at > bytes_.size() || count > bytes_.size() - at) [[unlikely]]
            fail(at);
        return bytes_.data() + at;
    }
    [[noreturn]] void fail(std::size_t at) const;

    std::span<const std::uint8_t> bytes_;
    const char* what_;
    EngineErrorNumber error_;
};

}  // namespace velnor
