// access/model/edit_buffer.h - the record that AddNew or Edit prepares, before Update writes it.
//
// Values and their texts keep their room from record to record: after the first few records of a
// copy no memory is asked for.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "access/formats/driver.h"
#include "access/model/expression.h"

namespace velnor::model {

class EditBuffer {
public:
    explicit EditBuffer(const TableLayout& layout);

    enum class Mode : std::uint8_t { None, Adding, Editing };
    Mode mode() const { return mode_; }
    void beginAdding();
    void beginEditing();
    void end() { mode_ = Mode::None; }

    /// Whether the value of field n is here, rather than in the record.
    bool holds(std::size_t n) const
    {
        return mode_ == Mode::Adding || (mode_ == Mode::Editing && touched_[n]);
    }
    ValueView value(std::size_t n) const { return values_[n].view(); }
    /// 3421, 3163; the field then keeps what it had.
    void assign(std::size_t n, ValueView v);

    /// 3314 Null in a required field, 3058 in a key that needs a value, 3315 an empty text where
    /// none may be, 3316 or 3317 what a validation rule refuses. When editing, only assigned fields
    /// are looked at, and the rule of the table; `record` gives the fields that are not here.
    void check(const FieldReader& record) const;
    std::span<const ValueView> values();     ///< of all fields
    std::span<const FieldChange> changes();  ///< of the assigned ones

private:
    struct Rule {
        std::size_t field;
        EngineErrorNumber error;
    };
    /// A validation rule that is understood.
    struct Validation {
        int field;  // -1: of the table
        Expression rule;
    };
    void addValidation(int field, const std::string& rule);
    void addDefault(std::size_t field);
    bool breaks(const Rule& rule) const;
    void validate(const FieldReader& record) const;
    [[noreturn]] void refuse(const Validation& validation) const;

    const TableLayout& layout_;
    Mode mode_ = Mode::None;
    std::vector<Value> values_;
    std::vector<std::uint8_t> touched_;
    std::vector<Rule> rules_;
    std::vector<Validation> validations_;
    std::vector<std::pair<std::size_t, Value>> defaults_;
    std::vector<std::pair<std::size_t, Expression>> computedDefaults_;  // of today, and the like
    std::vector<ValueView> views_;
    std::vector<FieldChange> changes_;
    std::string scratch_;
};

/// The validation rules of a table that are not understood, and so not enforced: "field: rule".
std::vector<std::string> rulesNotEnforced(const TableLayout& layout);

}  // namespace velnor::model
