// The commands that show what is in a file: tables, schema, info.
#include <array>
#include <cstdio>

#include "access/value_text.h"
#include "cli/command.h"
#include "cli/field_words.h"
#include "cli/output.h"
#include "cli/source.h"

namespace velnor::cli {
namespace {

constexpr std::array kOptions{
    OptionSpec{"--json", "", "JSON instead of lines"},
    OptionSpec{"--password", "P", "password of an Access file"},
    OptionSpec{"--codepage", "C",
               "code page of the texts, such as 866, where the file does not say"},
};

/// What stands behind a name in a list: people should know why they cannot open a link.
std::string linkText(Database& database, const std::string& table)
{
    if (!isLink(database, table))
        return {};
    return "link to " + database.TableDefs().Item(table).SourceTableName();
}

void appendNames(std::string& out, const std::vector<std::string>& names)
{
    out += "[";
    for (std::size_t i = 0; i < names.size(); ++i) {
        out += i ? "," : "";
        appendJsonString(out, names[i]);
    }
    out += "]";
}

void appendTablesJson(std::string& out, const std::vector<std::string>& names, Database& database)
{
    std::vector<std::string> links;
    for (const std::string& name : names)
        if (isLink(database, name))
            links.push_back(name);
    out += "{\"tables\":";
    appendNames(out, names);
    if (!links.empty()) {
        out += ",\"links\":";
        appendNames(out, links);
    }
    out += "}\n";
}

int runTables(Context& context, const Arguments& arguments)
{
    arguments.expectPositional(1, 1);
    Source source = sourceOf(context, arguments.positional()[0], arguments);
    Database database = openSource(context, source, true);
    const std::vector<std::string> names =
        isTableFile(source.kind) ? std::vector<std::string>{source.table} : userTables(database);
    Output output(context.files, "");
    std::string& out = output.buffer();
    if (arguments.has("--json"))
        appendTablesJson(out, names, database);
    else
        for (const std::string& name : names) {
            const std::string link = linkText(database, name);
            out += name + (link.empty() ? "" : "\t" + link) + "\n";
        }
    output.finish();
    return kDone;
}

void appendFlag(std::string& out, const char* name, bool on)
{
    if (on)
        out += std::string(",\"") + name + "\":true";
}

void appendText(std::string& out, const char* name, const std::string& text)
{
    if (text.empty())
        return;
    out += std::string(",\"") + name + "\":";
    appendJsonString(out, text);
}

void appendFieldJson(std::string& out, const FieldDef& field)
{
    out += "{\"name\":";
    appendJsonString(out, field.name);
    out += ",\"type\":";
    appendJsonString(out, fieldTypeWord(field.type));
    out += ",\"size\":" + std::to_string(field.size);
    appendText(out, "native", field.nativeType);
    if (field.precision)
        out += ",\"precision\":" + std::to_string(field.precision) +
               ",\"scale\":" + std::to_string(field.scale);
    appendFlag(out, "required", field.required);
    appendFlag(out, "autonumber", field.autonumber);
    appendText(out, "default", field.defaultValue);
    appendText(out, "description", field.description);
    appendText(out, "validationRule", field.validationRule);
    appendText(out, "validationText", field.validationText);
    out += "}";
}

void appendIndexJson(std::string& out, const IndexDef& index)
{
    out += "{\"name\":";
    appendJsonString(out, index.name);
    out += ",\"fields\":[";
    for (std::size_t i = 0; i < index.fields.size(); ++i) {
        out += i ? "," : "";
        appendJsonString(out, index.fields[i].name);
    }
    out += "]";
    for (const IndexFieldDef& field : index.fields)
        if (field.descending) {
            appendText(out, "descending", field.name);
            break;
        }
    appendFlag(out, "primary", index.primary);
    appendFlag(out, "unique", index.unique);
    appendFlag(out, "required", index.required);
    appendFlag(out, "ignoreNulls", index.ignoreNulls);
    appendFlag(out, "foreign", index.foreign);
    appendText(out, "expression", index.expression);
    appendText(out, "for", index.condition);
    out += "}";
}

void appendTableJson(std::string& out, const TableLayout& table)
{
    out += "{\"name\":";
    appendJsonString(out, table.name);
    appendText(out, "description", table.description);
    appendText(out, "linkTo", table.sourceTableName);
    if (!table.updatable)
        appendText(out, "readOnlyBecause", table.whyNotUpdatable);
    out += ",\"fields\":[";
    for (std::size_t i = 0; i < table.fields.size(); ++i) {
        out += i ? "," : "";
        appendFieldJson(out, table.fields[i]);
    }
    out += "],\"indexes\":[";
    for (std::size_t i = 0; i < table.indexes.size(); ++i) {
        out += i ? "," : "";
        appendIndexJson(out, table.indexes[i]);
    }
    out += "]}";
}

void appendTableLines(std::string& out, const TableLayout& table, const std::string& link)
{
    out += table.name + (link.empty() ? "" : ", " + link) + "\n";
    for (const FieldDef& field : table.fields) {
        out += "  " + field.name + " - " + fieldTypeWord(field.type) + " - " +
               std::to_string(field.size);
        out += field.autonumber ? ", automatic" : "";
        out += field.required ? ", required" : "";
        out += "\n";
    }
    for (const IndexDef& index : table.indexes) {
        out += "  index " + index.name + ":";
        for (const IndexFieldDef& field : index.fields)
            out += " " + field.name + (field.descending ? " descending" : "");
        out += index.primary ? ", primary" : index.unique ? ", unique" : "";
        out += "\n";
    }
}

int runSchema(Context& context, const Arguments& arguments)
{
    arguments.expectPositional(1, 2);
    Source source = sourceOf(context, arguments.positional()[0], arguments);
    if (arguments.positional().size() > 1)
        source.table = arguments.positional()[1];
    Database database = openSource(context, source, true);
    const std::vector<std::string> names =
        source.table.empty() ? userTables(database) : std::vector<std::string>{source.table};
    const bool json = arguments.has("--json");
    Output output(context.files, "");
    std::string& out = output.buffer();
    out += json ? "{\"tables\":[" : "";
    for (std::size_t i = 0; i < names.size(); ++i) {
        const TableLayout& layout = database.TableDefs().Item(names[i]).layout();
        if (json) {
            out += i ? ",\n" : "";
            appendTableJson(out, layout);
        } else {
            appendTableLines(out, layout, linkText(database, names[i]));
        }
    }
    out += json ? "]}\n" : "";
    output.finish();
    return kDone;
}

int runInfo(Context& context, const Arguments& arguments)
{
    arguments.expectPositional(1, 1);
    Source source = sourceOf(context, arguments.positional()[0], arguments);
    Database database = openSource(context, source, true);
    const auto facts = database.info(source.table);
    Output output(context.files, "");
    std::string& out = output.buffer();
    const bool json = arguments.has("--json");
    out += json ? "{" : "";
    for (std::size_t i = 0; i < facts.size(); ++i) {
        if (json) {
            out += i ? "," : "";
            appendJsonString(out, facts[i].first);
            out += ":";
            appendJsonString(out, facts[i].second);
        } else {
            out += facts[i].first + ": " + facts[i].second + "\n";
        }
    }
    out += json ? "}\n" : "";
    output.finish();
    return kDone;
}

}  // namespace

const Command kTables{
    "tables", "FILE|FOLDER", "the tables of a file, or the DBF tables of a folder",
    "Behind the name of a link, whose records are in another file, stand a tab and its table there.",
    kOptions, runTables};
const Command kSchema{"schema", "FILE [TABLE]", "fields and indexes of a table, or of all tables",
                      "",       kOptions,       runSchema};
const Command kInfo{"info", "FILE",   "format, version, code page and other facts of a file",
                    "",     kOptions, runInfo};

}  // namespace velnor::cli
