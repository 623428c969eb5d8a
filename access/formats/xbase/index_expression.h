// access/formats/xbase/index_expression.h - key expressions and FOR conditions of index files.
//
// An expression is parsed once and then evaluated on record images without any heap: each part has
// a place for its text, as wide as it can get, from the time of parsing on.
// Texts are bytes in the table's code page; dates are Julian day numbers, 0 for none.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "access/formats/xbase/dbf_header.h"

namespace velnor::xbase {

enum class ExpressionType : std::uint8_t {
    Text,
    Number,
    Integer,  ///< a field of 4 bytes, by itself
    Money,    ///< a field of 1/10,000, by itself
    Date,
    Moment,
    Logical,
};

struct ExpressionValue {
    ExpressionType type = ExpressionType::Number;
    bool truth = false;
    std::uint32_t length = 0;            ///< of the text
    const std::uint8_t* text = nullptr;  ///< good until the next evaluation
    double number = 0;                   ///< of Number, Date, Moment
    std::int64_t whole = 0;              ///< of Integer and Money
};

struct ExpressionPart;

class IndexExpression {
public:
    /// `utf8`: the text as people read it. 3018 with words when it is not understood.
    /// The header must outlive the expression.
    IndexExpression(std::string_view utf8, const DbfHeader& header);
    IndexExpression(IndexExpression&&) noexcept;
    ~IndexExpression();

    ExpressionType type() const;
    /// The widest that its text can get.
    std::uint32_t width() const;
    /// The field when the expression is nothing else, else null.
    const DbfField* plainField() const;
    bool namesDeleted() const { return namesDeleted_; }

    ExpressionValue evaluate(const std::uint8_t* record, std::uint32_t recordNumber) const;
    /// Whether any field in it that may be Null by its flag is Null.
    bool hasNull(const std::uint8_t* record) const;

private:
    friend class ExpressionBuilder;
    const DbfHeader* header_;
    std::vector<ExpressionPart> parts_;  // the root is the last
    std::vector<std::size_t> fields_;
    std::unique_ptr<std::uint8_t[]> texts_;
    std::unique_ptr<std::uint8_t[]> upper_, lower_;  // tables of 256, where they are needed
    bool namesDeleted_ = false;
};

/// The field that a name in an expression means: by its whole name, by its first ten characters, by
/// its first eight when only one field has them. -1 when there is none.
int fieldOfName(const DbfHeader& header, std::string_view name);

/// The fields that an expression names, in order, without repeats. Empty when it names none.
std::vector<std::size_t> fieldsOfExpression(std::string_view utf8, const DbfHeader& header);

/// The expression for an index over these fields: the bare name of one, texts joined with "+" for
/// several. 3018 when a field cannot be a key.
std::string expressionOfFields(const std::vector<std::size_t>& fields, const DbfHeader& header);

}  // namespace velnor::xbase
