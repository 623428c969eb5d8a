// access/value_text.h - values to text and numbers, and back. No heap but the caller's string.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "access/value.h"

namespace velnor {

/// A moment of the proleptic Gregorian calendar, to the millisecond.
struct CivilTime {
    int year = 0, month = 0, day = 0;  // 1..12, 1..31
    int hour = 0, minute = 0, second = 0, millisecond = 0;
};

/// Days since 1899-12-30 of a calendar day. Any year.
std::int64_t dayNumber(int year, int month, int day);
bool validDay(int year, int month, int day);
/// A Date value (see ValueKind::Date) taken apart; rounded to the millisecond.
CivilTime civilTime(double date);
double dateFromCivil(const CivilTime& t);

/// Appends the shortest text that reads back as the same double: no exponent below 1e15 and from 1e-5
/// on, no ".0". Infinite and NaN become "Infinity", "-Infinity", "NaN".
void appendReal(std::string& out, double d);
void appendInteger(std::string& out, std::int64_t i);
/// Units of 1/10,000 without trailing zeros: 12345000 gives "1234.5".
void appendCurrency(std::string& out, std::int64_t tenThousandths);
/// The decimal without trailing zeros behind the point.
void appendDecimal(std::string& out, ValueView decimal);
/// "YYYY-MM-DD", and " HH:MM:SS" behind it unless the time is midnight. Rounded to the second.
void appendIsoDate(std::string& out, double date);
/// "m/d/yyyy", and " h:mm:ss AM" or PM behind it unless the time is midnight. Rounded to the second.
void appendDateText(std::string& out, double date);

/// The same for loops that keep a buffer of their own: written at `p`, where kRoomForNumber bytes must be
/// free; the end comes back.
inline constexpr std::size_t kRoomForNumber = 384;
char* putInteger(char* p, std::int64_t i);
char* putDecimal(char* p, ValueView decimal);
char* putIsoDate(char* p, double date);

/// The number in a value, for every kind that has one: Boolean is -1 or 0, Date its days, Text its
/// whole content read as a number. Nothing for Null, Bytes and other texts.
std::optional<double> realOf(ValueView v);
/// The same rounded to a whole number (half to even); nothing when it passes 64 bits.
std::optional<std::int64_t> integerOf(ValueView v);
/// Units of 1/10,000, rounded half to even; exact for Decimal and Text.
std::optional<std::int64_t> currencyOf(ValueView v);
/// The exact double of a Decimal (correctly rounded).
double decimalToReal(ValueView decimal);
/// Reads "123", "-1.50", "1e5" (blanks around allowed) wholly; nothing otherwise.
std::optional<double> parseReal(std::string_view text);
/// Reads a decimal text exactly into a Decimal of at most 28 digits behind the point.
std::optional<ValueView> parseDecimal(std::string_view text);
/// Reads "YYYY-MM-DD[ HH:MM[:SS]]", "m/d/yyyy[ h:mm[:ss][ AM|PM]]" or a time alone.
std::optional<double> parseDate(std::string_view text);

/// The value as people and text fields see it: numbers shortest, True or False, dates "m/d/yyyy" with
/// "h:mm:ss AM|PM" when there is a time, bytes as lower-case hex. Null appends nothing.
void appendText(std::string& out, ValueView v);

void appendHex(std::string& out, std::span<const std::uint8_t> bytes);  // lower case

/// True when the text is plain ASCII (no byte above 0x7F).
bool isAscii(std::string_view text);
/// Number of characters (code points beyond U+FFFF count two, as the engine counts) of UTF-8 text.
std::size_t textLength(std::string_view utf8);
/// The first `characters` characters of the text, counted as by textLength.
std::string_view textPrefix(std::string_view utf8, std::size_t characters);

}  // namespace velnor
