#include "access/formats/text/schema_ini.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "access/engine_error.h"
#include "access/formats/text/encoding.h"
#include "access/storage/replace_file.h"
#include "platform/paths.h"

namespace velnor::text {
namespace {

constexpr std::uint64_t kMostSchemaBytes = 4u << 20;

struct TypeWord {
    std::string_view word;
    FieldType type;
};
constexpr std::array kTypes{
    TypeWord{"Bit", FieldType::Boolean},   TypeWord{"Byte", FieldType::Byte},
    TypeWord{"Short", FieldType::Integer}, TypeWord{"Integer", FieldType::Integer},
    TypeWord{"Long", FieldType::Long},     TypeWord{"Currency", FieldType::Currency},
    TypeWord{"Single", FieldType::Single}, TypeWord{"Double", FieldType::Double},
    TypeWord{"Float", FieldType::Double},  TypeWord{"DateTime", FieldType::Date},
    TypeWord{"Date", FieldType::Date},     TypeWord{"Decimal", FieldType::Decimal},
    TypeWord{"Text", FieldType::Text},     TypeWord{"Char", FieldType::Text},
    TypeWord{"Memo", FieldType::Memo},     TypeWord{"LongChar", FieldType::Memo},
};

std::string_view trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(" \t\r");
    if (first == text.npos)
        return {};
    return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

/// UTF-8 of a line that may be in either character set: each line is looked at by itself.
std::string decoded(std::string_view line)
{
    std::string scratch;
    if (isUtf8(line))
        return std::string(line);
    return std::string(ansiPage().decode(line, scratch));
}

std::string encoded(const std::string& line)
{
    std::string bytes;
    return ansiPage().encode(line, bytes) ? bytes : line;
}

std::string contentOf(FileSystem& files, const std::string& path)
{
    if (!files.fileExists(path))
        return {};
    const auto file = files.open(path, OpenMode::Read);
    if (file->size() > kMostSchemaBytes)
        throw EngineError(EngineErrorNumber::UnexpectedFormat, path + " is too long.");
    std::string text(static_cast<std::size_t>(file->size()), '\0');
    text.resize(
        file->readAt(0, std::span(reinterpret_cast<std::uint8_t*>(text.data()), text.size())));
    if (text.starts_with("\xEF\xBB\xBF"))
        text.erase(0, 3);
    return text;
}

/// Takes the first line, with its end, off a text.
std::string_view takeLine(std::string_view& text)
{
    const std::size_t end = text.find('\n');
    const std::string_view line = text.substr(0, end == text.npos ? text.size() : end + 1);
    text.remove_prefix(line.size());
    return line;
}

bool isSection(std::string_view line, std::string& name)
{
    std::string_view plain = line;
    while (!plain.empty() && plain.back() == '\n')
        plain.remove_suffix(1);
    plain = trimmed(plain);
    if (plain.size() < 2 || plain.front() != '[' || plain.back() != ']')
        return false;
    name = decoded(trimmed(plain.substr(1, plain.size() - 2)));
    return true;
}

/// Where a section's lines stand in the file, with its head; an empty range when there is none.
struct Range {
    std::size_t first = 0, behind = 0;
};
Range sectionRange(std::string_view text, std::string_view fileName)
{
    Range range;
    bool within = false;
    std::size_t at = 0;
    for (std::string_view rest = text; !rest.empty();) {
        const std::string_view line = takeLine(rest);
        std::string name;
        if (isSection(line, name)) {
            if (within)
                return range;
            within = paths::sameName(name, fileName);
            range.first = within ? at : range.first;
        }
        at += line.size();
        range.behind = within ? at : range.behind;
    }
    return range;
}

int numberOf(std::string_view text)
{
    int value = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), value);
    return read.ec == std::errc() && read.ptr == text.data() + text.size() ? value : -1;
}

bool isTrue(std::string_view value)
{
    return paths::sameName(value, "True") || paths::sameName(value, "Yes") || value == "1";
}

/// Takes the next word off, in quotes or up to a blank.
std::string takeWord(std::string_view& text)
{
    text = trimmed(text);
    std::string word;
    if (text.empty() || text.front() != '"') {
        const std::size_t end = std::min(text.size(), text.find_first_of(" \t"));
        word = text.substr(0, end);
        text.remove_prefix(end);
        return word;
    }
    std::size_t at = 1;
    for (; at < text.size(); ++at) {
        if (text[at] == '"' && (at + 1 == text.size() || text[at + 1] != '"'))
            break;
        at += text[at] == '"';
        word += text[at];
    }
    text.remove_prefix(std::min(at + 1, text.size()));
    return word;
}

FieldType typeNamed(std::string_view word)
{
    for (const TypeWord& known : kTypes)
        if (paths::sameName(known.word, word))
            return known.type;
    throw EngineError(EngineErrorNumber::InvalidArgument,
                      "schema.ini knows no type \"" + std::string(word) + "\".");
}

ColumnDef readColumn(std::string_view value)
{
    ColumnDef column;
    column.name = takeWord(value);
    if (const std::string type = takeWord(value); !type.empty())
        column.type = typeNamed(type);
    if (paths::sameName(takeWord(value), "Width"))
        column.width = std::max(numberOf(takeWord(value)), 0);
    return column;
}

void applyFormat(std::string_view value, TextForm& form)
{
    form.fixed = paths::sameName(value, "FixedLength") || paths::sameName(value, "Fixed");
    if (paths::sameName(value, "CSVDelimited"))
        form.delimiter = ',';
    else if (paths::sameName(value, "TabDelimited"))
        form.delimiter = '\t';
    else if (value.size() == 12 && paths::sameName(value.substr(0, 10), "Delimited("))
        form.delimiter = value[10];
}

void applyKey(std::string_view key, std::string_view value, TextForm& form)
{
    if (paths::sameName(key, "ColNameHeader")) {
        form.header = isTrue(value);
    } else if (paths::sameName(key, "Format")) {
        applyFormat(value, form);
    } else if (paths::sameName(key, "CharacterSet")) {
        if (!form.encoding.markBytes)  // a mark in the file knows better
            form.encoding = encodingNamed(value);
    } else if (paths::sameName(key, "TextDelimiter")) {
        form.quote = paths::sameName(value, "none") || value.empty() ? '\0' : value.front();
    } else if (paths::sameName(key, "DecimalSymbol")) {
        form.decimalPoint = value.empty() ? '.' : value.front();
    } else if (paths::sameName(key, "DateTimeFormat")) {
        form.dateFormat = value;
    } else if (key.size() > 3 && paths::sameName(key.substr(0, 3), "Col")) {
        const int number = numberOf(key.substr(3));
        if (number < 1 || number > static_cast<int>(kMostColumns))
            return;
        if (form.columns.size() < static_cast<std::size_t>(number))
            form.columns.resize(static_cast<std::size_t>(number));
        form.columns[static_cast<std::size_t>(number) - 1] = readColumn(value);
    }
}

std::string quotedName(const std::string& name)
{
    if (name.find_first_of(" \t\"") == name.npos)
        return name;
    std::string quoted = "\"";
    for (const char c : name) {
        quoted += c;
        if (c == '"')
            quoted += c;
    }
    return quoted + "\"";
}

}  // namespace

std::optional<SchemaKeys> readSchema(FileSystem& files, std::string_view folder,
                                     std::string_view fileName)
{
    const std::string text = contentOf(files, paths::join(folder, kSchemaFile));
    const Range range = sectionRange(text, fileName);
    if (range.first == range.behind)
        return std::nullopt;
    SchemaKeys keys;
    std::string_view lines = std::string_view(text).substr(range.first, range.behind - range.first);
    takeLine(lines);
    while (!lines.empty()) {
        std::string_view line = takeLine(lines);
        while (!line.empty() && line.back() == '\n')
            line.remove_suffix(1);
        line = trimmed(line);
        const std::size_t equals = line.find('=');
        if (equals != line.npos && line.front() != ';')
            keys.emplace_back(trimmed(line.substr(0, equals)),
                              decoded(trimmed(line.substr(equals + 1))));
    }
    return keys;
}

void writeSchema(FileSystem& files, std::string_view folder, std::string_view fileName,
                 const SchemaKeys& keys)
{
    const std::string path = paths::join(folder, kSchemaFile);
    std::string text = contentOf(files, path);
    const Range range = sectionRange(text, fileName);
    if (keys.empty() && range.first == range.behind)
        return;
    std::string section;
    if (!keys.empty()) {
        if (range.first == range.behind && !text.empty() && text.back() != '\n')
            section += "\r\n";
        section += encoded("[" + std::string(fileName) + "]") + "\r\n";
        for (const auto& [key, value] : keys)
            section += encoded(key + "=" + value) + "\r\n";
    }
    if (range.first == range.behind)
        text += section;
    else
        text.replace(range.first, range.behind - range.first, section);
    FileReplacement replacement(files, path);
    replacement.file().writeAt(
        0, std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
    replacement.commit();
}

void applySchema(const SchemaKeys& keys, TextForm& form)
{
    for (const auto& [key, value] : keys)
        applyKey(key, value, form);
    if (!form.fixed)
        return;
    for (const ColumnDef& column : form.columns)
        if (column.width == 0)
            throw EngineError(EngineErrorNumber::InvalidArgument,
                              "schema.ini does not tell the width of each column.");
    if (form.columns.empty())
        throw EngineError(EngineErrorNumber::InvalidArgument,
                          "schema.ini does not tell the columns of a file of fixed width.");
}

std::string columnWords(const FieldDef& field)
{
    const std::string name = quotedName(field.name);
    switch (field.type) {
    case FieldType::Text:
    case FieldType::Char:
        return name + " Text Width " + std::to_string(field.size);
    case FieldType::Guid:
        return name + " Text Width 38";
    case FieldType::Time:
    case FieldType::TimeStamp:
        return name + " DateTime";
    case FieldType::BigInt:
    case FieldType::Numeric:
        return name + " Decimal";
    default:
        break;
    }
    for (const TypeWord& known : kTypes)
        if (known.type == (field.type == FieldType::Float ? FieldType::Double : field.type))
            return name + " " + std::string(known.word);
    throw EngineError(EngineErrorNumber::NotSupported,
                      "Text files have no type for the field " + field.name + ".");
}

}  // namespace velnor::text
