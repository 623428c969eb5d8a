// One field of a record, written and read, against bytes known from files of other programs.
#include <gtest/gtest.h>

#include "access/formats/xbase/field_decode.h"
#include "access/formats/xbase/field_encode.h"
#include "tests/access/xbase/xbase_testing.h"

using namespace velnor;
using namespace velnor::xbase;
using namespace velnor::xbase_testing;

namespace {

/// A record of one field behind its flag, and null flags behind it.
class OneField {
public:
    OneField(char letter, Coding coding, std::uint32_t length, int decimals = 0)
    {
        header_.format = formatOfVersion(0x30);
        header_.codePage = CodePage::find(1252);
        DbfField field;
        field.name = "F";
        field.letter = letter;
        field.coding = coding;
        field.offset = 1;
        field.length = length;
        field.decimals = static_cast<std::uint8_t>(decimals);
        header_.fields.push_back(field);
        header_.nullFlagsOffset = 1 + length;
        header_.nullFlagsLength = 1;
        header_.recordLength = 2 + length;
        record_.assign(header_.recordLength, 0);
        blankRecord(header_, record_);
    }

    OneField& withBits(int lengthBit, int nullBit)
    {
        header_.fields[0].lengthBit = lengthBit;
        header_.fields[0].nullBit = nullBit;
        return *this;
    }
    int write(ValueView v)
    {
        return errorOf(
            [&] { encodeField(header_, header_.fields[0], v, record_.data(), scratch_); });
    }
    std::string read()
    {
        return shown(decodeField(header_, header_.fields[0], record_.data(), scratch_));
    }
    std::string writeAndRead(ValueView v) { return write(v) ? "refused" : read(); }
    std::string bytes() const { return {record_.begin() + 1, record_.end() - 1}; }
    void setBytes(std::string_view b) { std::copy(b.begin(), b.end(), record_.begin() + 1); }
    std::uint8_t flags() const { return record_.back(); }
    void setFlags(std::uint8_t f) { record_.back() = f; }

private:
    DbfHeader header_;
    std::vector<std::uint8_t> record_;
    std::string scratch_;
};

std::string raw(const char* bytes, std::size_t n)
{
    return {bytes, n};
}

}  // namespace

TEST(FieldCodec, charactersAreTrimmedOfBlanksAndZeroBytes)
{
    OneField f('C', Coding::Character, 12);
    EXPECT_EQ(f.read(), "''");
    f.setBytes(raw("  ab \0 \0    ", 12));
    EXPECT_EQ(f.read(), "'  ab'");
    EXPECT_EQ(f.writeAndRead(text("twelve chars")), "'twelve chars'");
    EXPECT_EQ(f.writeAndRead(text("trailing      ")), "'trailing'");
    EXPECT_EQ(f.write(text("thirteen char")), 3163);
    EXPECT_EQ(f.read(), "'trailing'");
    EXPECT_EQ(f.writeAndRead(text("\xE2\x82\xAC")), "'\xE2\x82\xAC'");
    EXPECT_EQ(f.bytes()[0], '\x80');
}

TEST(FieldCodec, trimmingIsRightForEveryLength)
{
    for (std::uint32_t length = 1; length <= 40; ++length)
        for (std::uint32_t used = 0; used <= length; ++used) {
            OneField f('C', Coding::Character, length);
            const std::string t(used, 'x');
            ASSERT_EQ(f.writeAndRead(text(t)), "'" + t + "'");
            ASSERT_EQ(f.bytes().size(), length);
        }
}

TEST(FieldCodec, logicals)
{
    OneField f('L', Coding::Logical, 1);
    for (const char c : {'T', 't', 'Y', 'y'}) {
        f.setBytes({&c, 1});
        EXPECT_EQ(f.read(), "True");
    }
    for (const char c : {'F', 'f', 'N', 'n'}) {
        f.setBytes({&c, 1});
        EXPECT_EQ(f.read(), "False");
    }
    for (const char c : {' ', '?', '\0', 'x'}) {
        f.setBytes({&c, 1});
        EXPECT_EQ(f.read(), "-");
    }
    EXPECT_EQ(f.writeAndRead(ValueView::boolean(true)), "True");
    EXPECT_EQ(f.writeAndRead({}), "-");
    EXPECT_EQ(f.write(text("T")), 3421);
}

TEST(FieldCodec, daysLoseTheirTime)
{
    OneField f('D', Coding::Day, 8);
    EXPECT_EQ(f.writeAndRead(ValueView::date(38309.75)), "2004-11-18");
    EXPECT_EQ(f.bytes(), "20041118");
    EXPECT_EQ(f.writeAndRead(ValueView::date(-1.25)), "1899-12-29");
    EXPECT_EQ(f.writeAndRead({}), "-");
    EXPECT_EQ(f.bytes(), "        ");
    EXPECT_EQ(f.write(ValueView::date(3e6)), 3163);
}

TEST(FieldCodec, visualFoxProMomentsAreAJulianDayAndMilliseconds)
{
    OneField f('T', Coding::MomentLE, 8);
    f.setBytes(raw("\x34\x3D\x25\x00\x00\x00\x00\x00", 8));  // 2440500
    EXPECT_EQ(f.read(), "1969-10-05");
    EXPECT_EQ(f.writeAndRead(ValueView::date(0.5)), "1899-12-30 12:00:00");
    EXPECT_EQ(f.bytes(), raw("\xAB\xD9\x24\x00\x00\x2E\x93\x02", 8));
    EXPECT_EQ(f.writeAndRead({}), "-");
    f.setBytes("        ");  // as some writers leave it: a day far beyond the calendar
    EXPECT_EQ(f.read(), "-");
}

TEST(FieldCodec, levelSevenMoments)
{
    OneField f('@', Coding::Moment7, 8);
    EXPECT_EQ(f.writeAndRead(ValueView::date(-109205)), "1601-01-01");
    EXPECT_EQ(f.bytes(), raw("\x42\xC6\xF5\xF3\x4E\x66\x00\x00", 8));
    EXPECT_EQ(f.writeAndRead(ValueView::date(40858.4661111111)), "2011-11-11 11:11:12");
    EXPECT_EQ(f.writeAndRead({}), "-");
    EXPECT_EQ(f.bytes(), std::string(8, '\0'));
}

TEST(FieldCodec, levelSevenNumbersSortAsTheirBytes)
{
    OneField i('I', Coding::Integer7, 4), o('O', Coding::Real7, 8);
    std::string lastInteger, lastReal;
    for (const double d : {-2e9, -70000.0, -1.0, 0.0, 1.0, 70000.0, 2e9}) {
        EXPECT_EQ(i.writeAndRead(ValueView::integer(static_cast<std::int64_t>(d))),
                  std::to_string(static_cast<std::int64_t>(d)));
        EXPECT_LT(lastInteger, i.bytes());
        lastInteger = i.bytes();
        ASSERT_EQ(o.write(ValueView::real(d)), 0);
        EXPECT_LT(lastReal, o.bytes());
        lastReal = o.bytes();
        EXPECT_EQ(o.writeAndRead(ValueView::real(d)), i.read());
    }
    EXPECT_EQ(i.writeAndRead(ValueView::integer(1)), "1");
    EXPECT_EQ(i.bytes(), raw("\x80\x00\x00\x01", 4));
    EXPECT_EQ(i.writeAndRead({}), "-");
    EXPECT_EQ(o.writeAndRead(ValueView::real(-0.0)), "0");
    EXPECT_EQ(o.writeAndRead({}), "-");
}

TEST(FieldCodec, visualFoxProNumbers)
{
    OneField i('I', Coding::IntegerLE, 4), y('Y', Coding::MoneyLE, 8), b('B', Coding::RealLE, 8);
    EXPECT_EQ(i.writeAndRead(ValueView::integer(-2)), "-2");
    EXPECT_EQ(i.bytes(), "\xFE\xFF\xFF\xFF");
    EXPECT_EQ(i.write(ValueView::integer(std::int64_t{1} << 31)), 3163);
    EXPECT_EQ(i.read(), "-2");
    EXPECT_EQ(y.writeAndRead(ValueView::currency(12345)), "1.2345");
    EXPECT_EQ(y.writeAndRead(ValueView::real(-0.5)), "-0.5");
    EXPECT_EQ(b.writeAndRead(ValueView::real(1.0 / 3)), "0.3333333333333333");
    EXPECT_EQ(b.write(text("1")), 3421);
}

TEST(FieldCodec, theNullFlagCountsWhateverTheBytesAre)
{
    OneField f('I', Coding::IntegerLE, 4);
    f.withBits(-1, 3);
    EXPECT_EQ(f.writeAndRead({}), "-");
    EXPECT_EQ(f.flags(), 8);
    EXPECT_EQ(f.writeAndRead(ValueView::integer(5)), "5");
    EXPECT_EQ(f.flags(), 0);
    f.setFlags(8);
    EXPECT_EQ(f.read(), "-");
}

TEST(FieldCodec, aShortVarcharKeepsItsLengthInItsLastByte)
{
    OneField f('V', Coding::Varchar, 6);
    f.withBits(0, 1);
    EXPECT_EQ(f.writeAndRead(text("ab ")), "'ab '");
    EXPECT_EQ(f.bytes()[5], 3);
    EXPECT_EQ(f.flags(), 1);
    EXPECT_EQ(f.writeAndRead(text("sixsix")), "'sixsix'");
    EXPECT_EQ(f.flags(), 0);
    EXPECT_EQ(f.writeAndRead(text("")), "''");
    EXPECT_EQ(f.writeAndRead({}), "-");
    EXPECT_EQ(f.flags(), 3);
    f.setFlags(1);
    f.setBytes("abcde\xFF");  // a length beyond the field
    EXPECT_EQ(f.read(), "'abcde'");
    EXPECT_EQ(f.write(text("seven..")), 3163);
}

TEST(FieldCodec, memoBlocksAsTextAndAsNumber)
{
    DbfHeader header;
    header.codePage = CodePage::find(437);
    DbfField field;
    field.coding = Coding::MemoText;
    field.offset = 0;
    field.length = 10;
    std::string bytes(10, ' ');
    auto* record = reinterpret_cast<std::uint8_t*>(bytes.data());
    EXPECT_EQ(memoBlock(header, field, record), 0u);
    putMemoBlock(header, field, 4294967295u, record);
    EXPECT_EQ(bytes, "4294967295");
    putMemoBlock(header, field, 42, record);
    EXPECT_EQ(bytes, "        42");
    EXPECT_EQ(memoBlock(header, field, record), 42u);
    bytes = "0000000007";
    EXPECT_EQ(memoBlock(header, field, reinterpret_cast<std::uint8_t*>(bytes.data())), 7u);
    bytes = "   12x    ";
    EXPECT_EQ(memoBlock(header, field, reinterpret_cast<std::uint8_t*>(bytes.data())), kBadPointer);
    bytes = std::string(10, '\0');
    EXPECT_EQ(memoBlock(header, field, reinterpret_cast<std::uint8_t*>(bytes.data())), 0u);
}
