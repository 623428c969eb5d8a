#include "access/formats/jet/page_codec.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <optional>

#include "access/engine_error.h"
#include "access/formats/jet/jet_format.h"
#include "access/storage/byte_reader.h"
#include "access/storage/code_page.h"

namespace velnor::jet {
namespace {

constexpr std::size_t kVersionAt = 0x14;

constexpr std::array<std::uint8_t, 128> kHeaderMask{
    0xb5, 0x6f, 0x03, 0x62, 0x61, 0x08, 0xc2, 0x55, 0xeb, 0xa9, 0x67, 0x72, 0x43, 0x3f, 0x00, 0x9c,
    0x7a, 0x9f, 0x90, 0xff, 0x80, 0x9a, 0x31, 0xc5, 0x79, 0xba, 0xed, 0x30, 0xbc, 0xdf, 0xcc, 0x9d,
    0x63, 0xd9, 0xe4, 0xc3, 0x7b, 0x42, 0xfb, 0x8a, 0xbc, 0x4e, 0x86, 0xfb, 0xec, 0x37, 0x5d, 0x44,
    0x9c, 0xfa, 0xc6, 0x5e, 0x28, 0xe6, 0x13, 0xb6, 0x8a, 0x60, 0x54, 0x94, 0x7b, 0x36, 0xf5, 0x72,
    0xdf, 0xb1, 0x77, 0xf4, 0x13, 0x43, 0xcf, 0xaf, 0xb1, 0x33, 0x34, 0x61, 0x79, 0x5b, 0x92, 0xb5,
    0x7c, 0x2a, 0x05, 0xf1, 0x7c, 0x99, 0x01, 0x1b, 0x98, 0xfd, 0x12, 0x4f, 0x4a, 0x94, 0x6c, 0x3e,
    0x60, 0x26, 0x5f, 0x95, 0xf8, 0xd0, 0x89, 0x24, 0x85, 0x67, 0xc6, 0x1f, 0x27, 0x44, 0xd2, 0xee,
    0xcf, 0x65, 0xed, 0xff, 0x07, 0xc7, 0x46, 0xa1, 0x78, 0x16, 0x0c, 0xed, 0xe9, 0x2d, 0x62, 0xd4};

const JetFormat& formatOf(std::span<const std::uint8_t> header)
{
    return ByteReader(header, "database header").u8(kVersionAt) == kJet3.header.versionByte ? kJet3
                                                                                            : kJet4;
}

const CodePage& codePageOf(std::span<const std::uint8_t> header, const JetFormat& format)
{
    const int number =
        ByteReader(header, "database header").u16(static_cast<std::size_t>(format.header.codePage));
    const CodePage* page = CodePage::find(number);
    return page ? *page : *CodePage::find(1252);
}

/// The pattern that Jet 4 lays over a password: the whole days of the creation date.
std::array<std::uint8_t, 4> passwordPattern(std::span<const std::uint8_t> header,
                                            const JetFormat& format)
{
    std::array<std::uint8_t, 4> pattern{};
    if (format.header.created < 0)
        return pattern;
    const std::uint64_t bits =
        ByteReader(header, "database header").u64(static_cast<std::size_t>(format.header.created));
    const double created = std::trunc(std::bit_cast<double>(bits));
    if (std::fabs(created) < 2147483648.0)
        storeLE(pattern.data(), static_cast<std::int32_t>(created));
    return pattern;
}

/// The stored password without its pattern, its padding kept.
std::string storedPassword(std::span<const std::uint8_t> header, const JetFormat& format)
{
    const auto raw = ByteReader(header, "database header")
                         .text(static_cast<std::size_t>(format.header.password),
                               static_cast<std::size_t>(format.header.passwordBytes));
    const auto pattern = passwordPattern(header, format);
    std::string bytes(raw);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>(static_cast<std::uint8_t>(bytes[i]) ^ pattern[i % 4]);
    return bytes;
}

/// A password as stored, padded; nothing when it is too long or has a character that cannot be
/// stored.
std::optional<std::string> paddedPassword(std::span<const std::uint8_t> header,
                                          const JetFormat& format, std::string_view utf8)
{
    std::string bytes;
    if (format.wideText)
        utf8ToUtf16le(utf8, bytes);
    else if (!codePageOf(header, format).encode(utf8, bytes))
        return std::nullopt;
    const auto room = static_cast<std::size_t>(format.header.passwordBytes);
    if (bytes.size() > room)
        return std::nullopt;
    bytes.resize(room, '\0');
    return bytes;
}

class Rc4 {
public:
    explicit Rc4(std::span<const std::uint8_t> key)
    {
        for (std::size_t i = 0; i < 256; ++i)
            state_[i] = static_cast<std::uint8_t>(i);
        std::uint8_t j = 0;
        for (std::size_t i = 0; i < 256; ++i) {
            j = static_cast<std::uint8_t>(j + state_[i] + key[i % key.size()]);
            std::swap(state_[i], state_[j]);
        }
    }
    void apply(std::span<std::uint8_t> bytes)
    {
        std::uint8_t i = 0;
        std::uint8_t j = 0;
        for (std::uint8_t& b : bytes) {
            j = static_cast<std::uint8_t>(j + state_[++i]);
            std::swap(state_[i], state_[j]);
            b ^= state_[static_cast<std::uint8_t>(state_[i] + state_[j])];
        }
    }

private:
    std::array<std::uint8_t, 256> state_;
};

}  // namespace

void maskHeader(std::span<std::uint8_t> page0)
{
    if (page0.size() < kHeaderBytes)
        throw EngineError(EngineErrorNumber::Unrecognised, "The database header is cut short.");
    const HeaderLayout& layout = formatOf(page0).header;
    const auto from = static_cast<std::size_t>(layout.maskedFrom);
    for (std::size_t i = 0; i < static_cast<std::size_t>(layout.maskedBytes); ++i)
        page0[from + i] ^= kHeaderMask[i];
}

std::uint32_t encodingKey(std::span<const std::uint8_t> header)
{
    return ByteReader(header, "database header")
        .u32(static_cast<std::size_t>(formatOf(header).header.key));
}

std::string databasePassword(std::span<const std::uint8_t> header)
{
    const JetFormat& format = formatOf(header);
    const std::string stored = storedPassword(header, format);
    std::string_view bytes = stored;
    std::string scratch;
    if (!format.wideText)
        return std::string(
            codePageOf(header, format).decode(bytes.substr(0, bytes.find('\0')), scratch));
    std::size_t end = 0;
    while (end + 1 < bytes.size() && (bytes[end] != 0 || bytes[end + 1] != 0))
        end += 2;
    return std::string(
        utf16leToUtf8({reinterpret_cast<const std::uint8_t*>(bytes.data()), end}, scratch));
}

bool passwordMatches(std::span<const std::uint8_t> header, std::string_view utf8)
{
    const std::string password = databasePassword(header);
    return password.empty() || password == utf8;
}

void setDatabasePassword(std::span<std::uint8_t> header, std::string_view utf8)
{
    const JetFormat& format = formatOf(header);
    const auto padded = paddedPassword(header, format, utf8);
    if (!padded)
        throw EngineError(EngineErrorNumber::InvalidArgument,
                          "A database password has at most 20 characters of the code page.");
    const auto pattern = passwordPattern(header, format);
    const auto at = static_cast<std::size_t>(format.header.password);
    for (std::size_t i = 0; i < padded->size(); ++i)
        header[at + i] = static_cast<std::uint8_t>((*padded)[i]) ^ pattern[i % 4];
}

void Rc4PageCodec::decode(std::uint32_t page, std::span<std::uint8_t> bytes) const
{
    if (page == 0)
        return;
    std::array<std::uint8_t, 4> key;
    storeLE(key.data(), key_ ^ page);
    Rc4(key).apply(bytes);
}

void Rc4PageCodec::encode(std::uint32_t page, std::span<std::uint8_t> bytes) const
{
    decode(page, bytes);  // the same stream both ways
}

}  // namespace velnor::jet
