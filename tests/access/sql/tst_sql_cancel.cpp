// A statement that is stopped: how many records it still looks at, or gives, after somebody asked
// it to stop. Counted, not timed, so that a slow machine cannot make it fail or pass.
#include <gtest/gtest.h>

#include "access/sql/statement.h"

using namespace velnor;

namespace {

constexpr std::int64_t kRecords = 60000;
constexpr std::int64_t kMostAfter = 1000;  // records: some milliseconds of work
constexpr std::size_t kTextBytes = 60;

/// What the cursors of a test share: how far they came, and when somebody wants the end of it.
struct Course {
    std::int64_t handedOut = 0;
    std::int64_t stopAt = -1;  ///< the record with which the wish comes; -1: never
    std::int64_t wishedAt = -1;

    void count()
    {
        if (++handedOut == stopAt)
            wishedAt = handedOut;
    }
    bool wished() const { return wishedAt >= 0; }
};

/// N: whole numbers without an order. T: texts like them.
class Records final : public RowCursor {
public:
    explicit Records(Course& course) : course_(course) {}
    bool first() override { return stand(1); }
    bool last() override { return stand(kRecords); }
    bool next() override { return stand(at_ + 1); }
    bool previous() override { return stand(at_ - 1); }
    bool moveTo(RowId row) override { return stand(static_cast<std::int64_t>(row)); }
    RowId row() const override { return static_cast<RowId>(at_); }
    ValueView field(int n) override
    {
        const std::int64_t number = at_ * 7919 % kRecords;
        if (n == 0)
            return ValueView::integer(number);
        text_ = std::to_string(number);
        text_.resize(kTextBytes, 'x');
        return ValueView::text(text_);
    }

private:
    bool stand(std::int64_t n)
    {
        at_ = n;
        const bool there = n >= 1 && n <= kRecords;
        if (there)
            course_.count();
        return there;
    }
    Course& course_;
    std::int64_t at_ = 0;
    std::string text_;
};

class Source final : public sql::SourceTable {
public:
    explicit Source(Course& course) : course_(course)
    {
        layout_.name = "R";
        layout_.fields.resize(2);
        layout_.fields[0].name = "N";
        layout_.fields[0].type = FieldType::Long;
        layout_.fields[1].name = "T";
        layout_.fields[1].size = static_cast<std::int32_t>(kTextBytes);
    }
    const TableLayout& layout() const override { return layout_; }
    std::unique_ptr<RowCursor> cursor(std::optional<std::string_view>) override
    {
        return std::make_unique<Records>(course_);
    }
    std::int64_t recordCount() override { return kRecords; }

private:
    Course& course_;
    TableLayout layout_;
};

class OneTable final : public sql::Tables {
public:
    explicit OneTable(Course& course) : course_(course) {}
    std::shared_ptr<sql::SourceTable> find(std::string_view, std::string_view) override
    {
        return std::make_shared<Source>(course_);
    }
    bool hasDatabase(std::string_view) const override { return false; }

private:
    Course& course_;
};

/// Runs a statement until it ends; the records of its answer. -1 when it said that it was stopped.
std::int64_t run(const std::string& statement, Course& course)
{
    OneTable tables(course);
    const sql::Translation made = sql::translate(statement, tables);
    sql::RunOptions options;
    options.cancelled = [&course] { return course.wished(); };
    try {
        sql::Statement answer(made, sql::Statement::Gives::Values, options);
        std::int64_t given = 0;
        while (answer.step())
            ++given;
        return given;
    } catch (const EngineError& error) {
        EXPECT_EQ(error.code(), EngineErrorNumber::Cancelled) << statement;
        return -1;
    }
}

}  // namespace

class SqlCancel : public ::testing::TestWithParam<const char*> {};

TEST_P(SqlCancel, fewRecordsAreLookedAtAfterIt)
{
    Course whole;
    ASSERT_GT(run(GetParam(), whole), 0);
    ASSERT_GE(whole.handedOut, kRecords);
    for (const std::int64_t part : {1, 3, 10, 13, 19}) {
        Course course;
        course.stopAt = whole.handedOut * part / 20 + 1;
        EXPECT_EQ(run(GetParam(), course), -1) << "at record " << course.stopAt;
        EXPECT_LE(course.handedOut - course.wishedAt, kMostAfter) << "at record " << course.stopAt;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Statements, SqlCancel,
    ::testing::Values("SELECT N, T FROM R ORDER BY T & '', N DESC", "SELECT T FROM R ORDER BY N",
                      "SELECT T, Count(*), Sum(N) FROM R GROUP BY T",
                      "SELECT Left(T, 3), Count(*) FROM R GROUP BY Left(T, 3)",
                      "SELECT DISTINCT T FROM R",
                      "SELECT Count(*) FROM R AS a INNER JOIN R AS b ON a.N = b.N",
                      "SELECT Max(N) FROM R WHERE T LIKE '*7x*'"));

// The wish comes when all records are sorted already: the answer ends soon.
TEST(SqlCancelAnswer, fewRecordsOfASortedAnswerAreGivenAfterIt)
{
    for (const std::int64_t begin : {std::int64_t{1}, kRecords / 2}) {
        Course course;
        OneTable tables(course);
        const sql::Translation made =
            sql::translate("SELECT N, T FROM R ORDER BY T & '', N", tables);
        sql::RunOptions options;
        options.cancelled = [&course] { return course.wished(); };
        sql::Statement answer(made, sql::Statement::Gives::Values, options);
        std::int64_t given = 0, after = 0;
        try {
            while (answer.step()) {
                if (++given == begin)
                    course.wishedAt = course.handedOut;
                after += course.wished();
            }
            FAIL() << "all " << given << " records were given";
        } catch (const EngineError& error) {
            EXPECT_EQ(error.code(), EngineErrorNumber::Cancelled);
        }
        EXPECT_LE(after, kMostAfter);
    }
}
