#include "access/formats/text/text_table.h"

#include <algorithm>

#include "access/engine_error.h"
#include "access/formats/driver.h"
#include "access/formats/text/encoding.h"
#include "access/formats/text/field_names.h"
#include "access/formats/text/field_text.h"
#include "access/formats/text/schema_ini.h"
#include "platform/paths.h"

namespace velnor::text {
namespace {

constexpr std::size_t kHeadBytes = 64u << 10;
constexpr std::uint8_t kEndMark = 0x1A;
constexpr int kLongestText = 255;

PageFileOptions fileOptions()
{
    PageFileOptions options;
    options.pageSize = 8192;
    return options;
}

std::int32_t sizeOf(FieldType type, int width)
{
    switch (type) {
    case FieldType::Boolean:
    case FieldType::Byte:
        return 1;
    case FieldType::Integer:
        return 2;
    case FieldType::Long:
    case FieldType::Single:
        return 4;
    case FieldType::Memo:
        return 0;
    case FieldType::Text:
        return width > 0 ? std::min(width, kLongestText) : kLongestText;
    case FieldType::Decimal:
        return 16;
    default:
        return 8;
    }
}

}  // namespace

TextTable::TextTable(const TextOpening& opening)
    : opening_(opening), set_(*opening.files, opening.path, fileOptions(), opening.readOnly)
{
    PageFile& file = set_.main();
    end_ = file.size();
    std::uint8_t last = 0;
    if (end_ && file.readAt(end_ - 1, std::span(&last, 1)) == 1 && last == kEndMark)
        --end_;
    try {
        readForm();
        facts_ = scanText(file, form_, end_);
    } catch (const EngineError& error) {
        throw EngineError(error.code(), opening_.path + ": " + error.what());
    }
    settleEncoding();
    makeFields();
    noteSaved();
}

/// The start of the file as text; `bytes` is how many of its bytes were looked at.
std::string TextTable::headText(std::size_t& bytes)
{
    std::vector<std::uint8_t> head(
        static_cast<std::size_t>(std::min<std::uint64_t>(end_, kHeadBytes)));
    head.resize(set_.main().readAt(0, head));
    bytes = head.size();
    form_.encoding = encodingOfHead(head);
    const std::span behindMark = std::span(head).subspan(form_.encoding.markBytes);
    if (!form_.encoding.wide())
        return {reinterpret_cast<const char*>(behindMark.data()), behindMark.size()};
    std::string text;
    appendUtf8(form_.encoding.units, behindMark, text);
    return text;
}

void TextTable::readForm()
{
    std::size_t bytes = 0;
    const std::string head = headText(bytes);
    const std::string_view name = paths::fileName(opening_.path);
    form_.lineEnd = guessLineEnd(head);
    const auto schema = readSchema(*opening_.files, paths::folder(opening_.path), name);
    hasSchema_ = schema.has_value();
    form_.delimiter = '\0';
    if (schema)
        applySchema(*schema, form_);
    if (!form_.delimiter && !form_.fixed) {
        form_.delimiter = guessDelimiter(head, bytes == end_);
        const std::string_view extension = paths::extension(name);
        if (!form_.delimiter && (paths::sameName(extension, "CSV") || schema))
            form_.delimiter = ',';
        if (!form_.delimiter && paths::sameName(extension, "TAB"))
            form_.delimiter = '\t';
        if (!form_.delimiter)
            form_.quote = '\0';  // plain lines
    }
    applyOptions();
}

void TextTable::applyOptions()
{
    if (const auto header = connectOption(opening_.options, "HDR"))
        form_.header = !paths::sameName(*header, "No") && !paths::sameName(*header, "False");
    SchemaKeys keys;
    if (const auto format = connectOption(opening_.options, "FMT"))
        keys.emplace_back("Format", std::string(*format));
    for (const char* key : {"CharacterSet", "DecimalSymbol", "DateTimeFormat"})
        if (const auto value = connectOption(opening_.options, key))
            keys.emplace_back(key, std::string(*value));
    if (!keys.empty())
        applySchema(keys, form_);
    if (!opening_.codePage.empty() && !form_.encoding.wide() && !form_.encoding.markBytes)
        form_.encoding = encodingNamed(opening_.codePage);
}

void TextTable::settleEncoding()
{
    if (!form_.encoding.wide() && !form_.encoding.page)
        form_.encoding.page = facts_.utf8 ? &utf8Page() : &ansiPage();
}

void TextTable::makeFields()
{
    std::vector<std::string> names = std::move(facts_.names);
    std::string scratch;
    for (std::string& name : names)
        if (!form_.encoding.wide())
            name = std::string(form_.encoding.page->decode(name, scratch));
    const std::size_t columns = std::max(facts_.columns.size(), form_.columns.size());
    facts_.columns.resize(columns);
    names = cleanNames(names, columns);
    for (std::size_t i = 0; i < columns; ++i) {
        const ColumnDef told = i < form_.columns.size() ? form_.columns[i] : ColumnDef();
        FieldDef field;
        field.name = told.name.empty() ? names[i] : told.name;
        field.type = told.type == FieldType::None ? typeOf(facts_.columns[i]) : told.type;
        if (field.type == FieldType::Text && facts_.columns[i].longText)
            field.type = FieldType::Memo;  // nothing is cut off
        field.size = sizeOf(field.type, told.width);
        fields_.push_back(std::move(field));
    }
}

std::string TextTable::whyNotUpdatable() const
{
    return fields_.empty() ? "The file is empty: it has no fields." : "";
}

std::uint64_t TextTable::append(std::string_view record)
{
    bytes_.clear();
    if (!facts_.endsWithLineEnd)
        appendEncoded(form_.encoding, form_.lineEnd, bytes_);
    if (facts_.headerMissing)
        appendEncoded(form_.encoding, headerLine(fields_, form_) + form_.lineEnd, bytes_);
    const std::uint64_t place = end_ + bytes_.size();
    appendEncoded(form_.encoding, record, bytes_);
    appendEncoded(form_.encoding, form_.lineEnd, bytes_);
    set_.main().writeAt(
        end_, std::span(reinterpret_cast<const std::uint8_t*>(bytes_.data()), bytes_.size()));
    end_ += bytes_.size();
    facts_.endsWithLineEnd = true;
    facts_.headerMissing = false;
    facts_.places.add(place);
    return place;
}

void TextTable::rollback()
{
    end_ = savedEnd_;
    facts_.places.cutTo(savedCount_);
    facts_.endsWithLineEnd = savedLineEnd_;
    facts_.headerMissing = savedHeaderMissing_;
}

void TextTable::commit()
{
    try {
        set_.commit();
    } catch (...) {
        rollback();
        throw;
    }
    noteSaved();
}

void TextTable::noteSaved()
{
    savedEnd_ = end_;
    savedCount_ = recordCount();
    savedLineEnd_ = facts_.endsWithLineEnd;
    savedHeaderMissing_ = facts_.headerMissing;
}

}  // namespace velnor::text
