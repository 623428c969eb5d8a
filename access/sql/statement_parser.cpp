#include "access/sql/statement_parser.h"

namespace velnor::sql {
namespace {

constexpr int kDeepest = 60;  // parentheses, functions and subqueries inside of each other
constexpr std::size_t kLongestStatement = 1u << 20;

}  // namespace

StatementParser::StatementParser(std::string_view statement, Tables& tables)
    : statement_(statement), tables_(tables)
{
    if (statement.size() > kLongestStatement || statement.find('\0') != statement.npos)
        throw EngineError(EngineErrorNumber::SyntaxError, "Syntax error: no such statement.");
    tokens_ = cutStatement(statement);
}

Translation StatementParser::parse()
{
    parseTop();
    takeSign(";");
    if (token().kind != TokenKind::End)
        syntax("an operator is missing");
    return std::move(made_);
}

bool StatementParser::takeWord(std::string_view keyword)
{
    const bool there = atWord(keyword);
    at_ += there;
    return there;
}

bool StatementParser::takeSign(std::string_view sign)
{
    const bool there = atSign(sign);
    at_ += there;
    return there;
}

void StatementParser::needWord(std::string_view keyword)
{
    if (!takeWord(keyword))
        syntax(std::string(keyword) + " is missing");
}

void StatementParser::needSign(std::string_view sign)
{
    if (!takeSign(sign))
        syntax("\"" + std::string(sign) + "\" is missing");
}

void StatementParser::syntax(const std::string& what) const
{
    syntaxAt(what, token().kind == TokenKind::End ? statement_.size() : token().at);
}

void StatementParser::syntaxAt(const std::string& what, std::size_t at) const
{
    fail(inFrom_ ? EngineErrorNumber::SyntaxInFrom : EngineErrorNumber::SyntaxError,
         inFrom_ ? "Syntax error in FROM: " + what : "Syntax error: " + what, statement_, at);
}

void StatementParser::mismatch(const std::string& what, std::size_t at) const
{
    fail(EngineErrorNumber::TypeMismatch, "Values of different types: " + what, statement_, at);
}

void StatementParser::enter()
{
    if (++depth_ > kDeepest)
        syntax("too many parentheses inside of each other");
}

/// A, A.B, A.B.C; "!" stands for ".".
std::vector<std::string> StatementParser::takeNameParts()
{
    std::vector<std::string> parts;
    do {
        const bool name = token().kind == TokenKind::Name || token().kind == TokenKind::Word;
        if (!name)
            syntax("a name is missing");
        parts.push_back(token().text);
        ++at_;
        const bool star = (atSign(".") || atSign("!")) && tokens_[at_ + 1].isSign("*");
        if (star)
            break;
    } while (takeSign(".") || takeSign("!"));
    return parts;
}

bool isSelect(std::string_view source)
{
    const std::size_t first = source.find_first_not_of(" \t\r\n");
    static constexpr std::string_view kSelect = "SELECT";
    if (first == source.npos || source.size() - first <= kSelect.size())
        return false;
    source.remove_prefix(first);
    return capitals(source.substr(0, kSelect.size())) == kSelect &&
           std::string_view(" \t\r\n*[(\"'#").find(source[kSelect.size()]) !=
               std::string_view::npos;
}

Translation translate(std::string_view statement, Tables& tables)
{
    return StatementParser(statement, tables).parse();
}

}  // namespace velnor::sql
