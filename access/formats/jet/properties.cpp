#include "access/formats/jet/properties.h"

#include <algorithm>
#include <utility>

#include "access/formats/jet/jet_format.h"
#include "access/storage/byte_reader.h"

namespace velnor::jet {
namespace {

constexpr std::uint16_t kNameChunk = 0x80;
constexpr std::uint16_t kTableChunk = 0;
constexpr std::uint16_t kFieldChunk = 1;
constexpr std::size_t kChunkHead = 6;
constexpr std::size_t kEntryHead = 8;

template <class T> void put(std::string& out, T value)
{
    std::uint8_t bytes[sizeof value];
    storeLE(bytes, value);
    out.append(reinterpret_cast<const char*>(bytes), sizeof value);
}

std::string toUtf8(std::string_view stored, const PropertyText& text)
{
    std::string scratch;
    if (!text.jet3)
        return std::string(utf16leToUtf8(
            {reinterpret_cast<const std::uint8_t*>(stored.data()), stored.size()}, scratch));
    return std::string(text.codePage ? text.codePage->decode(stored, scratch) : stored);
}

std::string fromUtf8(std::string_view utf8, const PropertyText& text)
{
    std::string bytes;
    if (!text.jet3)
        utf8ToUtf16le(utf8, bytes);
    else if (!text.codePage)
        bytes = utf8;
    else if (!text.codePage->encode(utf8, bytes))
        throw EngineError(EngineErrorNumber::InvalidArgument,
                          "A property holds characters that the code page of the database lacks.");
    return bytes;
}

std::string_view signatureOf(const PropertyText& text)
{
    const auto& signature = (text.jet3 ? kJet3 : kJet4).propertySignature;
    return {signature.data(), signature.size()};
}

[[noreturn]] void damaged()
{
    throw EngineError(EngineErrorNumber::UnexpectedFormat, "A property block is damaged.");
}

std::string_view asText(std::span<const std::uint8_t> bytes)
{
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

bool sameName(std::string_view a, std::string_view b)
{
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
    return std::ranges::equal(a, b, {}, lower, lower);
}

bool isOwnerChunk(std::uint16_t kind)
{
    return kind == kTableChunk || kind == kFieldChunk;
}

/// A reader over a part of the block: what runs over its end is damage of the block.
ByteReader readerOf(std::span<const std::uint8_t> bytes)
{
    return {bytes, "property block"};
}

}  // namespace

PropertyBlock PropertyBlock::parse(std::span<const std::uint8_t> bytes, PropertyText text)
{
    PropertyBlock block(text);
    if (bytes.empty())
        return block;
    const ByteReader in = readerOf(bytes);
    if (in.text(0, 4) != signatureOf(text))
        damaged();
    for (std::size_t at = 4; at < bytes.size();) {
        const std::uint32_t length = in.u32(at);
        const std::uint16_t kind = in.u16(at + 4);
        if (length < kChunkHead)
            damaged();
        const auto body = in.bytes(at + kChunkHead, length - kChunkHead);
        if (kind == kNameChunk) {
            block.parseNames(body);
            block.chunks_.push_back({.kind = kind, .owner = {}, .entries = {}, .raw = {}});
        } else if (isOwnerChunk(kind)) {
            block.chunks_.push_back(block.parseOwner(kind, body));
        } else {
            block.chunks_.push_back(
                {.kind = kind, .owner = {}, .entries = {}, .raw = std::string(asText(body))});
        }
        at += length;
    }
    return block;
}

void PropertyBlock::parseNames(std::span<const std::uint8_t> body)
{
    if (!names_.empty())
        damaged();
    const ByteReader in = readerOf(body);
    for (std::size_t at = 0; at < body.size();) {
        const std::string_view stored = in.text(at + 2, in.u16(at));
        names_.push_back({toUtf8(stored, text_), std::string(stored)});
        at += 2 + stored.size();
    }
}

PropertyBlock::Chunk PropertyBlock::parseOwner(std::uint16_t kind,
                                               std::span<const std::uint8_t> body) const
{
    const ByteReader in = readerOf(body);
    const std::string_view owner = in.text(6, in.u16(4));
    if (in.u32(0) != 6 + owner.size())
        damaged();
    Chunk chunk{kind, {toUtf8(owner, text_), std::string(owner)}, {}, {}};
    for (std::size_t at = 6 + owner.size(); at < body.size();) {
        const std::uint16_t length = in.u16(at);
        const std::uint16_t nameAt = in.u16(at + 4);
        const std::uint16_t size = in.u16(at + 6);
        if (length != kEntryHead + size || nameAt >= names_.size())
            damaged();
        chunk.entries.push_back({names_[nameAt].utf8, nameAt, in.u8(at + 2), in.u8(at + 3),
                                 std::string(in.text(at + kEntryHead, size))});
        at += length;
    }
    return chunk;
}

std::string PropertyBlock::namesBody() const
{
    std::string body;
    for (const Name& name : names_) {
        put(body, static_cast<std::uint16_t>(name.stored.size()));
        body += name.stored;
    }
    return body;
}

std::string PropertyBlock::ownerBody(const Chunk& chunk) const
{
    std::string body;
    put(body, static_cast<std::uint32_t>(6 + chunk.owner.stored.size()));
    put(body, static_cast<std::uint16_t>(chunk.owner.stored.size()));
    body += chunk.owner.stored;
    for (const Property& entry : chunk.entries) {
        put(body, static_cast<std::uint16_t>(kEntryHead + entry.data.size()));
        body.push_back(static_cast<char>(entry.ddl));
        body.push_back(static_cast<char>(entry.type));
        put(body, entry.nameAt);
        put(body, static_cast<std::uint16_t>(entry.data.size()));
        body += entry.data;
    }
    return body;
}

std::string PropertyBlock::build() const
{
    if (chunks_.empty())
        return {};
    std::string out(signatureOf(text_));
    for (const Chunk& chunk : chunks_) {
        const std::string body = chunk.kind == kNameChunk   ? namesBody()
                                 : isOwnerChunk(chunk.kind) ? ownerBody(chunk)
                                                            : chunk.raw;
        put(out, static_cast<std::uint32_t>(kChunkHead + body.size()));
        put(out, chunk.kind);
        out += body;
    }
    return out;
}

const PropertyBlock::Chunk* PropertyBlock::findOwner(std::string_view name) const
{
    const auto at = std::ranges::find_if(chunks_, [&](const Chunk& c) {
        return isOwnerChunk(c.kind) && sameName(c.owner.utf8, name);
    });
    return at == chunks_.end() ? nullptr : &*at;
}

PropertyBlock::Chunk* PropertyBlock::findOwner(std::string_view name)
{
    return const_cast<Chunk*>(std::as_const(*this).findOwner(name));
}

const Property* PropertyBlock::find(std::string_view owner, std::string_view name) const
{
    const Chunk* chunk = findOwner(owner);
    if (!chunk)
        return nullptr;
    const auto at = std::ranges::find_if(chunk->entries,
                                         [&](const Property& p) { return sameName(p.name, name); });
    return at == chunk->entries.end() ? nullptr : &*at;
}

std::vector<std::string> PropertyBlock::owners() const
{
    std::vector<std::string> names;
    for (const Chunk& chunk : chunks_)
        if (isOwnerChunk(chunk.kind))
            names.push_back(chunk.owner.utf8);
    return names;
}

std::string PropertyBlock::text(std::string_view owner, std::string_view name) const
{
    const Property* property = find(owner, name);
    if (!property || (property->type != static_cast<std::uint8_t>(PropertyType::Text) &&
                      property->type != static_cast<std::uint8_t>(PropertyType::Memo)))
        return {};
    return toUtf8(property->data, text_);
}

std::optional<bool> PropertyBlock::flag(std::string_view owner, std::string_view name) const
{
    const Property* property = find(owner, name);
    if (!property || property->type != static_cast<std::uint8_t>(PropertyType::Boolean) ||
        property->data.empty())
        return std::nullopt;
    return property->data[0] != 0;
}

std::uint16_t PropertyBlock::nameIndex(std::string_view name)
{
    const auto at =
        std::ranges::find_if(names_, [&](const Name& n) { return sameName(n.utf8, name); });
    const auto index = static_cast<std::uint16_t>(at - names_.begin());
    if (at == names_.end())
        names_.push_back({std::string(name), fromUtf8(name, text_)});
    return index;
}

PropertyBlock::Chunk& PropertyBlock::ownerFor(std::string_view name)
{
    if (Chunk* chunk = findOwner(name))
        return *chunk;
    if (std::ranges::none_of(chunks_, [](const Chunk& c) { return c.kind == kNameChunk; }))
        chunks_.insert(chunks_.begin(),
                       Chunk{.kind = kNameChunk, .owner = {}, .entries = {}, .raw = {}});
    const Chunk made{name.empty() ? kTableChunk : kFieldChunk,
                     {std::string(name), fromUtf8(name, text_)},
                     {},
                     {}};
    if (!name.empty())
        return chunks_.emplace_back(made);
    return *chunks_.insert(chunks_.begin() + 1, made);  // the table stands before its fields
}

Property& PropertyBlock::entryFor(std::string_view owner, std::string_view name)
{
    Chunk& chunk = ownerFor(owner);
    const auto at = std::ranges::find_if(chunk.entries,
                                         [&](const Property& p) { return sameName(p.name, name); });
    if (at != chunk.entries.end())
        return *at;
    const std::uint16_t index = nameIndex(name);
    return chunk.entries.emplace_back(
        Property{names_[index].utf8, index, std::uint8_t{1}, std::uint8_t{0}, std::string()});
}

void PropertyBlock::setFlag(std::string_view owner, std::string_view name, bool value)
{
    Property& entry = entryFor(owner, name);
    entry.type = static_cast<std::uint8_t>(PropertyType::Boolean);
    entry.data.assign(1, value ? '\1' : '\0');
}

void PropertyBlock::setText(std::string_view owner, std::string_view name, PropertyType type,
                            std::string_view utf8)
{
    if (utf8.empty())
        return remove(owner, name);
    std::string data = fromUtf8(utf8, text_);
    if (data.size() > 0xFFFF - kEntryHead)
        throw EngineError(EngineErrorNumber::ValueTooLong, "A property is too long.");
    Property& entry = entryFor(owner, name);
    entry.type = static_cast<std::uint8_t>(type);
    entry.data = std::move(data);
}

void PropertyBlock::remove(std::string_view owner, std::string_view name)
{
    Chunk* chunk = findOwner(owner);
    if (!chunk)
        return;
    std::erase_if(chunk->entries, [&](const Property& p) { return sameName(p.name, name); });
    if (chunk->entries.empty())
        dropOwner(owner);
}

void PropertyBlock::renameOwner(std::string_view from, std::string_view to)
{
    if (Chunk* chunk = findOwner(from))
        chunk->owner = {std::string(to), fromUtf8(to, text_)};
}

void PropertyBlock::dropOwner(std::string_view owner)
{
    std::erase_if(chunks_, [&](const Chunk& c) {
        return isOwnerChunk(c.kind) && sameName(c.owner.utf8, owner);
    });
    if (std::ranges::all_of(chunks_, [](const Chunk& c) { return c.kind == kNameChunk; })) {
        chunks_.clear();
        names_.clear();
    }
}

}  // namespace velnor::jet
