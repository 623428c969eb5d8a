#include "access/formats/text/text_writer.h"

#include "access/formats/text/field_text.h"

namespace velnor::text {

TextWriter::TextWriter(std::shared_ptr<TextTable> table) : table_(std::move(table))
{
    if (const std::string why = table_->whyNotUpdatable(); !why.empty())
        throw EngineError(EngineErrorNumber::ReadOnly,
                          table_->path() + " cannot be written. " + why);
}

RowId TextWriter::insert(std::span<const ValueView> values)
{
    const std::vector<FieldDef>& fields = table_->fields();
    const TextForm& form = table_->form();
    if (values.size() != fields.size())
        throw EngineError(EngineErrorNumber::InvalidArgument,
                          "A new record needs a value for each field.");
    line_.clear();
    const std::size_t columns = form.fixed ? form.columns.size() : fields.size();
    for (std::size_t i = 0; i < columns; ++i) {
        if (form.fixed) {
            appendFixedField(line_, fields[i], form.columns[i].width, values[i], form);
            continue;
        }
        if (i && form.delimiter)
            line_ += form.delimiter;
        appendField(line_, fields[i], values[i], form);
    }
    return table_->append(line_);
}

void TextWriter::update(RowId, std::span<const FieldChange>)
{
    throw EngineError(EngineErrorNumber::NotSupported,
                      "Records of a text file can be added, not changed.");
}

void TextWriter::remove(RowId)
{
    throw EngineError(EngineErrorNumber::DeletesNotSupported,
                      "Records of a text file can be added, not deleted.");
}

}  // namespace velnor::text
