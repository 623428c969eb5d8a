// Validation rules and default values: what is understood, what it says, what it stops.
#include <gtest/gtest.h>

#include "access/engine.h"
#include "access/formats/jet/jet_driver.h"
#include "access/model/expression.h"
#include "platform/clock.h"
#include "platform/host.h"
#include "platform/memory_file_system.h"

namespace velnor::model {
namespace {

std::vector<FieldDef> fieldsNamed(std::initializer_list<const char*> names)
{
    std::vector<FieldDef> fields;
    for (const char* name : names) {
        fields.emplace_back();
        fields.back().name = name;
    }
    return fields;
}

/// What a rule of field 0 says of a value: '+' takes it, '-' refuses it, '?' is not understood.
char verdict(std::string_view rule, ValueView value, ValueView other = {})
{
    const auto fields = fieldsNamed({"Own", "Other field"});
    const auto parsed = Expression::parse(rule, fields, 0);
    if (!parsed)
        return '?';
    return parsed->refuses([&](int n) { return n == 0 ? value : other; }) ? '-' : '+';
}

char onNumber(std::string_view rule, double value)
{
    return verdict(rule, ValueView::real(value));
}
char onText(std::string_view rule, std::string_view value)
{
    return verdict(rule, ValueView::text(value));
}

TEST(Rules, comparisonsNeedNotNameTheirField)
{
    EXPECT_EQ(onNumber(">0", 1), '+');
    EXPECT_EQ(onNumber(">0", 0), '-');
    EXPECT_EQ(onNumber("> 0 And < 100", 99.5), '+');
    EXPECT_EQ(onNumber("> 0 And < 100", 100), '-');
    EXPECT_EQ(onNumber("<= -1.5e1 Or >= .5", -15), '+');
    EXPECT_EQ(onNumber("<= -1.5e1 Or >= .5", 0), '-');
    EXPECT_EQ(onNumber("<>3", 3), '-');
    EXPECT_EQ(onNumber("1 Or 2 Or 3", 2), '+');
    EXPECT_EQ(onNumber("1 Or 2 Or 3", 4), '-');
    EXPECT_EQ(onText("\"A\" Or 'b'", "B"), '+') << "letters are blind to case";
    EXPECT_EQ(onText("\"A\" Or 'b'", "C"), '-');
    EXPECT_EQ(onText("<>\"say \"\"no\"\"\"", "say \"NO\""), '-');
    EXPECT_EQ(onNumber("[own] > 5 XOR Own < 7", 6), '-');
}

TEST(Rules, rangesListsAndPatterns)
{
    EXPECT_EQ(onNumber("Between 1 And 10", 10), '+');
    EXPECT_EQ(onNumber("Between 10 And 1", 5), '+');
    EXPECT_EQ(onNumber("Not Between 1 And 10", 5), '-');
    EXPECT_EQ(onNumber("Between 1 And 3 Or Between 7 And 9", 8), '+');
    EXPECT_EQ(onNumber("In (1, 2; 5)", 5), '+');
    EXPECT_EQ(onNumber("Not In (1, 2)", 2), '-');
    EXPECT_EQ(onText("In ('x','y')", "Y"), '+');
    EXPECT_EQ(onText("Like \"A*\"", "abc"), '+');
    EXPECT_EQ(onText("Like \"A*\"", "bac"), '-');
    EXPECT_EQ(onText("Like '##-?*'", "12-öx"), '+');
    EXPECT_EQ(onText("Like '##-?*'", "1x-öx"), '-');
    EXPECT_EQ(onText("Like '[a-f]*[!0-9]'", "cab"), '+');
    EXPECT_EQ(onText("Like '[a-f]*[!0-9]'", "ca1"), '-');
    EXPECT_EQ(onText("Is Null Or Not Like '*[!a-z]*'", "abc"), '+');
    EXPECT_EQ(onText("Is Null Or Not Like '*[!a-z]*'", "ab1"), '-');
    EXPECT_EQ(onText("Like '*a*b*c*'", std::string(3000, 'a') + "b"), '-');
}

TEST(Rules, nullIsNeitherRightNorWrong)
{
    EXPECT_EQ(verdict(">0", {}), '+');
    EXPECT_EQ(verdict("Is Not Null", {}), '-');
    EXPECT_EQ(verdict("Is Null Or >5", ValueView::integer(3)), '-');
    EXPECT_EQ(verdict("IsNull([Other field])", ValueView::integer(3), ValueView::integer(1)), '-');
    EXPECT_EQ(verdict("In (1,2)", {}), '+');
    EXPECT_EQ(verdict(">0 And Is Not Null", {}), '-');
}

TEST(Rules, datesBooleansAndOtherFields)
{
    const double day = 36526;  // 2000-01-01
    EXPECT_EQ(verdict(">=#1/1/2000#", ValueView::date(day)), '+');
    EXPECT_EQ(verdict("<#1/1/2000#", ValueView::date(day)), '-');
    EXPECT_EQ(verdict("Between #12/31/1999# And #1/2/2000#", ValueView::date(day)), '+');
    EXPECT_EQ(verdict("Year([Own])=2000 And Month(Own)=1", ValueView::date(day)), '+');
    EXPECT_EQ(verdict("=True", ValueView::boolean(true)), '+');
    EXPECT_EQ(verdict("Yes", ValueView::boolean(false)), '-');
    EXPECT_EQ(verdict("[Own] < [Other field]", ValueView::integer(1), ValueView::integer(2)), '+');
    EXPECT_EQ(verdict("<[Other field] * 2 - 1", ValueView::integer(3), ValueView::integer(2)), '-');
    EXPECT_EQ(verdict("Len([Own])=3", ValueView::text("abc")), '+');
    EXPECT_EQ(verdict("Left(Own,1)='A' And Right(Own,1)='c' And Mid(Own,2,1)='b'",
                      ValueView::text("abc")),
              '+');
    EXPECT_EQ(verdict("IIf([Other field]=1,[Own]>5,[Own]<5)", ValueView::integer(6),
                      ValueView::integer(1)),
              '+');
    EXPECT_EQ(verdict("=1/0", ValueView::integer(6)), '+') << "no number refuses nothing";
}

TEST(Rules, whatIsNotUnderstoodIsNotGuessedAt)
{
    for (const char* rule : {"DLookup(\"x\",\"y\")>0", "[No such field]>0", ">", "> 0 And",
                             "Between 1", "\"open", "#no date#", "(>0", "In 1,2", "Is", ">0 ;",
                             "Like", "1 2", "[Forms]![Main]![x]", "Len()", "$5"})
        EXPECT_EQ(onNumber(rule, 1), '?') << rule;
    EXPECT_EQ(onNumber(std::string(5000, '('), 1), '?');
    EXPECT_EQ(onNumber(std::string(5000, '-') + "1", 1), '?');
    std::string nots;
    for (int i = 0; i < 5000; ++i)
        nots += "Not ";
    EXPECT_EQ(onNumber(nots + ">0", 1), '?');
}

// ---- in tables

class RuledTable : public ::testing::TestWithParam<int> {
protected:
    void SetUp() override
    {
        host().clock = &clock_;
        CreateRequest create;
        create.name = kFile;
        create.options = GetParam() == 3 ? 32 : 0;
        driver_.create(files_, create);
        OpenRequest request;
        request.name = kFile;
        request.readOnly = false;
        TableLayout layout;
        layout.name = "Ruled";
        layout.fields = fieldsNamed({"Count", "Kind", "From", "Till", "Odd"});
        for (const int date : {2, 3})
            layout.fields[static_cast<std::size_t>(date)].type = FieldType::Date;
        layout.fields[0].type = FieldType::Long;
        layout.fields[0].validationRule = "Between 1 And 10";
        layout.fields[0].validationText = "Between one and ten, please.";
        layout.fields[1].size = 10;
        layout.fields[1].validationRule = "\"A\" Or \"B\"";
        layout.fields[1].required = true;
        layout.fields[1].defaultValue = "\"A\"";
        layout.fields[2].defaultValue = "=Date()";
        layout.fields[4].size = 10;
        layout.fields[4].validationRule = "DLookup(1)";
        layout.validationRule = "[From] <= [Till]";
        driver_.open(files_, request)->createTable(layout);
    }
    void TearDown() override { host().clock = nullptr; }
    static int errorOf(const std::function<void()>& step, std::string* words = nullptr)
    {
        try {
            step();
        } catch (const EngineError& error) {
            if (words)
                *words = error.what();
            return error.number();
        }
        return 0;
    }
    struct Noon final : Clock {
        LocalTime now() const override { return {2001, 2, 3, 12, 0, 0}; }
        LocalTime local(std::int64_t) const override { return now(); }
    };
    static constexpr const char* kFile = "C:\\RULES.MDB";
    Noon clock_;
    MemoryFileSystem files_;
    jet::JetDriver driver_;
};

TEST_P(RuledTable, rulesRequiredFieldsAndDefaultsAreHeldTo)
{
    Workspace workspace(files_);
    Database db = workspace.OpenDatabase(kFile, false, false, "");
    Recordset rs = db.OpenRecordset("Ruled", RecordsetType::Table);
    std::string words;
    rs.AddNew();
    EXPECT_EQ(rs.value(1).asText(), "A");
    EXPECT_EQ(rs.value(2).asDate(), 36925) << "2001-02-03";
    rs.setValue(0, ValueView::integer(11));
    EXPECT_EQ(errorOf([&] { rs.Update(); }, &words), 3316);
    EXPECT_EQ(words, "Between one and ten, please.");
    rs.setValue(0, ValueView::integer(10));
    rs.setValue(1, ValueView::text("c"));
    EXPECT_EQ(errorOf([&] { rs.Update(); }, &words), 3317);
    EXPECT_NE(words.find("Kind"), words.npos);
    rs.setValue(1, ValueView::null());
    EXPECT_EQ(errorOf([&] { rs.Update(); }), 3314);
    rs.setValue(1, ValueView::text("b"));
    rs.setValue(3, ValueView::date(36924));
    EXPECT_EQ(errorOf([&] { rs.Update(); }), 3317) << "ends before it begins";
    rs.setValue(3, ValueView::date(36926));
    rs.setValue(4, ValueView::text("anything"));
    EXPECT_EQ(errorOf([&] { rs.Update(); }), 0);
    EXPECT_EQ(rs.RecordCount(), 1);

    rs.MoveFirst();
    rs.Edit();
    rs.setValue(3, ValueView::date(1));
    EXPECT_EQ(errorOf([&] { rs.Update(); }), 3317) << "the other date is the record's";
    rs.setValue(2, ValueView::date(0));
    EXPECT_EQ(errorOf([&] { rs.Update(); }), 0);
}

TEST_P(RuledTable, ruleThatIsNotEnforcedIsTold)
{
    Workspace workspace(files_);
    Database db = workspace.OpenDatabase(kFile, false, true, "");
    std::vector<std::string> told;
    for (const auto& [fact, value] : db.info("Ruled"))
        if (fact == "Rule not enforced")
            told.push_back(value);
    EXPECT_EQ(told, std::vector<std::string>{"Odd: DLookup(1)"});
}

INSTANTIATE_TEST_SUITE_P(Jet, RuledTable, ::testing::Values(3, 4));

}  // namespace
}  // namespace velnor::model
