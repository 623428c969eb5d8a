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
        if (Value preset = defaultOf(field); !preset.isNull())
            defaults_.emplace_back(i, std::move(preset));
        for (const IndexDef& index : layout.indexes)
            for (const IndexFieldDef& key : index.fields)
                if ((index.primary || index.required) && !field.autonumber &&
                    paths::sameName(key.name, field.name))
                    rules_.push_back({i, EngineErrorNumber::NullKey});
    }
}

void EditBuffer::beginAdding()
{
    for (Value& value : values_)
        value.clear();
    for (const auto& [field, preset] : defaults_)
        values_[field].assign(preset.view());
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

void EditBuffer::check() const
{
    for (const Rule& rule : rules_)
        if (breaks(rule))
            throw EngineError(rule.error, wordsFor(rule.error) + layout_.fields[rule.field].name +
                                              " of table " + layout_.name + ".");
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

}  // namespace velnor::model
