#include "access/model/edit_buffer.h"

#include <algorithm>

#include "access/model/coercion.h"
#include "platform/paths.h"

namespace velnor::model {
namespace {

std::string wordsFor(EngineErrorNumber error)
{
    switch (error) {
    case EngineErrorNumber::NullKey:
        return "A key cannot be Null: field ";
    case EngineErrorNumber::EmptyTextNotAllowed:
        return "An empty text is not allowed in field ";
    default:
        return "A value is required in field ";
    }
}

}  // namespace

EditBuffer::EditBuffer(const TableLayout& layout)
    : layout_(layout), values_(layout.fields.size()), touched_(layout.fields.size()),
      views_(layout.fields.size())
{
    changes_.reserve(layout.fields.size());
    for (std::size_t i = 0; i < layout.fields.size(); ++i) {
        const FieldDef& field = layout.fields[i];
        if (field.required && !field.autonumber)
            rules_.push_back({i, EngineErrorNumber::FieldRequired});
        const ValueKind kind = valueKindOf(field.type);
        if (!field.allowZeroLength && kind == ValueKind::Text)
            rules_.push_back({i, EngineErrorNumber::EmptyTextNotAllowed});
        addDefault(i);
        addValidation(static_cast<int>(i), field.validationRule);
        for (const IndexDef& index : layout.indexes)
            for (const IndexFieldDef& key : index.fields)
                if ((index.primary || index.required) && !field.autonumber &&
                    paths::sameName(key.name, field.name))
                    rules_.push_back({i, EngineErrorNumber::NullKey});
    }
    addValidation(-1, layout.validationRule);
}

void EditBuffer::addValidation(int field, const std::string& rule)
{
    if (rule.empty())
        return;
    if (auto understood = Expression::parse(rule, layout_.fields, field))
        validations_.push_back({field, std::move(*understood)});
}

/// A default is a constant, or asked for anew for each record.
void EditBuffer::addDefault(std::size_t n)
{
    const FieldDef& field = layout_.fields[n];
    if (Value preset = defaultOf(field); !preset.isNull())
        defaults_.emplace_back(n, std::move(preset));
    else if (!field.defaultValue.empty() && !field.autonumber)
        if (auto computed = Expression::parse(field.defaultValue, {}, -1))
            computedDefaults_.emplace_back(n, std::move(*computed));
}

void EditBuffer::beginAdding()
{
    for (Value& value : values_)
        value.clear();
    for (const auto& [field, preset] : defaults_)
        values_[field].assign(preset.view());
    for (const auto& [field, computed] : computedDefaults_) {
        const Operand value = computed.evaluate([](int) { return ValueView::null(); });
        try {
            if (value.kind == Operand::Kind::Number)
                assign(field, ValueView::real(value.number));
            else if (value.kind == Operand::Kind::Text)
                assign(field, ValueView::text(value.text));
        } catch (const EngineError&) {
            values_[field].clear();  // a default that does not fit its own field counts as none
        }
    }
    mode_ = Mode::Adding;
}

void EditBuffer::beginEditing()
{
    std::fill(touched_.begin(), touched_.end(), std::uint8_t{0});
    mode_ = Mode::Editing;
}

void EditBuffer::assign(std::size_t n, ValueView v)
{
    v = coerce(layout_.fields[n], v, scratch_);
    values_[n].assign(v);
    touched_[n] = 1;
}

bool EditBuffer::breaks(const Rule& rule) const
{
    if (!holds(rule.field))
        return false;
    const ValueView v = values_[rule.field].view();
    if (rule.error == EngineErrorNumber::EmptyTextNotAllowed)
        return v.kind() == ValueKind::Text && v.asText().empty();
    return v.isNull();
}

void EditBuffer::check(const FieldReader& record) const
{
    for (const Rule& rule : rules_)
        if (breaks(rule))
            throw EngineError(rule.error, wordsFor(rule.error) + layout_.fields[rule.field].name +
                                              " of table " + layout_.name + ".");
    if (!validations_.empty())
        validate(record);
}

void EditBuffer::validate(const FieldReader& record) const
{
    const FieldReader fields = [&](int n) {
        const auto at = static_cast<std::size_t>(n);
        return holds(at) ? value(at) : record(n);
    };
    for (const Validation& validation : validations_)
        if ((validation.field < 0 || holds(static_cast<std::size_t>(validation.field))) &&
            validation.rule.refuses(fields))
            refuse(validation);
}

void EditBuffer::refuse(const Validation& validation) const
{
    const bool ofTable = validation.field < 0;
    const FieldDef* field =
        ofTable ? nullptr : &layout_.fields[static_cast<std::size_t>(validation.field)];
    const std::string& words = ofTable ? layout_.validationText : field->validationText;
    if (!words.empty())
        throw EngineError(EngineErrorNumber::ValidationFailed, words);
    throw EngineError(EngineErrorNumber::ValueRefused,
                      "The rule \"" + (ofTable ? layout_.validationRule : field->validationRule) +
                          "\" of " + (ofTable ? "table " + layout_.name : "field " + field->name) +
                          " does not allow this.");
}

std::span<const ValueView> EditBuffer::values()
{
    for (std::size_t i = 0; i < values_.size(); ++i)
        views_[i] = values_[i].view();
    return views_;
}

std::span<const FieldChange> EditBuffer::changes()
{
    changes_.clear();
    for (std::size_t i = 0; i < values_.size(); ++i)
        if (touched_[i])
            changes_.push_back({static_cast<int>(i), values_[i].view()});
    return changes_;
}

std::vector<std::string> rulesNotEnforced(const TableLayout& layout)
{
    std::vector<std::string> rules;
    for (std::size_t i = 0; i < layout.fields.size(); ++i) {
        const FieldDef& field = layout.fields[i];
        if (!field.validationRule.empty() &&
            !Expression::parse(field.validationRule, layout.fields, static_cast<int>(i)))
            rules.push_back(field.name + ": " + field.validationRule);
    }
    if (!layout.validationRule.empty() &&
        !Expression::parse(layout.validationRule, layout.fields, -1))
        rules.push_back(layout.name + ": " + layout.validationRule);
    return rules;
}

}  // namespace velnor::model
