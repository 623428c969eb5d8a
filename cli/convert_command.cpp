// convert: a table written into another file, with its own structure; the values as they are.
#include <algorithm>
#include <array>
#include <optional>

#include "cli/command.h"
#include "cli/new_table.h"
#include "cli/output.h"
#include "cli/record_loop.h"
#include "platform/paths.h"

namespace velnor::cli {
namespace {

/// Longer texts of the source are told as an error when one is met, not cut.
constexpr int kLongestDbfText = 254;

constexpr std::array kOptions{
    OptionSpec{"--table", "NAME", "name of the new table; the source's name otherwise"},
    OptionSpec{"--as", "KIND",
               "access2000, access97; dbase5, dbase4, dbase3, foxpro3, foxpro2; paradox7, "
               "paradox5, paradox4, paradox3"},
    OptionSpec{"--add", "", "append to the table when it is there, field by field in order"},
    OptionSpec{"--password", "P", "password of the Access file that is read"},
    OptionSpec{"--codepage", "C", "code page of the texts that are read"},
    OptionSpec{"--progress", "", "progress lines also when standard error is no terminal"},
};

/// A name that Access takes: without . ! [ ] ` and control characters.
std::string accessName(std::string name)
{
    for (char& c : name)
        if (c == '.' || c == '!' || c == '[' || c == ']' || c == '`' ||
            static_cast<unsigned char>(c) < 0x20)
            c = '_';
    while (!name.empty() && name.front() == ' ')
        name.erase(name.begin());
    return name.empty() ? "F" : name;
}

void makeNamesUnique(std::vector<FieldDef>& fields)
{
    for (std::size_t i = 1; i < fields.size(); ++i) {
        const std::string wanted = fields[i].name;
        const auto taken = [&] {
            return std::any_of(
                fields.begin(), fields.begin() + static_cast<std::ptrdiff_t>(i),
                [&](const FieldDef& f) { return paths::sameName(f.name, fields[i].name); });
        };
        for (int n = 1; taken(); ++n)
            fields[i].name = wanted + std::to_string(n);
    }
}

/// An index of the source that the new Access table can have. A unique xBase index does not forbid
/// equal keys, it only leaves them out: it becomes a plain one.
std::optional<IndexDef> accessIndex(const IndexDef& index, const TableLayout& from, bool fromXbase)
{
    const auto isField = [&](const IndexFieldDef& key) {
        return std::any_of(from.fields.begin(), from.fields.end(),
                           [&](const FieldDef& f) { return paths::sameName(f.name, key.name); });
    };
    if (index.foreign || !index.condition.empty() ||
        !std::all_of(index.fields.begin(), index.fields.end(), isField))
        return std::nullopt;
    IndexDef made = index;
    made.expression.clear();
    made.cannotKeep.clear();
    if (fromXbase)
        made.primary = made.unique = made.required = false;
    for (IndexFieldDef& key : made.fields)
        key.name = accessName(key.name);
    return made;
}

TableLayout targetLayout(const TableLayout& from, bool fromXbase, const Target& target)
{
    TableLayout layout;
    layout.name = target.source.table;
    layout.description = from.description;
    layout.fields = from.fields;
    const bool access = target.source.kind == FileKind::Access;
    for (FieldDef& field : layout.fields) {
        field.nativeType.clear();
        if (access)
            field.name = accessName(field.name);
        else if (target.source.kind == FileKind::Xbase &&
                 (field.type == FieldType::Text || field.type == FieldType::Char))
            field.size = std::min(field.size, kLongestDbfText);
    }
    if (access) {
        makeNamesUnique(layout.fields);
        for (const IndexDef& index : from.indexes)
            if (auto made = accessIndex(index, from, fromXbase))
                layout.indexes.push_back(std::move(*made));
    }
    return layout;
}

int run(Context& context, const Arguments& arguments)
{
    arguments.expectPositional(2, 3);
    const auto& words = arguments.positional();
    Source source = sourceOf(context, words.front(), arguments);
    if (words.size() == 3)
        source.table = words[1];
    Target target = targetOf(context, words.back(), arguments);
    target.source.connect = target.source.connect.substr(0, target.source.connect.find(';') + 1);
    target.source.tail.clear();

    Database from = openSource(context, source, true);
    const std::string table = chosenTable(from, source);
    if (target.source.table.empty())
        target.source.table = arguments.value("--table", table);
    Recordset rows = from.OpenRecordset(table, RecordsetType::Table);
    Database to = openTarget(context, target);
    if (!hasTable(context, to, target))
        makeTable(to, target,
                  targetLayout(from.TableDefs().Item(table).layout(),
                               source.kind == FileKind::Xbase, target));
    else if (!arguments.has("--add"))
        throw EngineError(EngineErrorNumber::TableAlreadyExists,
                          "Table '" + target.source.table + "' already exists.");

    Recordset added = to.OpenRecordset(target.source.table, RecordsetType::Table);
    RecordLoop loop(to, arguments.has("--progress"));
    const int count = std::min(rows.fieldCount(), added.fieldCount());
    for (; !rows.Eof(); rows.MoveNext()) {
        added.AddNew();
        for (int i = 0; i < count; ++i)
            added.setValue(i, rows.value(i));
        added.Update();
        loop.recordDone();
    }
    added.Close();
    to.Close();
    loop.finish();
    return kDone;
}

}  // namespace

const Command kConvert{"convert",
                       "FILE [TABLE] TO",
                       "a table written into another file, new or with the table added",
                       "An Access file is made when it is not there. The values are taken over as "
                       "they are, each in the\n"
                       "type that the other format has for it.",
                       kOptions,
                       run};

}  // namespace velnor::cli
