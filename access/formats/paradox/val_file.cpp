#include "access/formats/paradox/val_file.h"

#include "access/engine_error.h"
#include "access/storage/byte_reader.h"

namespace velnor::paradox {
namespace {

constexpr std::size_t kHeaderBytes = 0x35, kCheckHead = 0x1C, kLookupBytes = 80;
constexpr std::uint8_t kFirstReadable = 5;

/// One check behind `at`, which moves behind it. Present are, in this order: lookup, minimum,
/// maximum, default, picture.
FieldCheck readCheck(const ByteReader& in, std::size_t& at,
                     std::span<const std::uint16_t> fieldLengths)
{
    const std::size_t start = at;
    FieldCheck check;
    check.field = in.u8(at);
    const std::size_t picture = in.u8(at + 1);
    check.required = in.u8(at + 2) != 0;
    const bool hasLookup = in.u32(at + 4) != 0, hasLeast = in.u32(at + 0x0C) != 0;
    const bool hasMost = in.u32(at + 0x10) != 0, hasDefault = in.u32(at + 0x14) != 0;
    const bool hasPicture = in.u32(at + 0x18) != 0;
    if (check.field >= fieldLengths.size())
        throw EngineError(EngineErrorNumber::UnexpectedFormat, "a check of no field");
    const std::size_t length = fieldLengths[check.field];
    at += kCheckHead + (hasLookup ? kLookupBytes : 0) + (hasLeast ? length : 0) +
          (hasMost ? length : 0);
    if (hasDefault) {
        const auto bytes = in.bytes(at, length);
        check.defaultValue.assign(bytes.begin(), bytes.end());
        at += length;
    }
    if (hasPicture)
        at += picture;
    const auto all = in.bytes(start, at - start);
    check.stored.assign(all.begin(), all.end());
    return check;
}

}  // namespace

std::optional<ValFile> readValFile(std::span<const std::uint8_t> bytes,
                                   std::span<const std::uint16_t> fieldLengths)
{
    const ByteReader in(bytes, "VAL file");
    try {
        ValFile val;
        val.structureStamp = in.u8(0);
        val.version = in.u8(1);
        if (val.version < kFirstReadable)
            return std::nullopt;
        const std::size_t count = in.u8(2);
        const std::size_t footer = in.u32(9);
        val.relations = in.u32(0x0D) != 0;
        std::size_t at = kHeaderBytes;
        for (std::size_t i = 0; i < count; ++i)
            val.checks.push_back(readCheck(in, at, fieldLengths));
        const std::size_t fields = in.u16(footer);
        for (std::size_t i = 0; i < fields; ++i)
            val.fieldIds.push_back(in.u16(footer + 6 + 2 * i));
        return val;
    } catch (const EngineError&) {
        return std::nullopt;
    }
}

}  // namespace velnor::paradox
