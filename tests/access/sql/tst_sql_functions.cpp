// The functions of statements, by examples.
#include "tests/access/sql/sql_fixture.h"

using namespace velnor;
using namespace velnor::test;

class SqlFunctions : public SqlTest {};

TEST_F(SqlFunctions, ofTexts)
{
    EXPECT_EQ(one("Left(City, 3)"), "Bos");
    EXPECT_EQ(one("Right(City, 3)"), "ton");
    EXPECT_EQ(one("Right(City, 30)"), "Boston");
    EXPECT_EQ(one("Mid(City, 2, 3)"), "ost");
    EXPECT_EQ(one("Mid(City, 4)"), "ton");
    EXPECT_EQ(one("Mid(City, 40)"), "");
    EXPECT_EQ(one("Len(City)"), "6");
    EXPECT_EQ(one("UCase('äß') & LCase('ÄB')"), "Äßäb");
    EXPECT_EQ(one("'[' & Trim('  a ') & LTrim(' b') & RTrim('c ') & ']'"), "[abc]");
    EXPECT_EQ(one("InStr(City, 'T')"), "4");
    EXPECT_EQ(one("InStr(5, 'abcabc', 'b')"), "5");
    EXPECT_EQ(one("InStr('abc', 'x')"), "0");
    EXPECT_EQ(one("Replace('banana', 'AN', 'o')"), "booa");
    EXPECT_EQ(one("String(3, 'xy') & Space(2) & '.'"), "xxx  .");
    EXPECT_EQ(one("StrComp('a', 'A')"), "0");
    EXPECT_EQ(one("StrComp('a', 'b')"), "-1");
    EXPECT_EQ(one("StrReverse('abc')"), "cba");
    EXPECT_EQ(one("Asc('A') & Chr(66)"), "65B");
    EXPECT_EQ(one("Val('12abc')"), "12");
    EXPECT_EQ(one("Val('abc')"), "0");
    EXPECT_EQ(one("Str(5)"), " 5");
    EXPECT_EQ(one("CStr(Total)"), "100.25");
    EXPECT_EQ(one("CStr(Day)"), "1/31/2003");
    EXPECT_EQ(one("Paid & ''"), "True");
    EXPECT_EQ(one("Left(Null, 3)"), "Null");
    EXPECT_EQ(numberOf("SELECT Left(City, -1) FROM ORDERS"), 3001);
    EXPECT_EQ(numberOf("SELECT Left(City) FROM ORDERS"), 3075);
}

TEST_F(SqlFunctions, ofNumbers)
{
    EXPECT_EQ(one("Abs(-5) & Sgn(-2) & Int(-2.5) & Fix(-2.5)"), "5-1-3-2");
    EXPECT_EQ(one("Round(2.5) & Round(3.5)"), "24");
    EXPECT_EQ(one("Round(1.005, 1)"), "1");
    EXPECT_EQ(one("Sqr(16) + Exp(0) + Log(1)"), "5");
    EXPECT_EQ(one("CInt('12') + CLng(2.5)"), "14");
    EXPECT_EQ(one("CCur(1.23456)"), "1.2346");
    EXPECT_EQ(one("CBool(3)"), "True");
    EXPECT_EQ(one("IsNumeric('1e3')"), "True");
    EXPECT_EQ(numberOf("SELECT CInt(40000) FROM ORDERS"), 3421);
    EXPECT_EQ(numberOf("SELECT CInt(City) FROM ORDERS"), 3464);
    EXPECT_EQ(numberOf("SELECT Sqr(-1) FROM ORDERS"), 3001);
}

TEST_F(SqlFunctions, ofDates)
{
    EXPECT_EQ(one("Year(Day) & '-' & Month(Day) & '-' & Day(Day)"), "2003-1-31");
    EXPECT_EQ(one("Weekday(Day)"), "6");
    EXPECT_EQ(one("DateAdd('m', 1, Day)"), "2/28/2003");
    EXPECT_EQ(one("DateAdd('h', 25, Day)"), "2/1/2003 1:00:00 AM");
    EXPECT_EQ(one("DateDiff('d', #12/25/2002#, Day)"), "37");
    EXPECT_EQ(one("DateDiff('yyyy', #12/31/2002#, Day)"), "1");
    EXPECT_EQ(one("DateDiff('ww', #1/25/2003#, #1/26/2003#)"), "1");
    EXPECT_EQ(one("DatePart('q', Day)"), "1");
    EXPECT_EQ(one("DatePart('ww', #1/4/2003#)"), "1");
    EXPECT_EQ(one("DatePart('ww', #1/5/2003#)"), "2");
    EXPECT_EQ(one("DateSerial(2003, 14, 1)"), "2/1/2004");
    EXPECT_EQ(one("TimeSerial(1, 30, 0)"), "12/30/1899 1:30:00 AM");
    EXPECT_EQ(one("DateValue('3/4/1850')"), "3/4/1850");
    EXPECT_EQ(one("MonthName(2) & WeekdayName(1, True)"), "FebruarySun");
    EXPECT_EQ(one("IsDate('13/13/2003')"), "False");
    EXPECT_EQ(one("Hour(#1/1/2000 11:59:58 PM#) & Minute(#11:59:58 PM#) & Second(#11:59:58 PM#)"),
              "235958");
    EXPECT_EQ(one("Int(Now()) = Date()"), "True");
    EXPECT_EQ(one("Format(Day, 'yyyy-mm-dd')"), "2003-01-31");
    EXPECT_EQ(one("Format(#1/2/2003 3:04:05 PM#, 'd mmm yy h:nn AM/PM')"), "2 Jan 03 3:04 PM");
    EXPECT_EQ(numberOf("SELECT DateAdd('x', 1, Day) FROM ORDERS"), 3001);
    EXPECT_EQ(numberOf("SELECT Year('never') FROM ORDERS"), 3464);
}

TEST_F(SqlFunctions, ofChoiceAndNull)
{
    EXPECT_EQ(one("IIf(Qty > 3, 'many', 'few')"), "many");
    EXPECT_EQ(one("IIf(Null, 1, 2)"), "2");
    EXPECT_EQ(one("Switch(Qty < 3, 'few', Qty < 9, 'some')"), "some");
    EXPECT_EQ(one("Choose(2, 'a', 'b')"), "b");
    EXPECT_EQ(one("Nz(Null, 0)"), "0");
    EXPECT_EQ(one("Nz(Null)"), "");
    EXPECT_EQ(one("IsNull(Null)"), "True");
    EXPECT_EQ(one("Format(1234.5, '#,##0.00')"), "1,234.50");
    EXPECT_EQ(one("Format(0.256, 'Percent')"), "25.60%");
    EXPECT_EQ(one("Format(-0.5, '0.0')"), "-0.5");
}

TEST_F(SqlFunctions, ofGroups)
{
    EXPECT_EQ(answer("SELECT Var(Qty), VarP(Qty) FROM ORDERS WHERE ID < 3").front(), "2|1");
    EXPECT_EQ(answer("SELECT StDev(Qty) FROM ORDERS WHERE ID = 1").front(), "Null");
    EXPECT_EQ(answer("SELECT Sum(Rate) FROM ORDERS").front(), "3.25");
    EXPECT_EQ(numberOf("SELECT Sum(City) FROM ORDERS WHERE ID = 1"), 3464);
    EXPECT_EQ(numberOf("SELECT Sum(Count(*)) FROM ORDERS"), 3075);
}

// A sum of many amounts comes out as on paper.
TEST_F(SqlFunctions, sumsOfAmountsDoNotDrift)
{
    Recordset rs = db.OpenRecordset("ORDERS");
    for (int i = 0; i < 1000; ++i) {
        rs.AddNew();
        rs.setValue(0, ValueView::integer(100 + i));
        rs.setValue(7, ValueView::real(0.1));
        rs.Update();
    }
    EXPECT_EQ(answer("SELECT Sum(Rate) FROM ORDERS WHERE ID >= 100").front(), "100");
}
