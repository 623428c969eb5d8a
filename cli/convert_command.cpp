// convert: a table written into another file, with its own structure; the values as they are.
#include <algorithm>
#include <array>
#include <cstdio>
#include <numeric>
#include <optional>

#include "access/value_text.h"
#include "cli/command.h"
#include "cli/new_table.h"
#include "cli/output.h"
#include "cli/record_loop.h"
#include "cli/result_json.h"
#include "cli/type_mapping.h"
#include "copy/further_sheet.h"
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
    OptionSpec{"--fields", "A,B,C", "only these fields, in this order"},
    OptionSpec{"--structure-only", "", "the table without its records"},
    OptionSpec{"--add", "", "append to the table when it is there, field by field in order"},
    OptionSpec{"--dry-run", "", "write nothing; show what each field would become"},
    OptionSpec{"--json", "", "the outcome, or that of --dry-run, as JSON"},
    OptionSpec{"--password", "P", "password of the Access file that is read"},
    OptionSpec{"--codepage", "C", "code page of the texts that are read"},
    OptionSpec{"--to-codepage", "C", "code page of a new DBF's or DB's texts"},
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

std::size_t longestSheetName(FileKind kind)
{
    return kind == FileKind::Lotus ? 15 : 31;
}

/// "A" to "IV", perhaps with a row: in a worksheet these name places.
bool namesPlace(std::string_view name)
{
    const std::size_t letters =
        std::min(name.size(),
                 name.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"));
    return letters < 3 && name.find_first_not_of("0123456789", letters) == name.npos;
}

/// A name that a sheet takes; that of a sheet loses the "$" or ":" that its table has.
std::string sheetName(std::string name, FileKind kind)
{
    if (name.ends_with('$') || name.ends_with(':'))
        name.pop_back();
    for (char& c : name)
        if (std::string_view(":\\/?*[]").find(c) != std::string_view::npos)
            c = '_';
    while (!name.empty() && (name.front() == '\'' || name.front() == ' '))
        name.erase(name.begin());
    name = textPrefix(name, longestSheetName(kind));
    while (!name.empty() && (name.back() == '\'' || name.back() == ' '))
        name.pop_back();
    if (kind == FileKind::Lotus && namesPlace(name))
        name += '_';
    return name.empty() ? "Sheet" : name;
}

/// What a Paradox table has no type for becomes the next that holds it.
void fitParadoxField(FieldDef& field)
{
    constexpr std::size_t kLongestName = 25;
    constexpr int kGuidText = 38, kLongestBytes = 255;
    field.name = textPrefix(field.name, kLongestName);
    if (field.type == FieldType::Guid) {
        field.type = FieldType::Text;
        field.size = kGuidText;
    }
    const bool bytes = field.type == FieldType::Binary || field.type == FieldType::VarBinary;
    if (bytes && (field.size < 1 || field.size > kLongestBytes)) {
        field.type = FieldType::LongBinary;
        field.size = 0;
    }
}

bool canBeParadoxKey(const FieldDef& field)
{
    return field.type != FieldType::Memo && field.type != FieldType::LongBinary &&
           field.type != FieldType::Boolean;
}

/// The primary key comes along when it is on the first fields, as Paradox wants it, and then the
/// other indexes do, too.
std::vector<IndexDef> paradoxIndexes(const TableLayout& from, const std::vector<FieldDef>& fields)
{
    constexpr std::size_t kMostFields = 16;
    std::vector<IndexDef> kept;
    for (const IndexDef& index : from.indexes) {
        bool leads = true, fits = !index.foreign && index.condition.empty() &&
                                  index.expression.empty() && !index.fields.empty() &&
                                  index.fields.size() <= kMostFields;
        IndexDef made;
        made.name = index.name;
        made.primary = index.primary;
        made.unique = index.unique;
        for (std::size_t i = 0; fits && i < index.fields.size(); ++i) {
            const auto at =
                std::find_if(from.fields.begin(), from.fields.end(), [&](const FieldDef& f) {
                    return paths::sameName(f.name, index.fields[i].name);
                });
            fits =
                at != from.fields.end() && index.fields[i].descending == index.fields[0].descending;
            if (!fits)
                break;
            const auto position = static_cast<std::size_t>(at - from.fields.begin());
            fits = canBeParadoxKey(fields[position]);
            leads = leads && position == i && !index.fields[i].descending;
            made.fields.push_back({fields[position].name, index.fields[i].descending});
        }
        if (fits && (leads || !index.primary))
            kept.push_back(std::move(made));
    }
    const bool keyed =
        std::any_of(kept.begin(), kept.end(), [](const IndexDef& i) { return i.primary; });
    return keyed ? kept : std::vector<IndexDef>{};
}

TableLayout targetLayout(const TableLayout& from, bool fromXbase, const Target& target)
{
    TableLayout layout;
    layout.name = target.source.table;
    layout.description = from.description;
    layout.fields = from.fields;
    const bool access = target.source.kind == FileKind::Access;
    const bool sheet = isSheetFile(target.source.kind);
    for (FieldDef& field : layout.fields) {
        field.nativeType.clear();
        if (access || sheet)
            field.name = accessName(field.name);
        else if (target.source.kind == FileKind::Xbase &&
                 (field.type == FieldType::Text || field.type == FieldType::Char))
            field.size = std::min(field.size, kLongestDbfText);
    }
    const bool paradox = target.source.kind == FileKind::Paradox;
    if (paradox)
        std::for_each(layout.fields.begin(), layout.fields.end(), fitParadoxField);
    if (access || sheet || paradox)
        makeNamesUnique(layout.fields);
    if (paradox && !fromXbase)
        layout.indexes = paradoxIndexes(from, layout.fields);
    if (access) {
        for (const IndexDef& index : from.indexes)
            if (auto made = accessIndex(index, from, fromXbase))
                layout.indexes.push_back(std::move(*made));
    }
    return layout;
}

/// The table that is filled. When a sheet is full the records go on in a further one, and the
/// person is told.
class Filling {
public:
    Filling(Database& to, const std::string& table, std::vector<int> fields)
        : further_(to, table), fields_(std::move(fields)),
          added_(to.OpenRecordset(table, RecordsetType::Table))
    {
    }

    /// Field n of the table is taken from field fields[n] of the source.
    void add(const Recordset& rows)
    {
        fill(rows);
        try {
            added_.Update();
        } catch (const EngineError& error) {
            if (error.code() != EngineErrorNumber::SpreadsheetFull || !further_.possible())
                throw;
            added_.Close();
            const std::string full = further_.current();
            added_ = further_.open();
            std::fprintf(stderr, "The sheet %s is full; the records go on in %s.\n", full.c_str(),
                         further_.current().c_str());
            fill(rows);
            added_.Update();
        }
        ++count_;
    }
    void close() { added_.Close(); }
    std::int64_t count() const { return count_; }
    const std::vector<std::string>& furtherSheets() const { return further_.names(); }

private:
    void fill(const Recordset& rows)
    {
        added_.AddNew();
        const int count = std::min(static_cast<int>(fields_.size()), added_.fieldCount());
        for (int i = 0; i < count; ++i)
            added_.setValue(i, rows.value(fields_[static_cast<std::size_t>(i)]));
    }

    FurtherSheets further_;
    std::vector<int> fields_;
    Recordset added_;
    std::int64_t count_ = 0;
};

void tellJson(Context& context, const Arguments& arguments, const Target& target,
              const Filling& filling)
{
    ResultJson()
        .text("file", arguments.positional().back())
        .text("table", target.source.table)
        .number("records", filling.count())
        .texts("furtherSheets", filling.furtherSheets())
        .print(context);
}

/// Sheets and text files cannot hold bytes: such fields are left out, and the person is told.
std::vector<int> leaveOutBytes(TableLayout& layout)
{
    std::vector<int> kept;
    std::vector<FieldDef> fields;
    for (std::size_t i = 0; i < layout.fields.size(); ++i) {
        const FieldType type = layout.fields[i].type;
        if (type == FieldType::Binary || type == FieldType::VarBinary ||
            type == FieldType::LongBinary) {
            std::fprintf(stderr, "Field %s is left out: this kind of file cannot hold its bytes.\n",
                         layout.fields[i].name.c_str());
            continue;
        }
        kept.push_back(static_cast<int>(i));
        fields.push_back(layout.fields[i]);
    }
    layout.fields = std::move(fields);
    return kept;
}

/// Only the named fields stay, in their order; indexes stay whose fields all do. Gives the place of
/// each in the source.
std::vector<int> chosenFields(const std::string& words, Recordset& rows,
                              const std::vector<int>& fields, TableLayout& layout)
{
    std::vector<int> chosen;
    std::vector<FieldDef> kept;
    for (std::size_t at = 0; at <= words.size();) {
        const std::size_t comma = std::min(words.find(',', at), words.size());
        const std::string name = words.substr(at, comma - at);
        const auto named = std::find_if(fields.begin(), fields.end(), [&](int field) {
            return paths::sameName(rows.Fields().Item(field).Name(), name);
        });
        if (named == fields.end())
            throw EngineError(EngineErrorNumber::ItemNotFound, "There is no field '" + name + "'.");
        chosen.push_back(*named);
        kept.push_back(layout.fields[static_cast<std::size_t>(named - fields.begin())]);
        at = comma + 1;
    }
    layout.fields = std::move(kept);
    std::erase_if(layout.indexes, [&](const IndexDef& index) {
        return !std::all_of(index.fields.begin(), index.fields.end(),
                            [&](const IndexFieldDef& key) {
                                return std::any_of(layout.fields.begin(), layout.fields.end(),
                                                   [&](const FieldDef& f) {
                                                       return paths::sameName(f.name, key.name);
                                                   });
                            });
    });
    return chosen;
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
    target.source.tail =
        arguments.has("--to-codepage") ? "codepage=" + arguments.value("--to-codepage") + ";" : "";
    target.source.connect += target.source.tail;

    Database from = openSource(context, source, true);
    const std::string table = chosenTable(from, source);
    if (target.source.table.empty())
        target.source.table = arguments.value(
            "--table", source.kind == FileKind::Text ? std::string(paths::baseName(table)) : table);
    if (isSheetFile(target.source.kind) && !arguments.has("--table"))
        target.source.table = sheetName(target.source.table, target.source.kind);
    Recordset rows = from.OpenRecordset(table, RecordsetType::Table);
    TableLayout layout =
        targetLayout(from.TableDefs().Item(table).layout(), source.kind == FileKind::Xbase, target);
    std::vector<int> fields(layout.fields.size());
    std::iota(fields.begin(), fields.end(), 0);
    if (isSheetFile(target.source.kind) || target.source.kind == FileKind::Text)
        fields = leaveOutBytes(layout);
    if (arguments.has("--fields"))
        fields = chosenFields(arguments.value("--fields"), rows, fields, layout);
    if (arguments.has("--dry-run"))
        return showMapping(context, target, layout, {rows, fields}, arguments.has("--json"));
    Database to = openTarget(context, target);
    if (!hasTable(context, to, target))
        makeTargetTable(context, to, target, layout);
    else if (!arguments.has("--add"))
        throw EngineError(EngineErrorNumber::TableAlreadyExists,
                          "Table '" + target.source.table + "' already exists.");

    Filling filling(to, target.source.table, std::move(fields));
    RecordLoop loop(to, arguments.has("--progress"),
                    isSheetFile(target.source.kind) ? RecordLoop::kBetweenRewrites
                                                    : RecordLoop::kBetweenCommits);
    for (; !arguments.has("--structure-only") && !rows.Eof(); rows.MoveNext()) {
        filling.add(rows);
        loop.recordDone();
    }
    filling.close();
    to.Close();
    loop.finish();
    if (arguments.has("--json"))
        tellJson(context, arguments, target, filling);
    return kDone;
}

}  // namespace

const Command kConvert{
    "convert",
    "FILE [TABLE] TO",
    "a table written into another file, new or with the table added",
    "An Access file or a workbook is made when it is not there. The values are taken over as "
    "they are, each in the\n"
    "type that the other format has for it.",
    kOptions,
    run};

}  // namespace velnor::cli
