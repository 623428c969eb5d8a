// core/text.h - text routines whose positions count from 1, on characters. They fail as the
// rules that use them expect: a negative length is error 5.
#pragma once

#include <QString>

namespace velnor::text {

/// From `start` (1 is the first) for `length` characters; beyond the end gives less or nothing.
/// `start` below 1 or a negative length: error 5.
QString mid(const QString& s, int start, int length);
QString mid(const QString& s, int start);
QString left(const QString& s, int length);
QString right(const QString& s, int length);
/// Position of the first `what` from `start` on, 0 when there is none. Exact case.
int instr(const QString& s, const QString& what, int start = 1);
/// Position of the last `what`, 0 when there is none.
int instrRev(const QString& s, const QString& what);
/// Blanks (U+0020 only) cut at both ends, at the left, at the right.
QString trim(const QString& s);
QString ltrim(const QString& s);
QString rtrim(const QString& s);
/// The leading number of a text: blanks, tabs and line feeds skipped, sign, digits, point, exponent
/// (E or D), &H and &O; 0 when there is none. "12abc" is 12, "1 2" is 12, "abc" is 0.
double val(const QString& s);
/// A number as text with a blank in front when it is not negative (`str(5)` is " 5", ".5" for 0.5 is " .5").
QString str(double number);
/// A number as text without the blank, at most 15 digits.
QString cstr(double number);
/// Kept in 16 bits; error 6 outside.
short narrow16(long long n);
/// "1,234,567".
QString thousands(long long n);

}  // namespace velnor::text
