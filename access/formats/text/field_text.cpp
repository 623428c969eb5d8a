#include "access/formats/text/field_text.h"

#include "access/engine_error.h"
#include "access/formats/text/text_value.h"
#include "access/value_text.h"

namespace velnor::text {
namespace {

bool needsQuotes(std::string_view text, const TextForm& form)
{
    if (text.empty() || text.front() == ' ' || text.back() == ' ')
        return true;
    const char special[] = {'\r', '\n', form.delimiter ? form.delimiter : '\n',
                            form.quote ? form.quote : '\n'};
    return text.find_first_of(std::string_view(special, sizeof special)) != text.npos;
}

void appendQuoted(std::string& out, std::string_view text, char quote)
{
    out += quote;
    for (const char c : text) {
        out += c;
        if (c == quote)
            out += c;
    }
    out += quote;
}

[[noreturn]] void cannotHold(const FieldDef& field)
{
    throw EngineError(EngineErrorNumber::TypeConversion,
                      "The file has no quotes around texts: the value of field " + field.name +
                          " has a delimiter, a line end or nothing in it.");
}

}  // namespace

void appendField(std::string& out, const FieldDef& field, ValueView value, const TextForm& form)
{
    if (value.isNull())
        return;
    const std::size_t start = out.size();
    appendValue(out, field.type, value, form);
    const std::string_view text = std::string_view(out).substr(start);
    const bool isText = value.kind() == ValueKind::Text;
    const bool special = needsQuotes(text, form);
    if (!special && !(isText && kindsOf(text, form) != 0))
        return;
    if (!form.quote) {
        if (text.empty() || text.find_first_of("\r\n") != text.npos ||
            (form.delimiter && text.find(form.delimiter) != text.npos))
            cannotHold(field);
        return;
    }
    const std::string plain(text);
    out.resize(start);
    appendQuoted(out, plain, form.quote);
}

void appendFixedField(std::string& out, const FieldDef& field, int width, ValueView value,
                      const TextForm& form)
{
    const std::size_t start = out.size();
    if (!value.isNull())
        appendValue(out, field.type, value, form);
    const std::string_view text = std::string_view(out).substr(start);
    if (text.find_first_of("\r\n") != text.npos)
        throw EngineError(EngineErrorNumber::TypeConversion,
                          "A column of fixed width holds no line end: field " + field.name + ".");
    const std::size_t length = textLength(text), room = static_cast<std::size_t>(width);
    if (length > room)
        throw EngineError(EngineErrorNumber::ValueTooLong,
                          "The value is too long for field " + field.name + ".");
    const bool number = !value.isNull() && value.kind() != ValueKind::Text &&
                        value.kind() != ValueKind::Date && value.kind() != ValueKind::Boolean;
    out.insert(number ? start : out.size(), room - length, ' ');
}

std::string headerLine(const std::vector<FieldDef>& fields, const TextForm& form)
{
    std::string line;
    for (const FieldDef& field : fields) {
        if (&field != &fields.front() && form.delimiter)
            line += form.delimiter;
        if (needsQuotes(field.name, form) && form.quote)
            appendQuoted(line, field.name, form.quote);
        else
            line += field.name;
    }
    return line;
}

}  // namespace velnor::text
