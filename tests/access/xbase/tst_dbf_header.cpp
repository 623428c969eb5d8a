// Heads of DBF files, sound and damaged.
#include <gtest/gtest.h>

#include <cstring>

#include "access/formats/xbase/dbf_header.h"
#include "access/formats/xbase/language.h"
#include "access/storage/byte_reader.h"

using namespace velnor;
using namespace velnor::xbase;

namespace {

struct TestField {
    const char* name;
    char letter;
    int length;
    int decimals = 0;
    int flags = 0;
};

using Bytes = std::vector<std::uint8_t>;

/// A header as the common kinds have it; the record length is the sum of the narrow lengths.
Bytes headOf(std::uint8_t version, const std::vector<TestField>& fields)
{
    Bytes head(32 * (fields.size() + 1) + 1, 0);
    head[0] = version;
    head[1] = 104;
    head[2] = 11;
    head[3] = 18;
    storeLE(&head[8], static_cast<std::uint16_t>(head.size()));
    int record = 1;
    std::size_t at = 32;
    for (const TestField& field : fields) {
        std::memcpy(&head[at], field.name, std::strlen(field.name));
        head[at + 11] = static_cast<std::uint8_t>(field.letter);
        head[at + 16] = static_cast<std::uint8_t>(field.length);
        head[at + 17] = static_cast<std::uint8_t>(field.decimals);
        head[at + 18] = static_cast<std::uint8_t>(field.flags);
        record += field.length;
        at += 32;
    }
    head[at] = 0x0D;
    storeLE(&head[10], static_cast<std::uint16_t>(record));
    return head;
}

DbfHeader read(const Bytes& head, std::uint64_t fileBytes = 0, const std::string& page = {})
{
    return readHeader(head, fileBytes ? fileBytes : head.size(), page);
}

int errorOf(const Bytes& head)
{
    try {
        read(head);
        return 0;
    } catch (const EngineError& error) {
        return error.number();
    }
}

}  // namespace

TEST(DbfHeader, namesLengthsAndOffsets)
{
    const DbfHeader h =
        read(headOf(3, {{"NAME", 'C', 30}, {"AMOUNT", 'N', 12, 2}, {"OK", 'L', 1}}));
    ASSERT_EQ(h.fields.size(), 3u);
    EXPECT_EQ(h.fields[1].name, "AMOUNT");
    EXPECT_EQ(h.fields[1].offset, 31u);
    EXPECT_EQ(h.fields[1].nativeType(), "N(12,2)");
    EXPECT_EQ(h.fields[2].nativeType(), "L");
    EXPECT_EQ(h.recordLength, 44u);
    EXPECT_EQ(h.year, 2004);
    EXPECT_TRUE(h.oddities.empty());
}

TEST(DbfHeader, rubbishBehindANameIsCutOff)
{
    Bytes head = headOf(3, {{"A", 'C', 5}});
    head[34] = 'x';
    EXPECT_EQ(read(head).fields[0].name, "A");
}

TEST(DbfHeader, theFieldsEndWithoutTheirMarkAtTheHeaderLength)
{
    Bytes head = headOf(3, {{"A", 'C', 5}, {"B", 'C', 6}});
    head.back() = 0;
    const DbfHeader h = read(head);
    EXPECT_EQ(h.fields.size(), 2u);
    ASSERT_EQ(h.oddities.size(), 1u);
    EXPECT_TRUE(h.oddities[0].harmless);
}

TEST(DbfHeader, aLongTextKeepsTheHighByteOfItsLengthInTheDecimals)
{
    Bytes head = headOf(3, {{"A", 'C', 0x2C, 1}});
    storeLE<std::uint16_t>(&head[10], 301);
    EXPECT_EQ(read(head).fields[0].length, 300u);
    EXPECT_EQ(fieldDefOf(read(head).fields[0]).type, FieldType::Memo);
}

TEST(DbfHeader, decimalsOfATextAreRubbishWhenTheRecordLengthSaysSo)
{
    const DbfHeader h = read(headOf(3, {{"A", 'C', 20, 5}, {"B", 'N', 5}}));
    EXPECT_EQ(h.fields[0].length, 20u);
    EXPECT_EQ(h.fields[1].offset, 21u);
}

TEST(DbfHeader, aRecordLengthWithoutTheFlagByteIsMendedWhenTheFileProvesIt)
{
    Bytes head = headOf(3, {{"A", 'C', 10}});
    storeLE<std::uint32_t>(&head[4], 6);
    storeLE<std::uint16_t>(&head[10], 10);
    EXPECT_EQ(read(head, head.size() + 6 * 11 + 1).recordLength, 11u);
    EXPECT_THROW(read(head, head.size() + 6 * 10 + 1), EngineError);
}

TEST(DbfHeader, longerRecordsThanFieldsAreTheStep)
{
    Bytes head = headOf(3, {{"A", 'C', 10}});
    storeLE<std::uint16_t>(&head[10], 64);
    const DbfHeader h = read(head);
    EXPECT_EQ(h.recordLength, 64u);
    EXPECT_EQ(h.oddities.size(), 1u);
}

TEST(DbfHeader, whatIsNoTableIsRefused)
{
    const Bytes sound = headOf(3, {{"A", 'C', 10}});
    EXPECT_EQ(errorOf(sound), 0);
    EXPECT_EQ(errorOf({}), 3274);
    EXPECT_EQ(errorOf(Bytes(sound.begin(), sound.begin() + 20)), 3274);
    EXPECT_EQ(errorOf(Bytes(sound.begin(), sound.begin() + 40)), 3274);
    Bytes head = sound;
    head[0] = 0x50;  // "P": a zip archive
    EXPECT_EQ(errorOf(head), 3274);
    head = sound;
    head[10] = head[11] = 0;
    EXPECT_EQ(errorOf(head), 3274);
    head = sound;
    head[8] = 20;
    EXPECT_EQ(errorOf(head), 3274);
}

TEST(DbfHeader, theBitsOfTheNullFlagsGoByFieldLengthBitFirst)
{
    const DbfHeader h = read(headOf(0x32, {{"A", 'V', 10, 0, 2},
                                           {"B", 'I', 4, 0, 0},
                                           {"C", 'Q', 8, 0, 0},
                                           {"D", 'C', 5, 0, 2},
                                           {"_NullFlags", '0', 1, 0, 5}}));
    ASSERT_EQ(h.fields.size(), 4u);
    EXPECT_EQ(h.fields[0].lengthBit, 0);
    EXPECT_EQ(h.fields[0].nullBit, 1);
    EXPECT_EQ(h.fields[1].nullBit, -1);
    EXPECT_EQ(h.fields[2].lengthBit, 2);
    EXPECT_EQ(h.fields[3].nullBit, 3);
    EXPECT_EQ(h.nullFlagsOffset, 28u);
}

TEST(DbfHeader, bitsBeyondTheirColumnAreNotRead)
{
    std::vector<TestField> fields;
    for (int i = 0; i < 12; ++i)
        fields.push_back({"F", 'C', 2, 0, 2});
    fields.push_back({"_NullFlags", '0', 1, 0, 5});
    const DbfHeader h = read(headOf(0x30, fields));
    EXPECT_EQ(h.fields[7].nullBit, 7);
    EXPECT_EQ(h.fields[8].nullBit, -1);
}

TEST(DbfHeader, fieldFlagsCountInVisualFoxProOnly)
{
    EXPECT_EQ(read(headOf(0x03, {{"A", 'C', 5, 0, 1}})).fields.size(), 1u);
    EXPECT_EQ(read(headOf(0x30, {{"A", 'C', 5, 0, 1}})).fields.size(), 0u);
}

TEST(DbfHeader, theLetterBIsADoubleInVisualFoxProAndAMemoInDbase)
{
    EXPECT_EQ(read(headOf(0x30, {{"B", 'B', 8}})).fields[0].coding, Coding::RealLE);
    EXPECT_EQ(read(headOf(0x8B, {{"B", 'B', 10}})).fields[0].coding, Coding::MemoBytes);
}

TEST(DbfHeader, aFieldOfAWrongLengthIsGivenAsItsBytes)
{
    EXPECT_EQ(read(headOf(0x30, {{"B", 'I', 3}})).fields[0].coding, Coding::Raw);
    EXPECT_EQ(read(headOf(0x03, {{"B", 'D', 6}})).fields[0].coding, Coding::Raw);
}

TEST(DbfHeader, numbersAreDoublesOfEightBytesWhateverTheirDecimals)
{
    const DbfHeader h = read(headOf(3, {{"A", 'N', 5, 0}, {"B", 'F', 12, 4}}));
    for (const DbfField& field : h.fields) {
        EXPECT_EQ(fieldDefOf(field).type, FieldType::Double);
        EXPECT_EQ(fieldDefOf(field).size, 8);
    }
}

TEST(DbfHeader, theYearByteCountsFrom1900OrIsTwoDigits)
{
    Bytes head = headOf(3, {{"A", 'C', 5}});
    for (const auto& [byte, year] : {std::pair{95, 1995}, {104, 2004}, {22, 2022}, {80, 1980}}) {
        head[1] = static_cast<std::uint8_t>(byte);
        EXPECT_EQ(read(head).year, year);
    }
    head[2] = 13;
    EXPECT_EQ(read(head).year, 0);
}

TEST(DbfHeader, theCodePageComesFromTheUserThenTheMarkThenTheKind)
{
    Bytes head = headOf(3, {{"A", 'C', 5}});
    EXPECT_EQ(read(head).codePage->number(), 437);
    head[29] = 0x65;
    EXPECT_EQ(read(head).codePage->number(), 866);
    EXPECT_EQ(read(head, 0, "1252").codePage->number(), 1252);
    head[29] = 0xEE;  // unknown: no reason to refuse the file
    EXPECT_EQ(read(head).codePage->number(), 437);
    EXPECT_THROW(read(head, 0, "nonsense"), EngineError);
    EXPECT_EQ(read(headOf(0x30, {{"A", 'C', 5}})).codePage->number(), 1252);
}

TEST(Language, namesOfLevelSevenTellTheirPage)
{
    EXPECT_EQ(codePageOfLanguageName("DBWINUS0"), 1252);
    EXPECT_EQ(codePageOfLanguageName("DB437US0"), 437);
    EXPECT_EQ(codePageOfLanguageName("DB866RU0"), 866);
    EXPECT_EQ(codePageOfLanguageName(""), 0);
}

TEST(Language, everyMarkStandsForAPageThatWeHave)
{
    for (int mark = 0; mark < 256; ++mark) {
        const int page = codePageOfMark(static_cast<std::uint8_t>(mark));
        if (page != 0) {
            EXPECT_NE(CodePage::find(page), nullptr) << page;
        }
    }
}
