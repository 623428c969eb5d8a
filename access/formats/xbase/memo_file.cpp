#include "access/formats/xbase/memo_file.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "access/engine_error.h"
#include "access/storage/byte_reader.h"

namespace velnor::xbase {
namespace {

constexpr std::uint32_t kHeaderBytes = 512;
constexpr std::uint32_t kPrefixBytes = 8;  ///< mark or type, and length, in front of a memo
constexpr std::uint8_t kEndMark = 0x1A;
constexpr std::uint8_t kFourMark[] = {0xFF, 0xFF, 0x08, 0x00};
constexpr std::uint32_t kNewFptBlock = 64;
constexpr std::uint32_t kTextKind = 1, kObjectKind = 2;
/// No real memo without a length is longer; a lost end mark must not fill the memory.
constexpr std::uint64_t kLongestUnmarked = 64u << 20;
/// A next free block so far behind the end of the file is damage.
constexpr std::uint64_t kBelievableGap = 1u << 20;

std::uint32_t blockSizeOf(PageFile& file, MemoForm form)
{
    std::array<std::uint8_t, 24> head{};
    file.readAt(0, head);
    if (form == MemoForm::Fpt)
        return std::max<std::uint32_t>(1, loadBE<std::uint16_t>(&head[6]));
    const std::uint32_t stated = form == MemoForm::DbtIV ? loadLE<std::uint16_t>(&head[20]) : 0;
    return stated ? stated : kHeaderBytes;
}

}  // namespace

PageFileOptions memoFileOptions()
{
    PageFileOptions options;
    options.pageSize = 16384;
    options.rank = 0;
    return options;
}

MemoFile::MemoFile(PageFile& file, MemoForm form)
    : file_(file), form_(form), blockSize_(blockSizeOf(file, form))
{
}

std::uint32_t MemoFile::nextFreeBlock() const
{
    std::array<std::uint8_t, 4> bytes{};
    file_.readAt(0, bytes);
    return form_ == MemoForm::Fpt ? loadBE<std::uint32_t>(bytes.data())
                                  : loadLE<std::uint32_t>(bytes.data());
}

void MemoFile::setNextFreeBlock(std::uint32_t block)
{
    std::array<std::uint8_t, 4> bytes;
    if (form_ == MemoForm::Fpt)
        storeBE(bytes.data(), block);
    else
        storeLE(bytes.data(), block);
    file_.writeAt(0, bytes);
}

/// Where the first end mark stands; `to` when there is none.
std::uint64_t MemoFile::findEndMark(std::uint64_t from, std::uint64_t to) const
{
    std::array<std::uint8_t, 512> chunk;
    while (from < to) {
        const std::size_t want =
            static_cast<std::size_t>(std::min<std::uint64_t>(sizeof chunk, to - from));
        const std::size_t got = file_.readAt(from, std::span(chunk).first(want));
        if (got == 0)
            return to;
        if (const void* mark = std::memchr(chunk.data(), kEndMark, got))
            return from + static_cast<std::uint64_t>(static_cast<const std::uint8_t*>(mark) -
                                                     chunk.data());
        from += got;
    }
    return to;
}

void MemoFile::extentOfThree(MemoExtent& found) const
{
    const std::uint64_t to =
        found.dataOffset + std::min(file_.size() - found.dataOffset, kLongestUnmarked);
    const std::uint64_t end = findEndMark(found.dataOffset, to);
    found.state = end == to ? MemoExtent::State::CutShort : MemoExtent::State::Whole;
    found.dataBytes = end - found.dataOffset;
}

void MemoFile::extentWithLength(MemoExtent& found, std::uint64_t stated) const
{
    found.dataOffset += kPrefixBytes;
    const std::uint64_t there = file_.size() - std::min(file_.size(), found.dataOffset);
    found.state = stated > there ? MemoExtent::State::CutShort : MemoExtent::State::Whole;
    found.dataBytes = std::min(stated, there);
}

void MemoFile::closeExtent(MemoExtent& found, std::uint64_t start) const
{
    // In the III form only the first end mark belongs to the memo without fail.
    const std::uint64_t used =
        found.dataOffset - start + found.dataBytes + (form_ == MemoForm::DbtIII ? 1 : 0);
    found.endOffset = start + (used + blockSize_ - 1) / blockSize_ * blockSize_;
}

MemoExtent MemoFile::extent(std::uint64_t block) const
{
    MemoExtent found;
    const std::uint64_t size = file_.size();
    if (block == 0 || block > size / blockSize_ || block * blockSize_ >= size)
        return found;
    const std::uint64_t start = found.dataOffset = block * blockSize_;
    std::array<std::uint8_t, kPrefixBytes> prefix{};
    const bool hasPrefix = file_.readAt(start, prefix) == prefix.size();
    if (form_ == MemoForm::Fpt) {
        if (hasPrefix)
            extentWithLength(found, loadBE<std::uint32_t>(&prefix[4]));
        else
            found.state = MemoExtent::State::CutShort;
    } else if (form_ == MemoForm::DbtIV && hasPrefix &&
               std::equal(std::begin(kFourMark), std::end(kFourMark), prefix.begin())) {
        const std::uint32_t stated = loadLE<std::uint32_t>(&prefix[4]);
        extentWithLength(found, stated - std::min(stated, kPrefixBytes));
    } else {
        extentOfThree(found);
        if (form_ == MemoForm::DbtIV && found.state == MemoExtent::State::Whole)
            found.state = MemoExtent::State::OtherForm;
    }
    closeExtent(found, start);
    return found;
}

bool MemoFile::read(std::uint64_t block, std::string& out) const
{
    const MemoExtent found = extent(block);
    if (found.state == MemoExtent::State::PastEnd)
        return false;
    out.resize(static_cast<std::size_t>(found.dataBytes));
    const std::size_t got =
        file_.readAt(found.dataOffset, {reinterpret_cast<std::uint8_t*>(out.data()), out.size()});
    out.resize(got);
    return true;
}

std::uint64_t MemoFile::blocksFor(std::uint64_t dataBytes) const
{
    const std::uint64_t extra = form_ == MemoForm::DbtIII ? 2 : kPrefixBytes;
    return (dataBytes + extra + blockSize_ - 1) / blockSize_;
}

/// 2.
std::uint64_t MemoFile::appendBlock() const
{
    const std::uint64_t size = std::max<std::uint64_t>(file_.size(), kHeaderBytes);
    const std::uint64_t end = (size + blockSize_ - 1) / blockSize_;
    const std::uint64_t hint = nextFreeBlock();
    return hint > end && (hint - end) * blockSize_ <= kBelievableGap ? hint : end;
}

void MemoFile::checkStorable(std::span<const std::uint8_t> bytes) const
{
    if (form_ == MemoForm::DbtIII && std::find(bytes.begin(), bytes.end(), kEndMark) != bytes.end())
        throw EngineError(EngineErrorNumber::TypeConversion,
                          "The memo file of this table cannot hold a text with the character 26.");
    if (bytes.size() > 0x7FFFFFF0u)
        throw EngineError(EngineErrorNumber::ValueTooLong, "The text is too long for a memo file.");
}

std::uint32_t MemoFile::write(std::span<const std::uint8_t> bytes, bool text, std::uint64_t old)
{
    return store(bytes, text ? kTextKind : kObjectKind, old);
}

std::uint32_t MemoFile::take(const MemoFile& from, std::uint64_t block, std::string& scratch)
{
    if (!from.read(block, scratch))
        return 0;
    std::array<std::uint8_t, 4> kind{};
    if (form_ == MemoForm::Fpt)
        from.file_.readAt(block * from.blockSize_, kind);
    const std::span bytes(reinterpret_cast<const std::uint8_t*>(scratch.data()), scratch.size());
    return store(bytes, loadBE<std::uint32_t>(kind.data()), 0);
}

std::uint32_t MemoFile::store(std::span<const std::uint8_t> bytes, std::uint32_t kind,
                              std::uint64_t old)
{
    checkStorable(bytes);
    const std::uint64_t blocks = blocksFor(bytes.size());
    const MemoExtent before = old ? extent(old) : MemoExtent{};
    const bool fits = before.state == MemoExtent::State::Whole &&
                      before.endOffset - old * blockSize_ >= blocks * blockSize_;
    const std::uint64_t block = fits ? old : appendBlock();
    if (block + blocks > 0xFFFFFFFFu)
        throw EngineError(EngineErrorNumber::DatabaseFull, "The memo file is full.");

    std::uint64_t at = block * blockSize_;
    if (form_ != MemoForm::DbtIII) {
        std::array<std::uint8_t, kPrefixBytes> prefix;
        const auto length = static_cast<std::uint32_t>(bytes.size());
        if (form_ == MemoForm::Fpt) {
            storeBE(prefix.data(), kind);
            storeBE(&prefix[4], length);
        } else {
            std::copy(std::begin(kFourMark), std::end(kFourMark), prefix.begin());
            storeLE(&prefix[4], length + kPrefixBytes);
        }
        file_.writeAt(at, prefix);
        at += prefix.size();
    }
    file_.writeAt(at, bytes);
    if (form_ == MemoForm::DbtIII)
        file_.writeAt(at + bytes.size(), std::array{kEndMark, kEndMark});
    if (!fits) {
        const std::uint64_t end = (block + blocks) * blockSize_;
        if (file_.size() < end)
            file_.resize(end);
        setNextFreeBlock(static_cast<std::uint32_t>(block + blocks));
    }
    return static_cast<std::uint32_t>(block);
}

std::vector<std::uint8_t> newMemoHeader(MemoForm form, std::string_view tableName,
                                        std::uint32_t blockSize)
{
    std::vector<std::uint8_t> head(kHeaderBytes, 0);
    if (form == MemoForm::Fpt) {
        const std::uint32_t size = blockSize ? blockSize : kNewFptBlock;
        storeBE<std::uint32_t>(&head[0], (kHeaderBytes + size - 1) / size);
        storeBE(&head[6], static_cast<std::uint16_t>(size));
        return head;
    }
    if (form == MemoForm::DbtIV && blockSize > kHeaderBytes)
        head.resize(blockSize);
    storeLE<std::uint32_t>(&head[0], 1);
    if (form == MemoForm::DbtIII) {
        head[16] = 3;
        return head;
    }
    std::memcpy(&head[8], tableName.data(), std::min<std::size_t>(tableName.size(), 8));
    head[18] = 2;
    head[19] = 1;
    storeLE(&head[20], static_cast<std::uint16_t>(blockSize ? blockSize : kHeaderBytes));
    return head;
}

}  // namespace velnor::xbase
