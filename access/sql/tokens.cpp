#include "access/sql/tokens.h"

#include <algorithm>
#include <array>

#include "access/sql/sql_error.h"

namespace velnor::sql {
namespace {

constexpr std::array<std::string_view, 34> kReserved{
    "ALL",   "AND",   "AS",     "ASC",   "BETWEEN", "BY",    "CROSS", "DESC",  "DISTINCT",
    "EQV",   "FROM",  "FULL",   "GROUP", "HAVING",  "IMP",   "IN",    "INNER", "IS",
    "JOIN",  "LEFT",  "LIKE",   "MOD",   "NOT",     "NULL",  "ON",    "OR",    "ORDER",
    "OUTER", "RIGHT", "SELECT", "TOP",   "UNION",   "WHERE", "XOR",
};

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool beginsWord(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' ||
           static_cast<unsigned char>(c) >= 0x80;
}

bool continuesWord(char c)
{
    return beginsWord(c) || isDigit(c) || c == '$';
}

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

class Cutter {
public:
    explicit Cutter(std::string_view statement) : text_(statement) {}

    std::vector<Token> cut()
    {
        std::vector<Token> tokens;
        do {
            while (at_ < text_.size() && isBlank(text_[at_]))
                ++at_;
            tokens.push_back(next());
            tokens.back().end = at_;
        } while (tokens.back().kind != TokenKind::End);
        return tokens;
    }

private:
    Token next()
    {
        Token token;
        token.at = at_;
        if (at_ >= text_.size())
            return token;
        const char c = text_[at_];
        const char after = at_ + 1 < text_.size() ? text_[at_ + 1] : '\0';
        if (beginsWord(c))
            takeWord(token);
        else if (isDigit(c) || (c == '.' && isDigit(after)))
            takeNumber(token);
        else if (c == '\'' || c == '"')
            takeQuoted(token, TokenKind::Text, c, "a text without its closing quote");
        else if (c == '[')
            takeBetween(token, TokenKind::Name, ']', "a name without its closing bracket");
        else if (c == '`')
            takeBetween(token, TokenKind::Name, '`', "a name without its closing mark");
        else if (c == '#')
            takeBetween(token, TokenKind::Date, '#', "a date without its closing sign");
        else
            takeSign(token, c, after);
        return token;
    }

    void takeWord(Token& token)
    {
        token.kind = TokenKind::Word;
        while (at_ < text_.size() && continuesWord(text_[at_]))
            token.text += text_[at_++];
    }

    void takeDigits(Token& token)
    {
        while (at_ < text_.size() && isDigit(text_[at_]))
            token.text += text_[at_++];
    }

    void takeNumber(Token& token)
    {
        token.kind = TokenKind::Number;
        takeDigits(token);
        if (at_ < text_.size() && text_[at_] == '.') {
            token.text += text_[at_++];
            takeDigits(token);
        }
        if (at_ < text_.size() && (text_[at_] == 'e' || text_[at_] == 'E')) {
            std::size_t digits = at_ + 1;
            if (digits < text_.size() && (text_[digits] == '+' || text_[digits] == '-'))
                ++digits;
            if (digits < text_.size() && isDigit(text_[digits])) {
                token.text.append(text_.substr(at_, digits - at_));
                at_ = digits;
                takeDigits(token);
            }
        }
        if (at_ < text_.size() && beginsWord(text_[at_]))
            refuse("a number that goes on with letters", token.at);
    }

    void takeQuoted(Token& token, TokenKind kind, char quote, const char* what)
    {
        token.kind = kind;
        for (++at_; at_ < text_.size(); ++at_) {
            if (text_[at_] == quote) {
                if (at_ + 1 >= text_.size() || text_[at_ + 1] != quote) {
                    ++at_;
                    return;
                }
                ++at_;
            }
            token.text += text_[at_];
        }
        refuse(what, token.at);
    }

    void takeBetween(Token& token, TokenKind kind, char end, const char* what)
    {
        token.kind = kind;
        const std::size_t close = text_.find(end, at_ + 1);
        if (close == text_.npos)
            refuse(what, token.at);
        token.text = text_.substr(at_ + 1, close - at_ - 1);
        at_ = close + 1;
    }

    void takeSign(Token& token, char c, char after)
    {
        token.kind = TokenKind::Sign;
        token.text = c;
        const bool two = (c == '<' && (after == '>' || after == '=')) || (c == '>' && after == '=');
        if (two)
            token.text += after;
        else if (std::string_view("=<>+-*/\\^&(),.!;").find(c) == std::string_view::npos)
            refuse("a sign that does not belong there", token.at);
        at_ += token.text.size();
    }

    [[noreturn]] void refuse(const char* what, std::size_t at) const
    {
        fail(EngineErrorNumber::SyntaxError, std::string("Syntax error: ") + what, text_, at);
    }

    std::string_view text_;
    std::size_t at_ = 0;
};

}  // namespace

bool Token::isWord(std::string_view keyword) const
{
    return kind == TokenKind::Word && text.size() == keyword.size() && capitals(text) == keyword;
}

std::vector<Token> cutStatement(std::string_view statement)
{
    return Cutter(statement).cut();
}

bool isReservedWord(std::string_view word)
{
    return std::binary_search(kReserved.begin(), kReserved.end(), capitals(word));
}

std::string capitals(std::string_view word)
{
    std::string made(word);
    for (char& c : made)
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
    return made;
}

}  // namespace velnor::sql
