#include "access/formats/paradox/file_header.h"

#include <algorithm>
#include <numeric>

#include "access/engine_error.h"
#include "access/storage/byte_reader.h"

namespace velnor::paradox {
namespace {

constexpr std::size_t kSecondHeaderEnd = 0x78;
constexpr std::size_t kHeaderStep = 2048;

[[noreturn]] void noTable(const std::string& why)
{
    throw EngineError(EngineErrorNumber::UnexpectedFormat, "not a Paradox file: " + why);
}

/// Tables of level 3 do not name their code page; it follows from the sort order.
int codePageOfSortByte(std::uint8_t sortByte)
{
    switch (sortByte) {
    case 0x82:
    case 0xE6:
        return 865;
    case 0xC0:
        return 866;
    default:
        return 437;
    }
}

const CodePage& chooseCodePage(const FileHeader& header, std::string_view wanted)
{
    if (!wanted.empty()) {
        if (const CodePage* page = CodePage::find(wanted))
            return *page;
        throw EngineError(EngineErrorNumber::InvalidArgument,
                          "There is no code page \"" + std::string(wanted) + "\".");
    }
    const int number =
        header.codePageNumber ? header.codePageNumber : codePageOfSortByte(header.sortByte);
    if (const CodePage* page = codePageNumbered(number))
        return *page;
    return *CodePage::find(1252);
}

class HeaderReader {
public:
    HeaderReader(std::span<const std::uint8_t> bytes, std::uint64_t fileSize)
        : in_(bytes, "header"), fileSize_(fileSize)
    {
    }

    FileHeader read()
    {
        first();
        if (h_.hasSecondHeader())
            second();
        variablePart();
        return std::move(h_);
    }

private:
    void first();
    void second();
    void variablePart();
    void fieldTypes(std::size_t count);
    std::string zeroEnded(std::size_t most);

    ByteReader in_;
    std::uint64_t fileSize_;
    FileHeader h_;
    std::size_t at_ = 0, numbersAt_ = 0;
    std::size_t fieldCount_ = 0;
};

void HeaderReader::first()
{
    h_.recordSize = in_.u16(0x00);
    h_.headerSize = in_.u16(0x02);
    const std::uint8_t kind = in_.u8(0x04), kib = in_.u8(0x05);
    h_.version = in_.u8(0x39);
    fieldCount_ = in_.u16(0x21);
    if (kind > 8 || kib < 1 || kib > 32 || h_.version < 3 || h_.version > 15 || fieldCount_ < 1 ||
        fieldCount_ > 255)
        noTable("its first bytes are those of no table");
    if (h_.headerSize < kFirstHeader || h_.headerSize > fileSize_)
        noTable("its header does not fit into the file");
    h_.kind = static_cast<FileKind>(kind);
    h_.blockBytes = kib * 1024u;
    h_.records = in_.u32(0x06);
    h_.usedBlocks = in_.u16(0x0A);
    h_.fileBlocks = in_.u16(0x0C);
    h_.firstBlock = in_.u16(0x0E);
    h_.lastBlock = in_.u16(0x10);
    h_.serial = in_.u16(0x12);
    h_.writing = in_.u8(0x14);
    h_.indexField = in_.u8(0x15);
    h_.root = in_.u16(0x1E);
    h_.levels = in_.u8(0x20);
    h_.keyFields = in_.u16(0x23);
    h_.sortByte = in_.u8(0x29);
    h_.link = in_.u8(0x2C);
    h_.dataStamp = in_.u8(0x2D);
    h_.structureStamp = in_.u8(0x2E);
    h_.parentLink = in_.u8(0x2F);
    h_.writeProtected = in_.u8(0x38) != 0;
    h_.cipherAddress = in_.u32(0x40);
    h_.statedMostBlocks = in_.u16(0x3A);
    h_.auxPasswords = in_.u8(0x3D);
    h_.lastNumber = in_.u32(0x49);
    h_.firstFree = in_.u16(0x4D);
    h_.realSize = in_.u16(0x51);
    h_.options = in_.u8(0x55);
    if (!h_.hasSecondHeader())
        h_.cipherKey = in_.u32(0x25);
}

void HeaderReader::second()
{
    h_.cipherKey = in_.u32(0x5C);
    h_.nextFieldId = in_.u16(0x64);
    numbersAt_ = kFirstHeader + in_.u16(0x66);
    h_.codePageNumber = in_.u16(0x6A);
    h_.childMark = in_.u16(0x6C);
}

void HeaderReader::fieldTypes(std::size_t count)
{
    std::size_t length = 0;
    for (std::size_t i = 0; i < count; ++i, at_ += 2) {
        const TypeInfo* info = typeInfo(in_.u8(at_));
        StoredField field;
        field.sizeByte = in_.u8(at_ + 1);
        field.length = info ? recordLength(*info, field.sizeByte) : 0;
        if (field.length == 0)
            noTable("field " + std::to_string(i + 1) + " has no known type and size");
        field.code = info->code;
        field.offset = static_cast<std::uint16_t>(length);
        length += field.length;
        h_.fields.push_back(std::move(field));
    }
    const std::size_t stated = h_.recordSize;
    if (stated != length + (h_.isTree() ? 6 : 0) || stated > h_.blockBytes - 6)
        noTable("its fields do not add up to its records");
}

std::string HeaderReader::zeroEnded(std::size_t most)
{
    std::string text;
    for (std::size_t i = 0; i < most; ++i) {
        const std::uint8_t c = in_.u8(at_ + i);
        if (c == 0)
            break;
        text += static_cast<char>(c);
    }
    return text;
}

void HeaderReader::variablePart()
{
    at_ = h_.hasSecondHeader() ? kSecondHeaderEnd : kFirstHeader;
    fieldTypes(fieldCount_);
    at_ += 4 + (h_.isTree() ? 0 : 4 * fieldCount_);
    h_.storedTableName = zeroEnded(storedNameBytes(h_.version));
    at_ += storedNameBytes(h_.version);
    if (h_.isTree())
        return;
    for (StoredField& field : h_.fields) {
        field.stored = zeroEnded(h_.headerSize);
        at_ += field.stored.size() + 1;
    }
    if (at_ > h_.headerSize)
        noTable("its field names do not fit into the header");
    if (!h_.hasSecondHeader())
        return;
    at_ = std::max(at_, numbersAt_);
    for (StoredField& field : h_.fields) {
        field.number = in_.u16(at_);
        at_ += 2;
    }
    h_.sortName = zeroEnded(h_.headerSize);
    at_ += h_.sortName.size() + 1;
    if (h_.isGroup())
        h_.label = zeroEnded(h_.headerSize);
}

std::uint16_t lengthOf(const std::vector<StoredField>& fields, std::size_t count)
{
    std::size_t length = 0;
    for (std::size_t i = 0; i < std::min(count, fields.size()); ++i)
        length += fields[i].length;
    return static_cast<std::uint16_t>(length);
}

}  // namespace

bool FileHeader::hasLongFields() const
{
    return std::any_of(fields.begin(), fields.end(),
                       [](const StoredField& field) { return field.isLong(); });
}

std::size_t FileHeader::keyLength() const
{
    return lengthOf(fields, isTree() ? fields.size() : keyFields);
}

bool FileHeader::hasTextKey() const
{
    const std::size_t count = std::min<std::size_t>(keyFields, fields.size());
    return std::any_of(fields.begin(), fields.begin() + static_cast<std::ptrdiff_t>(count),
                       [](const StoredField& field) { return field.isText(); });
}

const CodePage* codePageNumbered(int number)
{
    if (number == 867)  // the Czech page of two brothers, elsewhere 895
        number = 895;
    return CodePage::find(number);
}

FileHeader readHeader(PageFile& file, std::string_view codePage)
{
    const std::uint64_t size = file.size();
    if (size < kFirstHeader)
        noTable("it is shorter than a header");
    std::uint8_t start[4] = {};
    file.readAt(0, start);
    const std::size_t stated =
        std::max<std::size_t>(loadLE<std::uint16_t>(start + 2), kFirstHeader);
    std::vector<std::uint8_t> bytes(std::min<std::size_t>(stated, static_cast<std::size_t>(size)));
    file.readAt(0, bytes);
    if (std::string_view(reinterpret_cast<const char*>(bytes.data()), 15) == "SQLite format 3")
        noTable("it is an SQLite database");
    FileHeader header = HeaderReader(bytes, size).read();
    if (!header.isTree() && header.keyFields > header.fields.size())
        noTable("its key has more fields than its records");
    if (header.kind == FileKind::KeyedTable && header.keyFields == 0) {
        header.kind = FileKind::PlainTable;
        header.oddities.push_back("it has a primary key without fields");
    }
    header.codePage = &chooseCodePage(header, codePage);
    std::string scratch;
    for (StoredField& field : header.fields)
        field.name = header.codePage->decode(field.stored, scratch);
    return header;
}

std::uint8_t linkOf(std::uint8_t stamp, std::uint8_t sortByte)
{
    const int sum = stamp + (sortByte ? sortByte + 2 : 0);
    return static_cast<std::uint8_t>(sum > 255 ? sum - 255 : sum);
}

std::uint32_t blockBytesFor(std::size_t recordSize)
{
    for (const std::uint32_t kib : {2u, 4u, 16u, 32u})
        if ((kib * 1024 - 6) / recordSize >= 3)
            return kib * 1024;
    return 32 * 1024;
}

void layOutHeader(FileHeader& header)
{
    std::size_t record = 0;
    std::size_t end = header.hasSecondHeader() ? kSecondHeaderEnd : kFirstHeader;
    for (StoredField& field : header.fields) {
        field.offset = static_cast<std::uint16_t>(record);
        record += field.length;
        end += 2;
        if (!header.isTree())
            end += 4 + field.stored.size() + 1;
    }
    record += header.isTree() ? 6 : 0;
    end += 4 + storedNameBytes(header.version);
    if (header.hasSecondHeader())
        end += 2 * header.fields.size();
    if (!header.isTree() && header.version >= 4)
        end += header.sortName.size() + 1;
    if (header.isGroup())
        end += header.label.size() + 1;
    const std::size_t whole = (end + kHeaderStep - 1) / kHeaderStep * kHeaderStep;
    if (record > 32 * 1024 - 6 || whole > 0xF800)
        throw EngineError(EngineErrorNumber::RecordTooLarge,
                          "The records of the table would be too long.");
    header.recordSize = static_cast<std::uint16_t>(record);
    header.realSize = header.version >= 4 ? static_cast<std::uint16_t>(end) : 0;
    header.headerSize = static_cast<std::uint16_t>(header.version >= 4 ? whole : end);
}

namespace {

void put(std::vector<std::uint8_t>& to, std::size_t at, std::string_view text)
{
    std::copy(text.begin(), text.end(), to.begin() + static_cast<std::ptrdiff_t>(at));
}

void putCounters(const FileHeader& h, std::uint8_t* to)
{
    storeLE(to + 0x06, h.records);
    storeLE(to + 0x0A, h.usedBlocks);
    storeLE(to + 0x0C, h.fileBlocks);
    storeLE(to + 0x0E, h.firstBlock);
    storeLE(to + 0x10, h.lastBlock);
    to[0x14] = h.writing;
    storeLE(to + 0x1E, h.root);
    to[0x20] = h.levels;
    to[0x2C] = h.link;
    to[0x2D] = h.dataStamp;
    to[0x2E] = h.structureStamp;
    to[0x2F] = h.parentLink;
    storeLE(to + 0x3A, h.fileBlocks);
    storeLE(to + 0x49, h.lastNumber);
    storeLE(to + 0x4D, h.firstFree);
}

void putFirst(const FileHeader& h, std::uint8_t* to)
{
    storeLE(to + 0x00, h.recordSize);
    storeLE(to + 0x02, h.headerSize);
    to[0x04] = static_cast<std::uint8_t>(h.kind);
    to[0x05] = static_cast<std::uint8_t>(h.blockBytes / 1024);
    storeLE(to + 0x12, h.serial);
    to[0x15] = h.indexField;
    storeLE(to + 0x21, static_cast<std::uint16_t>(h.fields.size()));
    storeLE(to + 0x23, h.keyFields);
    if (h.hasSecondHeader())
        storeLE<std::uint32_t>(to + 0x25, 0xFF00FF00u);
    else
        storeLE(to + 0x25, h.cipherKey);
    to[0x29] = h.sortByte;
    to[0x38] = h.writeProtected;
    to[0x39] = h.version;
    to[0x3D] = h.auxPasswords;
    if (!h.isTree() && !(h.hasSecondHeader() && h.cipherKey))
        storeLE<std::uint16_t>(to + 0x3E, 0x0F1F);
    if (h.cipherKey && h.cipherAddress) {
        storeLE(to + 0x40, h.cipherAddress);
        storeLE(to + 0x44, static_cast<std::uint32_t>(h.cipherAddress + h.fields.size()));
    }
    storeLE(to + 0x51, h.realSize);
    to[0x55] = h.options;
    to[0x56] = h.hasSecondHeader() ? 0x20 : 0;
}

void putSecond(const FileHeader& h, std::uint8_t* to, std::size_t numbersAt, std::size_t sortAt)
{
    const auto version = static_cast<std::uint16_t>(0x100 + h.version);
    const auto behind = [](std::size_t at) {
        return static_cast<std::uint16_t>(at - kFirstHeader);
    };
    storeLE(to + 0x58, version);
    storeLE(to + 0x5A, version);
    storeLE(to + 0x5C, h.cipherKey);
    storeLE(to + 0x64, h.nextFieldId);
    storeLE(to + 0x66, behind(numbersAt));
    storeLE(to + 0x68, h.isGroup() ? behind(sortAt + h.sortName.size() + 1) : std::uint16_t{0});
    storeLE(to + 0x6A, h.codePageNumber);
    storeLE(to + 0x6C, h.childMark);
    storeLE(to + 0x6E, behind(sortAt));
}

}  // namespace

std::vector<std::uint8_t> headerBytes(const FileHeader& h)
{
    std::vector<std::uint8_t> bytes(h.headerSize, 0);
    putFirst(h, bytes.data());
    putCounters(h, bytes.data());
    std::size_t at = h.hasSecondHeader() ? kSecondHeaderEnd : kFirstHeader;
    for (const StoredField& field : h.fields) {
        bytes[at++] = static_cast<std::uint8_t>(field.code);
        bytes[at++] = field.sizeByte;
    }
    at += 4 + (h.isTree() ? 0 : 4 * h.fields.size());
    put(bytes, at, std::string_view(h.storedTableName).substr(0, storedNameBytes(h.version) - 1));
    at += storedNameBytes(h.version);
    if (h.isTree())
        return bytes;
    for (const StoredField& field : h.fields) {
        put(bytes, at, field.stored);
        at += field.stored.size() + 1;
    }
    if (!h.hasSecondHeader())
        return bytes;
    const std::size_t numbersAt = at;
    for (const StoredField& field : h.fields) {
        storeLE(&bytes[at], field.number);
        at += 2;
    }
    put(bytes, at, h.sortName);
    if (h.isGroup())
        put(bytes, at + h.sortName.size() + 1, h.label);
    putSecond(h, bytes.data(), numbersAt, at);
    return bytes;
}

void storeCounters(const FileHeader& header, PageFile& file)
{
    std::uint8_t bytes[kFirstHeader] = {}, before[kFirstHeader];
    file.readAt(0, bytes);
    std::copy(std::begin(bytes), std::end(bytes), before);
    putCounters(header, bytes);
    if (!std::equal(std::begin(bytes), std::end(bytes), before))
        file.writeAt(0, bytes);
}

}  // namespace velnor::paradox
