// access/model/expression_lexer.h - the words, signs and constants of an expression.
#pragma once

#include <string>
#include <string_view>

namespace velnor::model {

/// Thrown where a text is not understood; it does not leave the parser.
struct NotUnderstood {};

struct Token {
    enum class Kind { End, Word, Name, Number, Text, Date, Sign };
    Kind kind = Kind::End;
    std::string text;
    double number = 0;
};

class Lexer {
public:
    explicit Lexer(std::string_view text) : text_(text) {}
    Token next();

private:
    char at(std::size_t ahead = 0) const
    {
        return place_ + ahead < text_.size() ? text_[place_ + ahead] : '\0';
    }
    std::string until(char end, bool doubled);
    Token word();
    Token number();
    Token sign();

    std::string_view text_;
    std::size_t place_ = 0;
};

}  // namespace velnor::model
