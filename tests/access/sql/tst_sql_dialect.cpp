// The dialect of statements: names, constants, comparisons, groups, joins, and the errors with
// their places.
#include "tests/access/sql/sql_fixture.h"

using namespace velnor;
using namespace velnor::test;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

class SqlDialect : public SqlTest {};

TEST_F(SqlDialect, fieldsAndTablesStandInBrackets)
{
    EXPECT_THAT(
        answer("SELECT [City], [Total] FROM [ORDERS] WHERE [City]  = 'Boston' AND [Region]  "
               "<> 'East' ORDER BY [Total] DESC"),
        ElementsAre("boston|20"));
    EXPECT_THAT(answer("select id from orders where id <= 2 order by id"), ElementsAre("1", "2"));
}

TEST_F(SqlDialect, textsCompareWithoutRegardToCase)
{
    EXPECT_THAT(answer("SELECT ID FROM ORDERS WHERE City = 'BOSTON'"), ElementsAre("1", "2"));
    EXPECT_THAT(answer("SELECT ID FROM ORDERS WHERE 'bOsTon' = City"), ElementsAre("1", "2"));
    EXPECT_THAT(answer("SELECT ID FROM ORDERS WHERE City IN ('LIMA','oslo')"),
                ElementsAre("3", "5"));
    EXPECT_THAT(answer("SELECT ID FROM ORDERS WHERE UCase(City) = 'lima'"), ElementsAre("3"));
    EXPECT_THAT(answer("SELECT DISTINCT City FROM ORDERS WHERE ID < 3").size(), 1u);
    EXPECT_THAT(answer("SELECT Count(*) FROM ORDERS GROUP BY Region ORDER BY Region"),
                ElementsAre("2", "2", "1"));
}

TEST_F(SqlDialect, quotedConstantsCountAsTheTypeOfTheField)
{
    EXPECT_THAT(answer("SELECT ID FROM ORDERS WHERE [Total]  = '100.25'"), ElementsAre("1"));
    EXPECT_THAT(answer("SELECT ID FROM ORDERS WHERE [Qty]  >= '7'"), ElementsAre("2", "5"));
    EXPECT_THAT(answer("SELECT ID FROM ORDERS WHERE [Day]  = '1/31/2003'"), ElementsAre("1"));
    EXPECT_THAT(answer("SELECT ID FROM ORDERS WHERE [Day]  = '2003-02-01'"), ElementsAre("2"));
    EXPECT_THAT(answer("SELECT ID FROM ORDERS WHERE [Paid]  = 'True'"), ElementsAre("1", "3"));
    EXPECT_THAT(answer("SELECT ID FROM ORDERS WHERE [Qty] IN ('5', '9')"), ElementsAre("1", "5"));
    EXPECT_THAT(answer("SELECT ID FROM ORDERS WHERE [Rate] BETWEEN '0' AND '1.5'"),
                ElementsAre("1", "2"));
}

TEST_F(SqlDialect, constantsOfAnotherTypeAreRefused_withTheirPlace)
{
    EXPECT_EQ(numberOf("SELECT ID FROM ORDERS WHERE [Qty] = '12abc'"), 3464);
    EXPECT_EQ(numberOf("SELECT ID FROM ORDERS WHERE [Day] > 'soon'"), 3464);
    EXPECT_EQ(numberOf("SELECT ID FROM ORDERS WHERE [Qty] = ''"), 3464);
    EXPECT_EQ(numberOf("SELECT ID FROM ORDERS WHERE [City] = 5"), 3464);
    EXPECT_EQ(numberOf("SELECT ID FROM ORDERS WHERE [City] = [Qty]"), 3464);
    EXPECT_EQ(numberOf("SELECT ID FROM ORDERS WHERE City"), 3464);
    EXPECT_THAT(wordsOf("SELECT ID FROM ORDERS WHERE [Qty] = '12abc'"),
                HasSubstr("at character 37, near ''12abc''"));
}

TEST_F(SqlDialect, syntaxErrorsSayWhere)
{
    EXPECT_EQ(numberOf("SELECT FROM ORDERS"), 3075);
    EXPECT_EQ(numberOf("SELECT ID FROM ORDERS WHERE"), 3075);
    EXPECT_EQ(numberOf("SELECT ID FROM ORDERS WHERE (ID = 1"), 3075);
    EXPECT_EQ(numberOf("SELECT ID FROM ORDERS ORDER ID"), 3075);
    EXPECT_EQ(numberOf("SELECT ID FROM ORDERS WHERE ID = 1 2"), 3075);
    EXPECT_EQ(numberOf("SELECT ID FROM ORDERS WHERE Day = #nothing#"), 3075);
    EXPECT_EQ(numberOf("SELECT ID FROM"), 3131);
    EXPECT_EQ(numberOf("SELECT ID FROM ORDERS INNER REGIONS"), 3131);
    EXPECT_EQ(numberOf("SELECT ID FROM ORDERS JOIN REGIONS"), 3131);
    EXPECT_THAT(wordsOf("SELECT ID FROM ORDERS WHERE ID = 1 2"),
                HasSubstr("character 36, near '2'"));
    EXPECT_THAT(wordsOf("SELECT ID FROM ORDERS WHERE"), HasSubstr("at the end"));
}

// A composed statement whose constant holds an apostrophe: nothing escapes it, and it must not run.
TEST_F(SqlDialect, unescapedApostropheIsRejected)
{
    EXPECT_EQ(numberOf("SELECT [Head] FROM [REGIONS] WHERE [Head]  = 'O'Brien'"), 3075);
    EXPECT_THAT(answer("SELECT [Region] FROM [REGIONS] WHERE [Head]  = 'O''Brien'"),
                ElementsAre("EAST"));
}

// What the query window composes with no output field.
TEST_F(SqlDialect, cutOffSelectIsASyntaxError)
{
    EXPECT_EQ(numberOf("SELEC FROM [ORDERS]"), 3075);
}

TEST_F(SqlDialect, unknownNamesAreTold)
{
    EXPECT_EQ(numberOf("SELECT Wrong FROM ORDERS"), 3061);
    EXPECT_EQ(numberOf("SELECT [Order] FROM ORDERS WHERE [Order]  = '1'"), 3061);
    EXPECT_EQ(numberOf("SELECT ID FROM ORDERS WHERE City = Boston"), 3061);
    EXPECT_EQ(numberOf("SELECT ID FROM ORDERS ORDER BY Wrong"), 3061);
    EXPECT_EQ(numberOf("SELECT X.ID FROM ORDERS"), 3061);
    EXPECT_EQ(numberOf("SELECT ID FROM NOSUCH"), 3078);
    EXPECT_EQ(numberOf("SELECT Nonsense(ID) FROM ORDERS"), 3085);
    EXPECT_EQ(numberOf("SELECT Region FROM ORDERS, REGIONS"), 3079);
    EXPECT_THAT(wordsOf("SELECT ID, Wrong FROM ORDERS"), HasSubstr("'Wrong', at character 12"));
}

TEST_F(SqlDialect, nullIsUnknown)
{
    EXPECT_THAT(answer("SELECT ID FROM ORDERS WHERE Qty IS NULL"), ElementsAre("3"));
    EXPECT_THAT(answer("SELECT ID FROM ORDERS WHERE City IS NOT NULL").size(), 4u);
    EXPECT_THAT(answer("SELECT ID FROM ORDERS WHERE Qty = NULL"), IsEmpty());
    EXPECT_THAT(answer("SELECT ID FROM ORDERS WHERE NOT (Qty = 5)"), ElementsAre("2", "4", "5"));
    EXPECT_THAT(answer("SELECT ID FROM ORDERS WHERE City <> 'Lima'"), ElementsAre("1", "2", "5"));
    EXPECT_EQ(one("Null & Null"), "Null");
    EXPECT_EQ(one("'a' & Null"), "a");
    EXPECT_EQ(one("'a' + Null"), "Null");
}

TEST_F(SqlDialect, datesStandBetweenSigns)
{
    EXPECT_THAT(answer("SELECT ID FROM ORDERS WHERE Day >= #1/31/2003# AND Day < #2/1/2003#"),
                ElementsAre("1", "3"));
    EXPECT_THAT(answer("SELECT ID FROM ORDERS WHERE Day = #1/31/2003 12:00:00 PM#"),
                ElementsAre("3"));
    EXPECT_EQ(one("Day + 1"), "2/1/2003");
    EXPECT_EQ(one("#2/1/2003# - Day"), "1");
}

TEST_F(SqlDialect, likeHasItsOwnSigns)
{
    EXPECT_THAT(answer("SELECT ID FROM ORDERS WHERE City LIKE 'b*'"), ElementsAre("1", "2"));
    EXPECT_THAT(answer("SELECT ID FROM ORDERS WHERE City LIKE '?ima'"), ElementsAre("3"));
    EXPECT_THAT(answer("SELECT ID FROM ORDERS WHERE City LIKE '[l-o]*'"), ElementsAre("3", "5"));
    EXPECT_THAT(answer("SELECT ID FROM ORDERS WHERE City NOT LIKE '[!b]*'"), ElementsAre("1", "2"));
    EXPECT_THAT(answer("SELECT ID FROM ORDERS WHERE Total LIKE '1##*'"), ElementsAre("1"));
    EXPECT_EQ(numberOf("SELECT ID FROM ORDERS WHERE City LIKE 'a[b'"), 3075);
}

TEST_F(SqlDialect, truthHasWords)
{
    EXPECT_THAT(answer("SELECT ID FROM ORDERS WHERE Paid = True"), ElementsAre("1", "3"));
    EXPECT_THAT(answer("SELECT ID FROM ORDERS WHERE Paid"), ElementsAre("1", "3"));
    EXPECT_THAT(answer("SELECT ID FROM ORDERS WHERE NOT Paid AND ID < 5"), ElementsAre("2", "4"));
    EXPECT_THAT(answer("SELECT ID FROM ORDERS WHERE (Qty = 5) = True"), ElementsAre("1"));
    EXPECT_EQ(one("ID = 1"), "True");
    EXPECT_EQ(one("(ID = 1) + 1"), "0");
    EXPECT_THAT(answer("SELECT ID FROM ORDERS WHERE Paid XOR ID = 1"), ElementsAre("3"));
}

TEST_F(SqlDialect, operatorsHaveTheirRank)
{
    EXPECT_EQ(one("2 + 3 * 4"), "14");
    EXPECT_EQ(one("-2 ^ 2"), "-4");
    EXPECT_EQ(one("7 \\ 2"), "3");
    EXPECT_EQ(one("7 Mod 4 + 1"), "4");
    EXPECT_EQ(one("7 / 2"), "3.5");
    EXPECT_EQ(one("1 & 2 + 3"), "15");
    EXPECT_EQ(one("1 / 0"), "Null");
    EXPECT_THAT(answer("SELECT ID FROM ORDERS WHERE ID = 1 OR ID = 2 AND Paid"), ElementsAre("1"));
}

TEST_F(SqlDialect, groupsCountAndSum)
{
    EXPECT_THAT(
        answer("SELECT Region, Count(*) AS N, Sum(Total) FROM ORDERS GROUP BY Region HAVING "
               "Count(*) > 1 ORDER BY Sum(Total) DESC"),
        ElementsAre("East|2|400.25", "North|2|20"));
    EXPECT_THAT(answer("SELECT Count(*), Count(Qty), Min(City), Max(Day), Avg(Qty) FROM ORDERS"),
                ElementsAre("5|4|Boston|2/1/2003|5.75"));
    EXPECT_THAT(answer("SELECT Sum(Qty), Count(*) FROM ORDERS WHERE ID > 9"),
                ElementsAre("Null|0"));
    EXPECT_THAT(answer("SELECT First(City), Last(City) FROM ORDERS"), ElementsAre("Boston|Oslo"));
    EXPECT_EQ(numberOf("SELECT City, Count(*) FROM ORDERS"), 3122);
    EXPECT_EQ(numberOf("SELECT City FROM ORDERS GROUP BY Region"), 3122);
    EXPECT_EQ(numberOf("SELECT ID FROM ORDERS WHERE Count(*) > 1"), 3096);
}

// Groups that the table works out itself, and those for which the machine looks at records, agree.
TEST_F(SqlDialect, groupsAreTheSame_whoeverWorksThemOut)
{
    const std::string functions =
        "Count(*), Count(Qty), Sum(Qty), Sum(Total), Avg(Total), Min(City), Max(Day), "
        "StDev(Total), VarP(Qty), Sum(Rate), Avg(Qty), Max(Paid)";
    for (const char* where : {"", " WHERE Total > 20", " WHERE City = 'boston'", " WHERE ID > 99",
                              " WHERE Qty IS NULL", " WHERE 1 = 0", " WHERE City LIKE '*o*'"}) {
        const std::string from = std::string(" FROM ORDERS") + where;
        const std::string machine = from + (*where ? " AND" : " WHERE") + " Len(ID) > 0";
        EXPECT_EQ(answer("SELECT " + functions + from), answer("SELECT " + functions + machine));
        for (const char* rest :
             {" GROUP BY Region", " GROUP BY Region, Paid ORDER BY Count(*), Region DESC, Paid",
              " GROUP BY Region HAVING Count(*) > 1 AND Sum(Total) < 400",
              " GROUP BY Region HAVING Min(City) <> 'COUNT(*)'"})
            EXPECT_EQ(answer("SELECT Region, " + functions + from + rest),
                      answer("SELECT Region, " + functions + machine + rest))
                << where << rest;
        EXPECT_EQ(answer("SELECT Day, Total, Max(Total)" + from + " GROUP BY Day, Total"),
                  answer("SELECT Day, Total, Max(Total)" + machine + " GROUP BY Day, Total"));
    }
    EXPECT_THAT(answer("SELECT TOP 2 Region, Count(*) FROM ORDERS GROUP BY Region"),
                ElementsAre("East|2", "North|2"));
    EXPECT_THAT(answer("SELECT First(ID), Last(City), First(Qty) FROM ORDERS WHERE ID > 2"),
                ElementsAre("3|Oslo|Null"));
}

// Sums of whole numbers that no longer fit become the nearest real.
TEST_F(SqlDialect, veryLargeSumsDoNotWrap)
{
    EXPECT_THAT(answer("SELECT Sum(9000000000000000000) > 4.4E19 FROM ORDERS"),
                ElementsAre("True"));
}

TEST_F(SqlDialect, joinsOfAllKinds)
{
    EXPECT_THAT(answer("SELECT ORDERS.ID, Head FROM ORDERS INNER JOIN REGIONS ON ORDERS.Region = "
                       "REGIONS.Region ORDER BY ID"),
                ElementsAre("1|O'Brien", "3|O'Brien", "4|Berg", "5|Berg"));
    EXPECT_THAT(answer("SELECT o.ID, r.Head FROM ORDERS AS o LEFT JOIN REGIONS AS r ON o.Region = "
                       "r.Region WHERE o.ID < 3 ORDER BY o.ID"),
                ElementsAre("1|O'Brien", "2|Null"));
    EXPECT_THAT(answer("SELECT a.ID, b.ID FROM ORDERS a, ORDERS b WHERE a.ID = b.ID + 4"),
                ElementsAre("5|1"));
    EXPECT_THAT(
        answer("SELECT o.ID FROM (ORDERS AS o INNER JOIN REGIONS AS r ON o.Region = r.Region) "
               "INNER JOIN REGIONS AS s ON s.Region = r.Region WHERE s.Head = 'berg' ORDER BY 1"),
        ElementsAre("4", "5"));
    EXPECT_THAT(answer("SELECT REGIONS.*, Qty FROM ORDERS RIGHT JOIN REGIONS ON ORDERS.Region = "
                       "REGIONS.Region AND Qty > 8"),
                UnorderedElementsAre("North|Berg|9", "EAST|O'Brien|Null"));
}

TEST_F(SqlDialect, subqueriesAndUnions)
{
    EXPECT_THAT(
        answer("SELECT ID FROM ORDERS WHERE Region IN (SELECT Region FROM REGIONS WHERE Head "
               "LIKE 'B*') ORDER BY ID"),
        ElementsAre("4", "5"));
    EXPECT_THAT(answer("SELECT ID FROM ORDERS AS o WHERE EXISTS (SELECT * FROM REGIONS WHERE "
                       "REGIONS.Region = o.Region AND Head = 'berg') ORDER BY ID"),
                ElementsAre("4", "5"));
    EXPECT_THAT(answer("SELECT ID FROM ORDERS WHERE Total = (SELECT Max(Total) FROM ORDERS)"),
                ElementsAre("3"));
    EXPECT_THAT(
        answer("SELECT q.C FROM (SELECT Region, Count(*) AS C FROM ORDERS GROUP BY Region) AS q "
               "WHERE q.Region = 'WEST'"),
        ElementsAre("1"));
    EXPECT_THAT(
        answer("SELECT City FROM ORDERS WHERE ID = 3 UNION SELECT Head FROM REGIONS ORDER BY 1"),
        ElementsAre("Berg", "Lima", "O'Brien"));
    EXPECT_EQ(numberOf("SELECT ID FROM ORDERS UNION SELECT Region, Head FROM REGIONS"), 3307);
}

TEST_F(SqlDialect, topTakesTies)
{
    EXPECT_THAT(answer("SELECT TOP 2 ID FROM ORDERS ORDER BY ID DESC"), ElementsAre("5", "4"));
    EXPECT_THAT(answer("SELECT TOP 1 ID FROM ORDERS WHERE Total < 100 ORDER BY Total"),
                UnorderedElementsAre("2", "5"));
    EXPECT_THAT(answer("SELECT TOP 40 PERCENT ID FROM ORDERS ORDER BY ID"), ElementsAre("1", "2"));
    EXPECT_THAT(answer("SELECT TOP 0 ID FROM ORDERS ORDER BY ID"), IsEmpty());
    EXPECT_THAT(answer("SELECT TOP 3 ID FROM ORDERS").size(), 3u);
}

TEST_F(SqlDialect, distinct)
{
    EXPECT_THAT(answer("SELECT DISTINCT Paid FROM ORDERS ORDER BY Paid"),
                ElementsAre("True", "False"));
    EXPECT_THAT(answer("SELECT DISTINCTROW ID FROM ORDERS WHERE ID < 3"), ElementsAre("1", "2"));
    EXPECT_EQ(numberOf("SELECT DISTINCT City FROM ORDERS ORDER BY Qty"), 3093);
}

// Regions by their orders: a record of the one table comes once, not once an order.
TEST_F(SqlDialect, distinctRow_givesARecordOnce_howeverManyOthersItMeets)
{
    const std::string joined = " FROM REGIONS INNER JOIN ORDERS ON REGIONS.Region = ORDERS.Region";
    EXPECT_EQ(answer("SELECT Head" + joined).size(), 4u);
    EXPECT_THAT(answer("SELECT DISTINCTROW Head" + joined),
                UnorderedElementsAre("O'Brien", "Berg"));
    EXPECT_THAT(answer("SELECT DISTINCTROW REGIONS.*" + joined + " WHERE ORDERS.ID < 4"),
                ElementsAre("EAST|O'Brien"));
    EXPECT_THAT(answer("SELECT DISTINCTROW TOP 1 Head" + joined + " ORDER BY Head DESC"),
                ElementsAre("O'Brien"));
    EXPECT_THAT(answer("SELECT DISTINCTROW Total" + joined + " WHERE ID IN (1, 3)"),
                UnorderedElementsAre("100.25", "300"));
}

// Equal values of different records stay apart, and where every table gives a field all stay.
TEST_F(SqlDialect, distinctRow_goesByRecords_notByValues)
{
    const std::string both = " FROM ORDERS AS o, REGIONS AS r";
    EXPECT_THAT(answer("SELECT DISTINCTROW o.Paid" + both + " WHERE o.ID < 4"),
                UnorderedElementsAre("True", "False", "True"));
    EXPECT_EQ(answer("SELECT DISTINCTROW o.Paid, r.Head" + both).size(), 10u);
    EXPECT_EQ(answer("SELECT DISTINCTROW Paid FROM ORDERS").size(), 5u);
    EXPECT_EQ(answer("SELECT DISTINCTROW Count(*)" + both), Lines{"10"});
    const std::string subquery = " FROM ORDERS AS o, (SELECT Head FROM REGIONS) AS q";
    EXPECT_EQ(answer("SELECT DISTINCTROW o.ID" + subquery).size(), 5u);
    EXPECT_EQ(answer("SELECT DISTINCTROW q.Head" + subquery).size(), 2u);
}

TEST_F(SqlDialect, columnsHaveNamesAndTypes)
{
    Recordset rs =
        db.OpenRecordset("SELECT City, Total * 2 AS Twice, Count(*), Region AS [The region], "
                         "ID & City FROM ORDERS GROUP BY City, Total, Region, ID");
    ASSERT_EQ(rs.fieldCount(), 5);
    EXPECT_EQ(rs.Fields()[0].Name(), "City");
    EXPECT_EQ(rs.Fields()[0].Size(), 20);
    EXPECT_EQ(rs.Fields()[1].Name(), "Twice");
    EXPECT_EQ(rs.Fields()[1].Type(), 5);
    EXPECT_EQ(rs.Fields()[2].Name(), "Expr1000");
    EXPECT_EQ(rs.Fields()[2].Type(), 4);
    EXPECT_EQ(rs.Fields()[3].Name(), "The region");
    EXPECT_EQ(rs.Fields()[4].Type(), 10);
    Recordset twice =
        db.OpenRecordset("SELECT a.ID, b.ID FROM ORDERS a INNER JOIN ORDERS b ON a.ID = b.ID");
    EXPECT_EQ(twice.Fields()[0].Name(), "a.ID");
    EXPECT_EQ(twice.Fields()[1].Name(), "b.ID");
}

TEST_F(SqlDialect, ordersStandAsTheyShould)
{
    EXPECT_THAT(answer("SELECT ID FROM ORDERS ORDER BY City, ID DESC"),
                ElementsAre("4", "2", "1", "3", "5"));
    EXPECT_THAT(answer("SELECT ID FROM ORDERS ORDER BY Total DESC, ID"),
                ElementsAre("3", "1", "2", "5", "4"));
    EXPECT_THAT(answer("SELECT City AS C, ID FROM ORDERS WHERE ID <> 4 ORDER BY C, ID"),
                ElementsAre("Boston|1", "boston|2", "Lima|3", "Oslo|5"));
}

TEST_F(SqlDialect, veryDeepStatementsAreRefused_notRun)
{
    std::string deep = "SELECT ";
    deep += std::string(5000, '(');
    EXPECT_EQ(numberOf(deep + "1 FROM ORDERS"), 3075);
    std::string many = "SELECT ID FROM ORDERS WHERE ID = 1";
    for (int i = 0; i < 900; ++i)
        many += " OR ID = " + std::to_string(i + 100);
    EXPECT_THAT(answer(many), ElementsAre("1"));
    std::string nots = "SELECT ID FROM ORDERS WHERE ";
    for (int i = 0; i < 5000; ++i)
        nots += "NOT ";
    EXPECT_EQ(numberOf(nots + "Paid"), 3075);
}
