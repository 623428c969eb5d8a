// access/formats/xbase/index_key.h - the key of a record in one index.
//
// Keys are made as order keys: bytes that compare as the index orders its records. What an MDX or
// NDX file holds instead (doubles, decimal digits) is turned by its node store; these functions do
// that both ways.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "access/formats/xbase/index_expression.h"
#include "access/formats/xbase/index_node.h"
#include "access/value.h"

namespace velnor::xbase {

enum class KeyCoding : std::uint8_t {
    Text,
    Double,   ///< eight bytes, big-endian, made to compare as bytes
    LateDay,  ///< as Double; no day comes last
    Integer,  ///< four bytes, sign turned
    Money,    ///< eight bytes, sign turned
    Truth,    ///< T or F
    Decimal,  ///< twelve bytes: sign, exponent, twenty digits
};

struct KeyForm {
    KeyCoding coding = KeyCoding::Text;
    std::uint32_t length = 0;  ///< in all
    bool nullByte = false;     ///< one byte in front tells Null
    bool turned = false;       ///< all bits turned: a tree that falls in the file rises here
    bool leavesOutDeleted = false;
};

class KeyMaker {
public:
    KeyMaker(IndexExpression key, std::optional<IndexExpression> condition, const KeyForm& form);

    const KeyForm& form() const { return form_; }
    /// False when the record is not to be in the index. `key`: form().length bytes.
    bool make(const std::uint8_t* record, std::uint32_t recordNumber, std::uint8_t* key) const;
    /// The key alone, whatever the condition says.
    void makeKey(const std::uint8_t* record, std::uint32_t recordNumber, std::uint8_t* key) const;
    /// Whether marking a record as deleted may change its place.
    bool caresForDeletion() const;

private:
    IndexExpression key_;
    std::optional<IndexExpression> condition_;
    KeyForm form_;
};

/// The coding and length that CDX files have for keys of an expression.
KeyForm foxKeyForm(const IndexExpression& expression);
/// Those of MDX and NDX; 3018 for keys that they cannot have.
KeyForm mdxKeyForm(const IndexExpression& expression);
KeyForm ndxKeyForm(const IndexExpression& expression);

void putOrderedDouble(double value, std::uint8_t* eight);
double orderedDouble(const std::uint8_t* eight);

/// A number as an order key of twelve bytes, and such a key as MDX files hold it, both ways.
void putOrderedDecimal(double value, std::uint8_t* twelve);
void decimalToFile(const std::uint8_t* order, std::uint8_t* file);
void decimalFromFile(const std::uint8_t* file, std::uint8_t* order);

}  // namespace velnor::xbase
