#include "access/formats/paradox/table_layout.h"

#include <cstdio>

#include "access/formats/paradox/field_codec.h"
#include "access/value_text.h"

namespace velnor::paradox {
namespace {

const char* levelWords(std::uint8_t version)
{
    if (version <= 4)
        return version == 3 ? "Paradox 3.0" : "Paradox 3.5";
    return version <= 9 ? "Paradox 4.x" : version <= 0x0B ? "Paradox 5.x" : "Paradox 7";
}

IndexDef primaryIndex(DbTable& table)
{
    IndexDef def;
    def.name = table.primaryIndexName();
    def.primary = def.unique = def.required = true;
    for (std::size_t i = 0; i < table.header().keyFields; ++i)
        def.fields.push_back({table.header().fields[i].name, false});
    return def;
}

IndexDef secondaryIndex(DbTable& table, SecondaryIndex& index)
{
    IndexDef def;
    def.name = index.name();
    def.unique = index.unique();
    for (const std::size_t n : index.fields())
        def.fields.push_back({table.header().fields[n].name, index.descending()});
    if (!index.trouble().empty())
        def.cannotKeep = index.trouble();
    return def;
}

/// A default in the form that the engine takes: a number as it is, all else in quotes.
std::string defaultText(const DbTable& table, const StoredField& field, const FieldCheck& check)
{
    if (field.isLong() || check.defaultValue.size() != field.length)
        return {};
    std::string scratch, text;
    const ValueView value =
        decodeField(field, check.defaultValue.data(), *table.header().codePage, scratch);
    if (value.kind() == ValueKind::Null || value.kind() == ValueKind::Bytes)
        return {};
    appendText(text, value);
    if (value.kind() != ValueKind::Text && value.kind() != ValueKind::Date)
        return text;
    std::string quoted = "\"";
    for (const char c : text)
        quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
    return quoted + "\"";
}

std::string hexByte(std::uint8_t byte)
{
    char text[8];
    std::snprintf(text, sizeof text, "0x%02X", byte);
    return text;
}

std::string indexWords(SecondaryIndex& index)
{
    std::string words = index.extension() + ", " + (index.kept() ? "kept" : "not kept");
    if (index.blindToCase())
        words += ", blind to case";
    if (!index.current())
        words += ", older than the table";
    return words;
}

}  // namespace

TableLayout layoutOf(DbTable& table)
{
    TableLayout layout;
    layout.name = table.name();
    const FileHeader& header = table.header();
    for (const StoredField& field : header.fields)
        layout.fields.push_back(fieldDefOf(field));
    if (const auto& checks = table.checks())
        for (const FieldCheck& check : checks->checks) {
            FieldDef& def = layout.fields[check.field];
            def.required = check.required;
            def.defaultValue = defaultText(table, header.fields[check.field], check);
        }
    if (table.keyed())
        layout.indexes.push_back(primaryIndex(table));
    for (const auto& index : table.indexes())
        layout.indexes.push_back(secondaryIndex(table, *index));
    layout.whyNotUpdatable = table.whyNotUpdatable();
    layout.updatable = layout.whyNotUpdatable.empty();
    return layout;
}

std::vector<std::pair<std::string, std::string>> tableInfo(DbTable& table)
{
    const FileHeader& header = table.header();
    std::vector<std::pair<std::string, std::string>> facts{
        {"Format", levelWords(header.version)},
        {"Version byte", hexByte(header.version)},
        {"Primary key", table.keyed() ? std::to_string(header.keyFields) + " fields" : "none"},
        {"Header length", std::to_string(header.headerSize)},
        {"Record length", std::to_string(header.recordSize)},
        {"Block size", std::to_string(header.blockBytes)},
        {"Blocks", std::to_string(table.chain().blocks()) + " used of " +
                       std::to_string(table.blocks().count())},
        {"Sort order", sortOrderWords(header)},
        {"Code page", std::to_string(header.codePage->number())},
        {"Password", header.cipherKey ? "yes" : "no"},
        {"MB file", !header.hasLongFields() ? "none"
                    : table.mb()            ? "there"
                                            : "missing"},
    };
    for (const StoredField& field : header.fields)
        if (field.code == FieldCode::Autonumber)
            facts.emplace_back("Last autonumber", std::to_string(header.lastNumber));
    for (const auto& index : table.indexes())
        facts.emplace_back("Index " + index->name(), indexWords(*index));
    for (const auto& [file, why] : table.indexTroubles())
        facts.emplace_back("Index file " + file, why);
    return facts;
}

}  // namespace velnor::paradox
