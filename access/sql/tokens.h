// access/sql/tokens.h - a statement cut into words, names, constants and signs.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace velnor::sql {

enum class TokenKind : std::uint8_t {
    End,
    Word,    ///< a keyword, or a name without brackets
    Name,    ///< [a name in brackets] or `so`
    Number,  ///< 12, 1.5, .5, 1e5
    Text,    ///< 'text' or "text", doubled quotes made single
    Date,    ///< #1/31/2003#: what stands between the signs
    Sign,    ///< = <> <= >= < > + - * / \ ^ & ( ) , . ! ;
};

struct Token {
    TokenKind kind = TokenKind::End;
    std::string text;
    std::size_t at = 0;   ///< first byte in the statement
    std::size_t end = 0;  ///< behind the last one

    bool isSign(std::string_view sign) const { return kind == TokenKind::Sign && text == sign; }
    /// A word without brackets, blind to case; `keyword` in capitals.
    bool isWord(std::string_view keyword) const;
};

/// The last token is End. 3075 for a text, name or date without its end and for other signs.
std::vector<Token> cutStatement(std::string_view statement);

/// "ABC" for "aBc": ASCII letters only, for keywords and names of functions.
std::string capitals(std::string_view word);

/// Words that name nothing unless they stand in brackets.
bool isReservedWord(std::string_view word);

}  // namespace velnor::sql
