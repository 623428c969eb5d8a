#include "access/formats/xbase/dbf_header.h"

#include <algorithm>

#include "access/formats/xbase/language.h"
#include "access/storage/byte_reader.h"
#include "access/value_text.h"

namespace velnor::xbase {
namespace {

constexpr std::uint32_t kHeadOfTwo = 521;
constexpr std::uint8_t kEndOfFields = 0x0D;
constexpr std::uint8_t kHidden = 0x01, kMayBeNull = 0x02, kAutonumber = 0x0C;

[[noreturn]] void refuse(const std::string& why)
{
    throw EngineError(EngineErrorNumber::UnexpectedFormat,
                      "The file is not a dBASE or FoxPro table: " + why + ".");
}

const DbfFormat& formatOf(std::uint8_t version)
{
    const DbfFormat* format = formatOfVersion(version);
    if (!format)
        refuse("no kind has the version byte " + std::to_string(version));
    return *format;
}

/// How a type letter is stored in this kind of file; Raw when its length is not the one it must
/// have.
Coding codingOf(char letter, std::uint32_t length, const DbfFormat& format)
{
    const auto whenLong = [length](std::uint32_t must, Coding coding) {
        return length == must ? coding : Coding::Raw;
    };
    const auto memo = [length](Coding coding) { return length >= 4 ? coding : Coding::Raw; };
    switch (letter) {
    case 'C':
        return Coding::Character;
    case 'N':
    case 'F':
        return length ? Coding::Number : Coding::Raw;
    case 'L':
        return length ? Coding::Logical : Coding::Raw;
    case 'D':
        return whenLong(8, Coding::Day);
    case 'M':
        return memo(Coding::MemoText);
    case 'G':
    case 'P':
    case 'W':
        return memo(Coding::MemoBytes);
    case 'B':
        return format.visualFox ? whenLong(8, Coding::RealLE) : memo(Coding::MemoBytes);
    case 'I':
        return whenLong(4, format.level7 ? Coding::Integer7 : Coding::IntegerLE);
    case '+':
        return whenLong(4, format.level7 ? Coding::Integer7 : Coding::IntegerLE);
    case 'Y':
        return whenLong(8, Coding::MoneyLE);
    case 'T':
        return whenLong(8, Coding::MomentLE);
    case '@':
        return whenLong(8, format.level7 ? Coding::Moment7 : Coding::MomentLE);
    case 'O':
        return whenLong(8, Coding::Real7);
    case 'V':
        return Coding::Varchar;
    case 'Q':
        return Coding::Varbinary;
    default:
        return Coding::Raw;
    }
}

/// A descriptor as it stands, before lengths and offsets are settled.
struct Descriptor {
    DbfField field;
    std::uint32_t narrow = 0;  ///< length without the high byte in the decimals
};

class HeaderWalk {
public:
    HeaderWalk(std::span<const std::uint8_t> bytes, DbfHeader& header)
        : in_(bytes, "table header"), header_(header), shape_(*header.format->shape)
    {
    }

    void readDescriptors();
    void settleLengths(std::uint64_t fileBytes);
    void settleNullFlags();

private:
    void readOne(std::size_t at);
    std::string nameAt(std::size_t at) const;
    std::uint64_t recordLengthFor(bool wide) const;
    void takeLengths(bool wide);
    void mendRecordLength(std::uint64_t fields, std::uint64_t fileBytes);

    ByteReader in_;
    DbfHeader& header_;
    const HeaderShape& shape_;
    std::vector<Descriptor> found_;
};

std::string HeaderWalk::nameAt(std::size_t at) const
{
    std::string_view name = in_.text(at, shape_.nameSize);
    name = name.substr(0, name.find('\0'));
    std::string scratch;
    std::string decoded(header_.codePage->decode(name, scratch));
    return decoded.empty() ? "FIELD" + std::to_string(found_.size() + 1) : decoded;
}

void HeaderWalk::readOne(std::size_t at)
{
    Descriptor d;
    DbfField& f = d.field;
    f.descriptorAt = static_cast<std::uint32_t>(at);
    f.name = nameAt(at);
    f.letter = static_cast<char>(in_.u8(at + shape_.typeAt));
    f.length = d.narrow = in_.u8(at + shape_.lengthAt);
    f.decimals = in_.u8(at + shape_.decimalsAt);
    if (shape_.flagsAt)
        f.flags = in_.u8(at + shape_.flagsAt);
    if (f.letter == 'C' && shape_.wideTexts)
        f.length += f.decimals * 256u;
    f.autonumber = f.letter == '+' || (shape_.flagsAt && (f.flags & kAutonumber) == kAutonumber);
    if (f.autonumber && shape_.autonumberAt) {
        f.nextNumberAt = static_cast<std::uint32_t>(at + shape_.autonumberAt);
        f.nextNumber = in_.u32(f.nextNumberAt);
        if (shape_.stepAt)
            f.step = std::max<std::uint8_t>(1, in_.u8(at + shape_.stepAt));
    }
    found_.push_back(std::move(d));
}

void HeaderWalk::readDescriptors()
{
    const std::size_t end = std::min<std::size_t>(in_.size(), header_.headerLength);
    std::size_t at = shape_.firstDescriptor;
    for (; at + shape_.descriptorSize <= end; at += shape_.descriptorSize) {
        header_.endOfFields = static_cast<std::uint32_t>(at);
        if (in_.u8(at) == kEndOfFields)
            return;
        if (in_.u8(at) == 0 && in_.u8(at + shape_.typeAt) == 0)
            break;
        readOne(at);
    }
    header_.endOfFields = static_cast<std::uint32_t>(at);
    if (at >= end || in_.u8(at) != kEndOfFields)
        header_.oddities.push_back({"the mark behind the last field is missing", true});
}

std::uint64_t HeaderWalk::recordLengthFor(bool wide) const
{
    std::uint64_t sum = 1;
    for (const Descriptor& d : found_)
        sum += wide ? d.field.length : d.narrow;
    return sum;
}

/// Sets lengths, codings and offsets. Long character fields keep the high byte of their length in
/// the decimals; some writers leave rubbish there: the record length tells.
void HeaderWalk::takeLengths(bool wide)
{
    std::uint32_t offset = 1;
    for (Descriptor& d : found_) {
        DbfField& f = d.field;
        if (!wide)
            f.length = d.narrow;
        if (f.letter == 'C')
            f.decimals = 0;
        f.coding = codingOf(f.letter, f.length, *header_.format);
        f.offset = offset;
        offset += f.length;
    }
}

void HeaderWalk::mendRecordLength(std::uint64_t fields, std::uint64_t fileBytes)
{
    const auto fits = [&](std::uint64_t step) {
        const std::uint64_t need = header_.headerLength + step * header_.statedRecords;
        return need <= fileBytes && fileBytes - need <= 1;
    };
    if (fields > 0xFFFF || !fits(fields) || fits(header_.recordLength))
        refuse("its fields are longer than its records");
    header_.oddities.push_back({"the record length " + std::to_string(header_.recordLength) +
                                " should be " + std::to_string(fields)});
    header_.recordLength = static_cast<std::uint32_t>(fields);
}

void HeaderWalk::settleLengths(std::uint64_t fileBytes)
{
    const std::uint64_t wide = recordLengthFor(true), narrow = recordLengthFor(false);
    const bool takeWide = wide == header_.recordLength ||
                          (narrow != header_.recordLength && wide < header_.recordLength);
    takeLengths(takeWide);
    const std::uint64_t fields = takeWide ? wide : narrow;
    if (fields > header_.recordLength)
        mendRecordLength(fields, fileBytes);
    else if (fields < header_.recordLength)
        header_.oddities.push_back({"the records are longer than their fields", true});
}

/// Hands out the bits of the null flags in the order of the fields, and takes hidden columns away.
void HeaderWalk::settleNullFlags()
{
    std::int32_t bit = 0;
    for (Descriptor& d : found_) {
        DbfField& f = d.field;
        if (f.letter == '0') {
            header_.nullFlagsOffset = f.offset;
            header_.nullFlagsLength = f.length;
            continue;
        }
        if (f.letter == 'V' || f.letter == 'Q')
            f.lengthBit = bit++;
        if (f.flags & kMayBeNull)
            f.nullBit = bit++;
    }
    const auto known = [this](std::int32_t b) {
        return b >= 0 && static_cast<std::uint32_t>(b) < header_.nullFlagsLength * 8;
    };
    for (Descriptor& d : found_) {
        DbfField& f = d.field;
        if (!known(f.nullBit))
            f.nullBit = -1;
        if (!known(f.lengthBit))
            f.lengthBit = -1;
        if (f.letter != '0')
            (f.flags & kHidden ? header_.hidden : header_.fields).push_back(std::move(f));
    }
}

void readDate(DbfHeader& header, int year, int month, int day)
{
    // Two-digit years occur in FoxPro files: 22 is 2022, 95 is 1995.
    year += year < 80 ? 2000 : 1900;
    if (!validDay(year, month, day))
        return;
    header.year = year;
    header.month = month;
    header.day = day;
}

void readHeadOfTwo(const ByteReader& in, DbfHeader& header)
{
    header.statedRecords = in.u16(1);
    readDate(header, in.u8(5), in.u8(3), in.u8(4));
    header.recordLength = in.u16(6);
}

void readHead(const ByteReader& in, DbfHeader& header)
{
    readDate(header, in.u8(1), in.u8(2), in.u8(3));
    header.statedRecords = in.u32(4);
    header.recordLength = in.u16(10);
    header.tableFlags = in.u8(28);
    header.languageMark = in.u8(29);
    if (const std::size_t at = header.format->shape->languageNameAt) {
        const std::string_view name = in.text(at, 32);
        header.languageName = name.substr(0, name.find('\0'));
    }
}

FieldType typeOf(const DbfField& field)
{
    switch (field.coding) {
    case Coding::Character:
    case Coding::Varchar:
        return field.length > 255 ? FieldType::Memo : FieldType::Text;
    case Coding::Number:
    case Coding::RealLE:
    case Coding::Real7:
        return FieldType::Double;
    case Coding::Logical:
        return FieldType::Boolean;
    case Coding::Day:
    case Coding::MomentLE:
    case Coding::Moment7:
        return FieldType::Date;
    case Coding::MemoText:
        return FieldType::Memo;
    case Coding::MemoBytes:
        return FieldType::LongBinary;
    case Coding::IntegerLE:
    case Coding::Integer7:
        return FieldType::Long;
    case Coding::MoneyLE:
        return FieldType::Currency;
    case Coding::Varbinary:
    case Coding::Raw:
        return FieldType::Binary;
    }
    return FieldType::Binary;
}

std::int32_t sizeOf(FieldType type, std::uint32_t length)
{
    switch (type) {
    case FieldType::Memo:
    case FieldType::LongBinary:
        return 0;
    case FieldType::Boolean:
        return 1;
    case FieldType::Long:
        return 4;
    case FieldType::Text:
    case FieldType::Binary:
        return static_cast<std::int32_t>(length);
    default:
        return 8;
    }
}

}  // namespace

std::string DbfField::nativeType() const
{
    std::string text(1, letter);
    const auto sized = [&](bool withDecimals) {
        text += '(';
        text += std::to_string(length);
        if (withDecimals) {
            text += ',';
            text += std::to_string(decimals);
        }
        text += ')';
    };
    switch (coding) {
    case Coding::Number:
        sized(decimals > 0);
        break;
    case Coding::Character:
    case Coding::Varchar:
    case Coding::Varbinary:
    case Coding::Raw:
        sized(false);
        break;
    default:
        break;
    }
    return text;
}

bool DbfHeader::hasMemoField() const
{
    return std::any_of(fields.begin(), fields.end(), [](const DbfField& f) { return f.isMemo(); });
}

std::uint32_t headerLengthOf(std::span<const std::uint8_t> first, std::uint64_t fileBytes)
{
    const ByteReader in(first, "table header");
    if (in.size() == 0)
        refuse("it is empty");
    const DbfFormat& format = formatOf(in.u8(0));
    const std::uint32_t length = format.two ? kHeadOfTwo : in.u16(8);
    if (length <= format.shape->firstDescriptor)
        refuse("its header is too short");
    if (length > fileBytes)
        refuse("it ends inside its header");
    return length;
}

DbfHeader readHeader(std::span<const std::uint8_t> bytes, std::uint64_t fileBytes,
                     const std::string& codePage)
{
    const ByteReader in(bytes, "table header");
    DbfHeader header;
    header.version = in.u8(0);
    header.format = &formatOf(header.version);
    header.headerLength = headerLengthOf(bytes, fileBytes);
    if (header.format->two)
        readHeadOfTwo(in, header);
    else
        readHead(in, header);
    if (header.recordLength == 0)
        refuse("its records have no length");
    header.codePage = &chooseCodePage(codePage, header.languageMark, header.languageName,
                                      header.format->fallbackCodePage);
    HeaderWalk walk(bytes, header);
    walk.readDescriptors();
    walk.settleLengths(fileBytes);
    walk.settleNullFlags();
    return header;
}

FieldDef fieldDefOf(const DbfField& field)
{
    FieldDef def;
    def.name = field.name;
    def.type = typeOf(field);
    def.size = sizeOf(def.type, field.length);
    def.autonumber = field.autonumber;
    if (field.coding == Coding::Number)
        def.scale = field.decimals;
    def.nativeType = field.nativeType();
    return def;
}

}  // namespace velnor::xbase
