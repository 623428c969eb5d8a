// Values of fields: their bytes, their limits, their order.
#include <cmath>
#include <cstring>

#include "access/formats/paradox/bcd.h"
#include "access/formats/paradox/field_codec.h"
#include "access/formats/paradox/key_order.h"
#include "tests/access/paradox/paradox_testing.h"

using namespace velnor;
using namespace velnor::paradox;
using namespace velnor::paradox_testing;

namespace {

StoredField fieldOf(FieldCode code, std::uint8_t size)
{
    StoredField field;
    field.code = code;
    field.sizeByte = size;
    field.length = recordLength(typeInfo(code), size);
    field.name = "F";
    return field;
}

const StoredField kLong = fieldOf(FieldCode::Long, 4), kShort = fieldOf(FieldCode::Short, 2),
                  kNumber = fieldOf(FieldCode::Number, 8), kMoney = fieldOf(FieldCode::Money, 8),
                  kDate = fieldOf(FieldCode::Date, 4), kTime = fieldOf(FieldCode::Time, 4),
                  kMoment = fieldOf(FieldCode::TimeStamp, 8),
                  kFlag = fieldOf(FieldCode::Logical, 1), kText = fieldOf(FieldCode::Alpha, 6),
                  kBytes = fieldOf(FieldCode::Bytes, 4), kBcd = fieldOf(FieldCode::Bcd, 2);

const CodePage& page()
{
    return *CodePage::find(1252);
}

Bytes encoded(const StoredField& field, ValueView value)
{
    Bytes bytes(field.length, 0xEE);
    std::string scratch;
    encodeField(field, value, page(), bytes.data(), scratch);
    return bytes;
}

std::string hexOf(const Bytes& bytes)
{
    std::string out;
    appendHex(out, bytes);
    return out;
}

std::string decoded(const StoredField& field, const Bytes& bytes)
{
    std::string scratch;
    return shown(decodeField(field, bytes.data(), page(), scratch));
}

std::string roundTrip(const StoredField& field, ValueView value)
{
    return decoded(field, encoded(field, value));
}

ValueView date(const char* textOfIt)
{
    return ValueView::date(parseDate(textOfIt).value());
}

}  // namespace

TEST(ParadoxCodec, bytesAreThoseOfRealFiles)
{
    EXPECT_EQ(hexOf(encoded(kLong, whole(1))), "80000001");
    EXPECT_EQ(hexOf(encoded(kShort, whole(-1))), "7fff");
    EXPECT_EQ(hexOf(encoded(kNumber, ValueView::real(40))), "c044000000000000");
    EXPECT_EQ(hexOf(encoded(kNumber, ValueView::real(-40))), "3fbbffffffffffff");
    EXPECT_EQ(hexOf(encoded(kNumber, ValueView::real(0))), "8000000000000000");
    EXPECT_EQ(hexOf(encoded(kNumber, ValueView::real(-0.0))), "8000000000000000");
    EXPECT_EQ(hexOf(encoded(kDate, date("2018-01-01"))), "800b3db7");
    EXPECT_EQ(hexOf(encoded(kTime, ValueView::date(0))), "80000000");  // midnight is not Null
    EXPECT_EQ(hexOf(encoded(kFlag, ValueView::boolean(true))), "81");
    EXPECT_EQ(hexOf(encoded(kFlag, ValueView::boolean(false))), "80");
    EXPECT_EQ(hexOf(encoded(kText, text("ab\xC3\xA4"))), "6162e4000000");
    EXPECT_EQ(hexOf(encoded(kBcd, ValueView::decimal(false, 0, 123, 2))),
              "c200000000000000000000000000000123");
    EXPECT_EQ(hexOf(encoded(kBcd, ValueView::decimal(true, 0, 123, 2))),
              "42fffffffffffffffffffffffffffffedc");
}

TEST(ParadoxCodec, nullIsZeros)
{
    for (const StoredField& field :
         {kLong, kShort, kNumber, kMoney, kDate, kTime, kMoment, kFlag, kText, kBytes, kBcd}) {
        EXPECT_EQ(encoded(field, {}), Bytes(field.length, 0));
        EXPECT_EQ(decoded(field, Bytes(field.length, 0)), "-");
    }
    Bytes blank(17, 0);
    blank[0] = 6;  // a BCD keeps its decimals
    EXPECT_EQ(decoded(kBcd, blank), "-");
    // Rubbish behind a text that is none.
    EXPECT_EQ(decoded(kText, {0, 'F', 'e', 0, 0, 0}), "-");
}

TEST(ParadoxCodec, valuesComeBack)
{
    EXPECT_EQ(roundTrip(kLong, whole(-2147483647)), "-2147483647");
    EXPECT_EQ(roundTrip(kShort, whole(-32767)), "-32767");
    EXPECT_EQ(roundTrip(kNumber, ValueView::real(1e300)), "1e+300");
    EXPECT_EQ(roundTrip(kNumber, ValueView::real(-123456.75)), "-123456.75");
    EXPECT_EQ(roundTrip(kNumber, ValueView::real(0.1)), "0.1");
    EXPECT_EQ(roundTrip(kMoney, ValueView::currency(130020)), "13.002");
    EXPECT_EQ(roundTrip(kDate, date("0100-01-01")), "0100-01-01");
    EXPECT_EQ(roundTrip(kDate, date("9999-12-31")), "9999-12-31");
    EXPECT_EQ(roundTrip(kMoment, date("2004-02-29 23:59:59")), "2004-02-29 23:59:59");
    EXPECT_EQ(roundTrip(kMoment, date("1899-12-29 06:00:00")), "1899-12-29 06:00:00");
    EXPECT_EQ(roundTrip(kTime, date("13:14:15")), "1899-12-30 13:14:15");
    EXPECT_EQ(roundTrip(kText, text("\xE2\x82\xAC uro")), "'\xE2\x82\xAC uro'");
    EXPECT_EQ(roundTrip(kText, text("sixsix")), "'sixsix'");
    EXPECT_EQ(roundTrip(kBytes, ValueView::bytes(Bytes{1, 2})), "01020000");
}

TEST(ParadoxCodec, moneyWithMoreDigitsStaysTheNumberThatItIs)
{
    EXPECT_EQ(roundTrip(kMoney, ValueView::real(1.0 / 3)), "0.3333333333333333");
}

TEST(ParadoxCodec, valuesThatCannotBeStoredAreRefused)
{
    EXPECT_EQ(errorOf([] { encoded(kShort, whole(-32768)); }), 3421);  // its bytes mean Null
    EXPECT_EQ(errorOf([] { encoded(kLong, whole(-2147483648ll)); }), 3421);
    EXPECT_EQ(errorOf([] { encoded(kShort, whole(40000)); }), 3421);
    EXPECT_EQ(errorOf([] { encoded(kNumber, ValueView::real(NAN)); }), 3421);
    EXPECT_EQ(errorOf([] { encoded(kText, text("seven c")); }), 3163);
    EXPECT_EQ(errorOf([] { encoded(kText, text("\xD0\x96")); }), 3421);  // not in the code page
    EXPECT_EQ(errorOf([] { encoded(kText, text(std::string_view("a\0b", 3))); }), 3421);
    EXPECT_EQ(errorOf([] { encoded(kBytes, ValueView::bytes(Bytes(5, 1))); }), 3163);
    EXPECT_EQ(errorOf([] { encoded(kBytes, text("ab")); }), 3421);
    EXPECT_EQ(errorOf([] { encoded(kDate, ValueView::date(1e9)); }), 3421);
}

TEST(ParadoxCodec, daysThatNobodyHasReadAsNull)
{
    EXPECT_EQ(decoded(kDate, {0x7F, 0xFF, 0xFE, 0x92}), "-");  // day -366
    EXPECT_EQ(decoded(kTime, {0x85, 0x26, 0x5C, 0x00}), "-");  // 24:00
    EXPECT_EQ(decoded(kTime, {0x7F, 0xFF, 0xFF, 0xFF}), "-");
    EXPECT_EQ(decoded(kMoment, encoded(kNumber, ValueView::real(-5))), "-");
    EXPECT_EQ(decoded(kNumber, Bytes(8, 0xFF)), "-");  // not a number
}

TEST(ParadoxCodec, bytesSortAsTheValuesDo)
{
    const auto ascend = [](const StoredField& field, std::initializer_list<double> values) {
        Bytes last;
        for (const double value : values) {
            const Bytes now = encoded(field, ValueView::real(value));
            EXPECT_TRUE(last.empty() || std::memcmp(last.data(), now.data(), now.size()) < 0)
                << value;
            last = now;
        }
    };
    ascend(kLong, {-2147483647, -5, -1, 0, 1, 70000, 2147483647});
    ascend(kShort, {-32767, -1, 0, 1, 32767});
    ascend(kNumber, {-1e200, -2.5, -1e-9, 0, 1e-9, 3, 1e200});
    ascend(kBcd, {-9999, -10.5, -10.25, 0, 0.25, 12, 123456});
}

TEST(ParadoxCodec, aSearchTakesTheNearestValue)
{
    Bytes bytes(4);
    std::string scratch;
    EXPECT_FALSE(
        encodeField(kLong, whole(9'000'000'000), page(), bytes.data(), scratch, Fit::Nearest));
    EXPECT_EQ(hexOf(bytes), "ffffffff");
    bytes.resize(6);
    EXPECT_FALSE(encodeField(kText, text("too long"), page(), bytes.data(), scratch, Fit::Nearest));
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "too lo");
}

TEST(ParadoxCodec, decimalsAreRoundedAndBounded)
{
    Bytes bytes(kBcdBytes);
    EXPECT_TRUE(encodeBcd(ValueView::decimal(false, 0, 1235, 3), 2, bytes.data()));
    EXPECT_EQ(shown(decodeBcd(bytes.data())), "1.24");
    EXPECT_TRUE(encodeBcd(ValueView::real(-0.001), 2, bytes.data()));
    EXPECT_EQ(shown(decodeBcd(bytes.data())), "0");  // no negative zero
    EXPECT_TRUE(encodeBcd(ValueView::real(1e20), 2, bytes.data()));
    EXPECT_EQ(shown(decodeBcd(bytes.data())), "1e+20");
    EXPECT_FALSE(encodeBcd(ValueView::real(1e31), 2, bytes.data()));
    EXPECT_TRUE(encodeBcd(ValueView::real(1e29), 2, bytes.data()));
}

TEST(ParadoxCodec, aBcdEndsInFrontOfWhatIsNoDigit)
{
    Bytes bytes(17, 0);
    bytes[0] = 0xC0 + 4;
    bytes[14] = 0x12;
    bytes[15] = 0x3B;  // "12.3" and rubbish
    EXPECT_EQ(shown(decodeBcd(bytes.data())), "12.3");
}

TEST(ParadoxUpperCase, lettersHaveTheirCapitalInTheCodePage)
{
    const auto upper = [](int number, std::string bytes) {
        bytes.push_back('\0');
        bytes += "zz";
        UpperCase(*CodePage::find(number))
            .apply({reinterpret_cast<std::uint8_t*>(bytes.data()), bytes.size()});
        return bytes.substr(0, bytes.find('\0'));
    };
    EXPECT_EQ(upper(1252, "ab\xE4\xFF\xDF\xB5"), "AB\xC4\x9F\xDF\xB5");
    EXPECT_EQ(upper(437, "a\x84\x82"), "A\x8E\x90");
    EXPECT_EQ(upper(866, "\xA0\xE0\xF1"), "\x80\x90\xF0");
    std::string behind("a\0rubbish", 9);
    UpperCase(*CodePage::find(1252))
        .apply({reinterpret_cast<std::uint8_t*>(behind.data()), behind.size()});
    EXPECT_EQ(behind, std::string("A\0\0\0\0\0\0\0\0", 9));
}
