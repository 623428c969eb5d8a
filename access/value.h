// access/value.h - one value of a field, as a view and as an owned value.
//
// ValueView is what cursors hand out: 24 bytes, no heap. Its text and bytes lie in a page or in the
// cursor's scratch and die when the cursor moves, reads the same field again or is closed.
// Value owns its text and keeps its capacity when it is assigned again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace velnor {

enum class ValueKind : std::uint8_t {
    Null,
    Boolean,
    Integer,   ///< signed, 64 bits
    Currency,  ///< signed, in units of 1/10,000
    Real,      ///< double
    Date,      ///< days since 1899-12-30 as a double; the fraction is the time of day, a positive
               ///< amount also before day 0 (-1.25 is 1899-12-29 06:00)
    Decimal,   ///< 96-bit magnitude, sign, scale 0..28: exact decimal numbers
    Text,      ///< UTF-8
    Bytes,
};

class ValueView {
public:
    constexpr ValueView() = default;  // Null

    static constexpr ValueView null() { return {}; }
    static constexpr ValueView boolean(bool b)
    {
        ValueView v(ValueKind::Boolean);
        v.word_.i = b;
        return v;
    }
    static constexpr ValueView integer(std::int64_t i)
    {
        ValueView v(ValueKind::Integer);
        v.word_.i = i;
        return v;
    }
    static constexpr ValueView currency(std::int64_t tenThousandths)
    {
        ValueView v(ValueKind::Currency);
        v.word_.i = tenThousandths;
        return v;
    }
    static constexpr ValueView real(double d)
    {
        ValueView v(ValueKind::Real);
        v.word_.d = d;
        return v;
    }
    static constexpr ValueView date(double days)
    {
        ValueView v(ValueKind::Date);
        v.word_.d = days;
        return v;
    }
    /// (-1)^negative * (high * 2^64 + low) / 10^scale.
    static constexpr ValueView decimal(bool negative, std::uint32_t high, std::uint64_t low,
                                       std::uint8_t scale)
    {
        ValueView v(ValueKind::Decimal);
        v.word_.u = low;
        v.high_ = high;
        v.scale_ = scale;
        v.negative_ = negative;
        return v;
    }
    static constexpr ValueView text(std::string_view utf8)
    {
        ValueView v(ValueKind::Text);
        v.word_.p = utf8.data();
        v.size_ = utf8.size();
        return v;
    }
    static ValueView bytes(std::span<const std::uint8_t> data)
    {
        ValueView v(ValueKind::Bytes);
        v.word_.p = reinterpret_cast<const char*>(data.data());
        v.size_ = data.size();
        return v;
    }

    constexpr ValueKind kind() const { return kind_; }
    constexpr bool isNull() const { return kind_ == ValueKind::Null; }

    // The parts, each for its kind only; no conversion is made here (see value_text.h).
    constexpr bool asBoolean() const { return word_.i != 0; }
    constexpr std::int64_t asInteger() const { return word_.i; }
    constexpr std::int64_t asCurrency() const { return word_.i; }
    constexpr double asReal() const { return word_.d; }
    constexpr double asDate() const { return word_.d; }
    constexpr bool decimalNegative() const { return negative_; }
    constexpr std::uint8_t decimalScale() const { return scale_; }
    constexpr std::uint64_t decimalLow() const { return word_.u; }
    constexpr std::uint32_t decimalHigh() const { return high_; }
    constexpr std::string_view asText() const { return {word_.p, size_}; }
    std::span<const std::uint8_t> asBytes() const
    {
        return {reinterpret_cast<const std::uint8_t*>(word_.p), size_};
    }

private:
    constexpr explicit ValueView(ValueKind kind) : kind_(kind) {}

    union Word {
        std::int64_t i;
        std::uint64_t u;
        double d;
        const char* p;
    };
    Word word_{.i = 0};
    union {
        std::size_t size_ = 0;
        std::uint32_t high_;
    };
    ValueKind kind_ = ValueKind::Null;
    std::uint8_t scale_ = 0;
    bool negative_ = false;
};
static_assert(sizeof(ValueView) == 24);

class Value {
public:
    Value() = default;
    explicit Value(ValueView v) { assign(v); }
    Value(const Value& other) { assign(other.view()); }
    Value(Value&& other) noexcept = default;
    Value& operator=(const Value& other)
    {
        if (this != &other)
            assign(other.view());
        return *this;
    }
    Value& operator=(Value&& other) noexcept = default;
    ~Value() = default;

    /// Copies what the view shows; the text's capacity is kept. `v` may show this very value.
    void assign(ValueView v);
    void clear() { view_ = ValueView::null(); }
    ValueView view() const;
    bool isNull() const { return view_.isNull(); }

private:
    ValueView view_;     // for Text and Bytes only the kind counts
    std::string store_;
};

}  // namespace velnor
