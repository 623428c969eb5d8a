// Key expressions: parsed, evaluated on a record image, and turned into lists of fields.
#include <gtest/gtest.h>

#include "access/engine_error.h"
#include "access/formats/xbase/index_expression.h"

namespace {

using namespace velnor;
using namespace velnor::xbase;

/// NAME C(8) "Anna Li ", CITY C(6) "ulm   ", QTY N(8,2) "  -12.50", DAY D 20240229, FLAG L T,
/// LONGNAME10 C(2) "zz".
class IndexExpressionTest : public ::testing::Test {
protected:
    IndexExpressionTest()
    {
        header.codePage = CodePage::find(1252);
        record = " ";
        add("NAME", Coding::Character, "Anna Li ");
        add("CITY", Coding::Character, "ulm   ");
        add("QTY", Coding::Number, "  -12.50");
        add("DAY", Coding::Day, "20240229");
        add("FLAG", Coding::Logical, "T");
        add("LONGNAME10", Coding::Character, "zz");
        add("NOTE", Coding::MemoText, "          ");
    }

    void add(const char* name, Coding coding, std::string_view bytes)
    {
        DbfField field;
        field.name = name;
        field.coding = coding;
        field.offset = static_cast<std::uint32_t>(record.size());
        field.length = static_cast<std::uint32_t>(bytes.size());
        field.decimals = coding == Coding::Number ? 2 : 0;
        header.fields.push_back(field);
        record += bytes;
    }

    std::string of(std::string_view text)
    {
        const IndexExpression expression(text, header);
        const ExpressionValue v =
            expression.evaluate(reinterpret_cast<const std::uint8_t*>(record.data()), 7);
        EXPECT_EQ(v.type, expression.type());
        switch (v.type) {
        case ExpressionType::Text:
            EXPECT_LE(v.length, expression.width()) << text;
            return "'" + std::string(reinterpret_cast<const char*>(v.text), v.length) + "'";
        case ExpressionType::Logical:
            return v.truth ? "yes" : "no";
        default: {
            char shown[40];
            std::snprintf(shown, sizeof shown, "%.10g", v.number);
            return shown;
        }
        }
    }

    int errorOf(std::string_view text)
    {
        try {
            const IndexExpression expression(text, header);
            return 0;
        } catch (const EngineError& error) {
            return error.number();
        }
    }

    std::string fieldsOf(std::string_view text)
    {
        std::string names;
        for (const std::size_t n : fieldsOfExpression(text, header))
            names += header.fields[n].name + " ";
        return names;
    }

    DbfHeader header;
    std::string record;
};

TEST_F(IndexExpressionTest, textsKeepTheirWidth)
{
    EXPECT_EQ(of("NAME"), "'Anna Li '");
    EXPECT_EQ(of("name+City"), "'Anna Li ulm   '");
    EXPECT_EQ(of("NAME-CITY"), "'Anna Liulm    '");
    EXPECT_EQ(of("TRIM(NAME)+\"/\"+ALLTRIM(CITY)"), "'Anna Li/ulm'");
    EXPECT_EQ(of("PADR(TRIM(NAME),9)+[x]"), "'Anna Li  x'");
    EXPECT_EQ(of("PADL('7',3,'0')"), "'007'");
    EXPECT_EQ(of("LEFT(NAME,4)+RIGHT(CITY,4)+SUBSTR(NAME,6,2)+SUBS(NAME,7)"), "'Annam   Lii '");
    EXPECT_EQ(of("SPACE(2)+CHR(65)"), "'  A'");
}

TEST_F(IndexExpressionTest, lettersChangeTheirCaseInTheTablesPage)
{
    record.replace(1, 3, "\xE4\xDFz");  // a with two dots, sharp s
    EXPECT_EQ(of("UPPER(NAME)"), "'\xC4\xDFZA LI '");
    EXPECT_EQ(of("LOWER(UPPER(NAME))"), "'\xE4\xDFza li '");
}

TEST_F(IndexExpressionTest, numbersAndDays)
{
    EXPECT_EQ(of("QTY*2+1"), "-24");
    EXPECT_EQ(of("-QTY/0"), "0");
    EXPECT_EQ(of("ABS(QTY)+INT(2.7)"), "14.5");
    EXPECT_EQ(of("STR(QTY,8,2)"), "'  -12.50'");
    EXPECT_EQ(of("STR(QTY,3,1)"), "'***'");
    EXPECT_EQ(of("STR(RECNO())"), "'         7'");
    EXPECT_EQ(of("VAL(' 12.5x')"), "12.5");
    EXPECT_EQ(of("DAY"), "2460370");
    EXPECT_EQ(of("DTOS(DAY)+DTOC(DAY)"), "'2024022902/29/24'");
    EXPECT_EQ(of("YEAR(DAY)*10000+MONTH(DAY)*100+DAY(DAY)"), "20240229");
    EXPECT_EQ(of("DAY-CTOD('02/28/2024')"), "1");
}

TEST_F(IndexExpressionTest, conditions)
{
    EXPECT_EQ(of(".NOT. DELETED()"), "yes");
    EXPECT_EQ(of("CITY=\"u\" .AND. (QTY<0 .OR. FLAG) .and. !EMPTY(CITY)"), "yes");
    EXPECT_EQ(of("CITY==\"ulm\""), "no");  // to the letter, blanks as well
    EXPECT_EQ(of("TRIM(CITY)==\"ulm\""), "yes");
    EXPECT_EQ(of("'lm' $ CITY"), "yes");
    EXPECT_EQ(of("CITY<>'ulm'"), "no");
    EXPECT_EQ(of("QTY>=-12.5 AND NOT QTY#-12.5"), "yes");
    EXPECT_EQ(of("IIF(FLAG,'T','F')"), "'T'");
    EXPECT_EQ(of("FLAG=.F."), "no");
}

TEST_F(IndexExpressionTest, namesMayHaveAliases_colons_andBeCut)
{
    EXPECT_EQ(of("PEOPLE->NAME"), "'Anna Li '");
    EXPECT_EQ(of("UPPER(:city:)"), "'ULM   '");
    EXPECT_EQ(of("longname10_and_more"), "'zz'");
    EXPECT_EQ(of("ALLT(CITY)"), "'ulm'");
}

TEST_F(IndexExpressionTest, whatIsNotUnderstoodIsAnError)
{
    for (const char* text :
         {"", "NOTHING", "NAME+QTY", "SOUNDEX(NAME)", "UPPER(NAME", "NAME)", "1+", "NOTE", "\"open",
          "QTY .AND. FLAG", "LEFT(NAME)", "2**3", "STR(QTY,NAME)"})
        EXPECT_EQ(errorOf(text), 3018) << text;
    EXPECT_EQ(errorOf(std::string(5000, '(')), 3018);
    EXPECT_EQ(errorOf("1" + std::string(4000, '!')), 3018);
    std::string wide = "NAME";
    for (int i = 0; i < 600; ++i)
        wide += "+NAME";
    EXPECT_EQ(errorOf(wide), 3018);
}

TEST_F(IndexExpressionTest, fieldsAreFoundInOrderWithoutRepeats)
{
    EXPECT_EQ(fieldsOf("CITY"), "CITY ");
    EXPECT_EQ(fieldsOf("UPPER(CITY)+'NAME'+DTOS(DAY)+T->CITY+STR(QTY,8)"), "CITY DAY QTY ");
    EXPECT_EQ(fieldsOf("DAY(DAY)"), "DAY ");
    EXPECT_EQ(fieldsOf("RECNO()"), "");
}

TEST_F(IndexExpressionTest, anExpressionForSeveralFieldsIsAText)
{
    EXPECT_EQ(expressionOfFields({0}, header), "NAME");
    EXPECT_EQ(expressionOfFields({0, 2, 3, 4}, header),
              "NAME+STR(QTY,8,2)+DTOS(DAY)+IIF(FLAG,\"T\",\"F\")");
    EXPECT_EQ(of(expressionOfFields({0, 2, 3, 4}, header)), "'Anna Li   -12.5020240229T'");
    EXPECT_THROW(expressionOfFields({0, 6}, header), EngineError);
    EXPECT_THROW(expressionOfFields({}, header), EngineError);
}

}  // namespace
