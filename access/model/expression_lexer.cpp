#include "access/model/expression_lexer.h"

#include <cctype>

#include "access/value_text.h"

namespace velnor::model {
namespace {

bool wordLetter(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_' ||
           static_cast<unsigned char>(c) >= 0x80;
}

}  // namespace

/// The text up to a closing character, which stands for itself when doubled.
std::string Lexer::until(char end, bool doubled)
{
    std::string plain;
    for (++place_;; ++place_) {
        if (place_ >= text_.size())
            throw NotUnderstood{};
        if (text_[place_] == end) {
            if (!doubled || at(1) != end)
                break;
            ++place_;
        }
        plain += text_[place_];
    }
    ++place_;
    return plain;
}

Token Lexer::word()
{
    Token token{Token::Kind::Word, {}, 0};
    while (wordLetter(at()))
        token.text += text_[place_++];
    return token;
}

Token Lexer::number()
{
    std::size_t end = place_;
    const auto digits = [&] {
        while (end < text_.size() && std::isdigit(static_cast<unsigned char>(text_[end])))
            ++end;
    };
    digits();
    if (end < text_.size() && text_[end] == '.') {
        ++end;
        digits();
    }
    if (end + 1 < text_.size() && (text_[end] == 'e' || text_[end] == 'E') &&
        (std::isdigit(static_cast<unsigned char>(text_[end + 1])) ||
         ((text_[end + 1] == '-' || text_[end + 1] == '+') && end + 2 < text_.size() &&
          std::isdigit(static_cast<unsigned char>(text_[end + 2]))))) {
        end += 2;
        digits();
    }
    const auto value = parseReal(text_.substr(place_, end - place_));
    if (!value)
        throw NotUnderstood{};
    place_ = end;
    return {Token::Kind::Number, {}, *value};
}

Token Lexer::sign()
{
    for (const char* two : {"<=", ">=", "<>", "=<", "=>"})
        if (at() == two[0] && at(1) == two[1]) {
            place_ += 2;
            return {Token::Kind::Sign, two, 0};
        }
    return {Token::Kind::Sign, std::string(1, text_[place_++]), 0};
}

Token Lexer::next()
{
    while (place_ < text_.size() && std::isspace(static_cast<unsigned char>(text_[place_])))
        ++place_;
    const char c = at();
    if (place_ >= text_.size())
        return {};
    if (c == '"' || c == '\'')
        return {Token::Kind::Text, until(c, true), 0};
    if (c == '[')
        return {Token::Kind::Name, until(']', false), 0};
    if (c == '#') {
        const auto date = parseDate(until('#', false));
        if (!date)
            throw NotUnderstood{};
        return {Token::Kind::Date, {}, *date};
    }
    if (std::isdigit(static_cast<unsigned char>(c)) ||
        (c == '.' && std::isdigit(static_cast<unsigned char>(at(1)))))
        return number();
    return wordLetter(c) ? word() : sign();
}

}  // namespace velnor::model
