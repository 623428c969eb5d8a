// access/sql/statement_parser.h - reads a statement and writes it for the statement machine, in one
// pass: FROM is read before the fields in front of it, so that every name has its type at once.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "access/sql/functions.h"
#include "access/sql/name_scope.h"
#include "access/sql/sql_error.h"
#include "access/sql/tokens.h"
#include "access/sql/translation.h"

namespace velnor::sql {

class StatementParser {
public:
    StatementParser(std::string_view statement, Tables& tables);
    Translation parse();

private:
    /// A column named outside of aggregates, for the check against GROUP BY.
    struct NamedColumn {
        std::string sql, name;
        std::size_t at;
    };
    struct Output {
        Expression value;
        std::string name;
        std::size_t firstColumn, endColumn;  ///< in Select::named
        bool asks = false;                   ///< holds a SELECT of its own
    };
    struct Select {
        explicit Select(const NameScope* outer) : scope(outer) {}
        NameScope scope;
        bool distinct = false;
        bool distinctRow = false;
        bool aggregated = false;
        std::optional<double> top;
        bool percent = false;
        std::vector<Output> outputs;
        std::vector<NamedColumn> named;
        std::vector<std::string> groups;
        std::vector<int> groupFields;  ///< -1: no plain field
        std::vector<GroupFunction> functions;
        std::vector<std::string> functionSql;  ///< of each of them
        bool otherFunctions = false;           ///< over more than a field
        std::string from, where, groupBy, having;
    };
    /// What a SELECT, or several with UNION between them, gives.
    struct Query {
        std::string sql;
        std::vector<ScopeColumn> columns;
        std::string orderBy;
    };

    // statement_parser.cpp: the tokens
    const Token& token() const { return tokens_[at_]; }
    bool atWord(std::string_view keyword) const { return token().isWord(keyword); }
    bool atSign(std::string_view sign) const { return token().isSign(sign); }
    bool takeWord(std::string_view keyword);
    bool takeSign(std::string_view sign);
    void needWord(std::string_view keyword);
    void needSign(std::string_view sign);
    bool atSelect() const { return atWord("SELECT"); }
    [[noreturn]] void syntax(const std::string& what) const;
    [[noreturn]] void syntaxAt(const std::string& what, std::size_t at) const;
    [[noreturn]] void mismatch(const std::string& what, std::size_t at) const;
    std::vector<std::string> takeNameParts();
    void enter();
    void leave() { --depth_; }

    // select_parser.cpp: statements
    void parseTop();
    void parseSelectInto(Select& select);
    void readPrefix(Select& select);
    void findFrom();
    void readOutputs(Select& select);
    void addStar(Select& select, const std::vector<std::string>& table, std::size_t at);
    void addOutput(Select& select);
    void nameOutputs(Select& select) const;
    void readGroups(Select& select);
    void checkGroups(const Select& select) const;
    void groupByRecords(Select& select) const;
    std::string readOrder(Select& select, std::vector<std::string>* keys);
    std::string orderItem(Select& select);
    int outputCalled(const Select& select, const std::string& name) const;
    std::string bodyOf(const Select& select, bool exact, const std::string& more) const;
    Query parseQuery(const NameScope* outer);
    Query finishUnion(Select& first);
    std::string limited(const Select& select, const std::string& body,
                        const std::string& order) const;
    void finishTop(Select& select, const std::string& order, const std::vector<std::string>& keys);
    void putRecordsSql(const Select& select, const std::string& more, const std::string& order);

    // group_parser.cpp
    void noteFunction(const FunctionDef& function, const Expression* argument,
                      const std::string& sql);
    std::string furtherColumn(const Select& select, std::string_view sql, bool exact) const;
    std::optional<std::string> groupConditions(const Select& select) const;
    std::optional<std::string> groupOrder(const Select& select, const std::string& order,
                                          const std::vector<std::string>& keys) const;
    void findGrouping(const Select& select, const std::string& order,
                      const std::vector<std::string>& keys);

    // from_parser.cpp
    void readFrom(Select& select);
    std::string readJoined(Select& select);
    std::string readFromItem(Select& select);
    std::string readSubquery(Select& select);
    std::string readTable(Select& select);
    std::string takeAlias();

    // expression_parser.cpp
    Expression parseExpression() { return parseEither(); }
    Expression parseEither();  // OR XOR EQV IMP
    Expression parseBoth();    // AND
    Expression parseNot();
    Expression parseComparison();
    Expression parseJoinText();  // &
    Expression parseSum();
    Expression parseModulo();
    Expression parseWholeDivision();
    Expression parseProduct();
    Expression parseSigned();
    Expression parsePower();
    Expression parsePrimary();
    Expression parseConstant();
    Expression parseParenthesis();
    Expression parseName();
    Expression compare(Expression a, const std::string& op, Expression b);
    Expression parseLike(Expression value, bool negated);
    Expression parseBetween(Expression value, bool negated);
    Expression parseIn(Expression value, bool negated);
    Expression parseIsNull(Expression value);
    Expression scalarOf(const Query& query, std::size_t at) const;
    void needNumber(Expression& e);
    void needTruth(const Expression& e) const;

    // call_parser.cpp
    Expression parseCall(const std::string& name, std::size_t at);
    std::vector<Expression> takeArguments();
    Expression callOf(const FunctionDef& function, std::vector<Expression> arguments,
                      std::size_t at);
    Expression aggregateOf(const FunctionDef& function, std::size_t at);
    Expression chooseOf(const std::string& name, std::vector<Expression> arguments, std::size_t at);
    [[noreturn]] void wrongCount(std::string_view name, std::size_t at) const;

    std::string_view statement_;
    Tables& tables_;
    std::vector<Token> tokens_;
    std::size_t at_ = 0;
    int depth_ = 0;
    int subqueries_ = 0;
    bool inFrom_ = false;
    bool aggregatesAllowed_ = false;
    int inAggregate_ = 0;
    Select* select_ = nullptr;  // whose names are looked up
    Translation made_;
};

}  // namespace velnor::sql
