// diff: whether two tables hold the same records, and which differ.
#include <algorithm>
#include <array>
#include <cstdio>
#include <vector>

#include "cli/command.h"
#include "cli/output.h"
#include "cli/record_text.h"
#include "cli/source.h"
#include "platform/paths.h"

namespace velnor::cli {
namespace {

constexpr std::array kOptions{
    OptionSpec{"--key", "FIELD,FIELD", "fields that name a record; without, the records' order"},
    OptionSpec{"--json", "", "JSON instead of lines"},
    OptionSpec{"--password", "P", "password of Access files"},
    OptionSpec{"--codepage", "C", "code page of the texts, where the files do not say"},
};

/// One of the two tables, and where in it the compared fields stand.
struct Side {
    Side(Context& context, const std::string& word, const std::string& table,
         const Arguments& arguments)
        : source(sourceOf(context, word, arguments)), database(openSource(context, source, true)),
          rows(openTable(table))
    {
    }
    Recordset openTable(const std::string& table)
    {
        if (!table.empty())
            source.table = table;
        source.table = chosenTable(database, source);
        return database.OpenRecordset(source.table, RecordsetType::Table);
    }
    int position(const std::string& field)
    {
        for (int i = 0; i < rows.fieldCount(); ++i)
            if (paths::sameName(rows.Fields().Item(i).Name(), field))
                return i;
        return -1;
    }
    /// Some fields of the current record as a text that is equal for equal values of any format.
    void textOf(const std::vector<int>& wanted, std::string& out)
    {
        out.clear();
        for (const int field : wanted) {
            const ValueView v = rows.value(field);
            if (v.kind() != ValueKind::Text || !v.asText().empty())  // empty counts as Null
                appendCsv(out, v);
            out += '\n';
        }
    }

    Source source;
    Database database;
    Recordset rows;
    std::vector<int> fields, key;
};

struct Report {
    Report(bool asJson, Output& to) : json(asJson), output(to) {}

    bool json;
    Output& output;
    std::int64_t same = 0, differ = 0, onlyFirst = 0, onlySecond = 0;

    bool any() const { return differ + onlyFirst + onlySecond > 0; }
    void add(const char* kind, const char* mark, std::string record, const std::string& fields = {})
    {
        std::replace(record.begin(), record.end(), '\n', ' ');
        std::string& out = output.buffer();
        if (json) {
            out += count_++ ? ",\n" : "\n";
            out += std::string("{\"kind\":\"") + kind + "\",\"record\":";
            appendJsonString(out, record);
            if (!fields.empty()) {
                out += ",\"fields\":";
                appendJsonString(out, fields);
            }
            out += "}";
        } else {
            out += std::string(mark) + " " + record + (fields.empty() ? "" : ": " + fields) + "\n";
        }
        output.flushIfFull();
    }

private:
    std::int64_t count_ = 0;
};

/// Fields of both tables with the same name; the others are told.
void pairFields(Side& first, Side& second)
{
    for (int i = 0; i < first.rows.fieldCount(); ++i) {
        const std::string name = first.rows.Fields().Item(i).Name();
        const int other = second.position(name);
        if (other < 0) {
            std::fprintf(stderr, "Only in the first table: field %s\n", name.c_str());
            continue;
        }
        first.fields.push_back(i);
        second.fields.push_back(other);
    }
    for (int i = 0; i < second.rows.fieldCount(); ++i) {
        const std::string name = second.rows.Fields().Item(i).Name();
        if (first.position(name) < 0)
            std::fprintf(stderr, "Only in the second table: field %s\n", name.c_str());
    }
    if (first.fields.empty())
        throw EngineError(EngineErrorNumber::ItemNotFound, "The tables have no field in common.");
}

void readKey(const std::string& words, Side& side)
{
    for (std::size_t at = 0; at <= words.size();) {
        const std::size_t comma = std::min(words.find(',', at), words.size());
        const int field = side.position(words.substr(at, comma - at));
        if (field < 0)
            throw EngineError(EngineErrorNumber::ItemNotFound,
                              "There is no field '" + words.substr(at, comma - at) + "'.");
        side.key.push_back(field);
        at = comma + 1;
    }
}

std::string differingFields(Side& first, Side& second)
{
    std::string names, a, b;
    for (std::size_t i = 0; i < first.fields.size(); ++i) {
        first.textOf({first.fields[i]}, a);
        second.textOf({second.fields[i]}, b);
        if (a != b)
            names += (names.empty() ? "" : ", ") + first.rows.Fields().Item(first.fields[i]).Name();
    }
    return names;
}

void compareHere(Side& first, Side& second, const std::string& name, Report& report)
{
    std::string a, b;
    first.textOf(first.fields, a);
    second.textOf(second.fields, b);
    if (a == b) {
        ++report.same;
        return;
    }
    ++report.differ;
    report.add("differs", "~", name, differingFields(first, second));
}

void compareInOrder(Side& first, Side& second, Report& report)
{
    std::int64_t number = 1;
    for (; !first.rows.Eof() || !second.rows.Eof(); ++number) {
        stopIfInterrupted();
        const std::string name = "record " + std::to_string(number);
        if (first.rows.Eof()) {
            ++report.onlySecond;
            report.add("second", "+", name);
        } else if (second.rows.Eof()) {
            ++report.onlyFirst;
            report.add("first", "-", name);
        } else {
            compareHere(first, second, name, report);
        }
        if (!first.rows.Eof())
            first.rows.MoveNext();
        if (!second.rows.Eof())
            second.rows.MoveNext();
    }
}

struct KeyEntry {
    std::size_t hash;
    Recordset::Bookmark record;
    bool met = false;
};

/// Sixteen bytes and a mark for each record of the second table are kept.
void compareByKey(Side& first, Side& second, Report& report)
{
    std::vector<KeyEntry> entries;
    std::string key, other;
    for (; !second.rows.Eof(); second.rows.MoveNext()) {
        stopIfInterrupted();
        second.textOf(second.key, key);
        entries.push_back({std::hash<std::string>()(key), second.rows.bookmark()});
    }
    std::stable_sort(entries.begin(), entries.end(),
                     [](const KeyEntry& a, const KeyEntry& b) { return a.hash < b.hash; });
    for (; !first.rows.Eof(); first.rows.MoveNext()) {
        stopIfInterrupted();
        first.textOf(first.key, key);
        const std::size_t hash = std::hash<std::string>()(key);
        auto entry = std::lower_bound(entries.begin(), entries.end(), hash,
                                      [](const KeyEntry& e, std::size_t h) { return e.hash < h; });
        bool found = false;
        for (; entry != entries.end() && entry->hash == hash && !found; ++entry) {
            if (entry->met || !second.rows.moveToBookmark(entry->record))
                continue;
            second.textOf(second.key, other);
            found = entry->met = key == other;
        }
        if (found) {
            compareHere(first, second, key, report);
        } else {
            ++report.onlyFirst;
            report.add("first", "-", key);
        }
    }
    for (const KeyEntry& e : entries)
        if (!e.met && second.rows.moveToBookmark(e.record)) {
            ++report.onlySecond;
            second.textOf(second.key, key);
            report.add("second", "+", key);
        }
}

int run(Context& context, const Arguments& arguments)
{
    const FromTo words = splitFromTo(arguments.positional());
    Side first(context, words.from, words.fromTable, arguments);
    Side second(context, words.to, words.toTable, arguments);
    pairFields(first, second);
    Output output(context.files, "");
    Report report(arguments.has("--json"), output);
    if (report.json)
        output.buffer() += "{\"differences\":[";
    if (arguments.has("--key")) {
        readKey(arguments.value("--key"), first);
        readKey(arguments.value("--key"), second);
        compareByKey(first, second, report);
    } else {
        compareInOrder(first, second, report);
    }
    char line[200];
    std::snprintf(
        line, sizeof line,
        report.json ? "],\n\"same\":%lld,\"differ\":%lld,\"onlyFirst\":%lld,\"onlySecond\":%lld}\n"
                    : "%lld records are the same, %lld differ, %lld only in the first "
                      "table, %lld only in the second\n",
        static_cast<long long>(report.same), static_cast<long long>(report.differ),
        static_cast<long long>(report.onlyFirst), static_cast<long long>(report.onlySecond));
    output.buffer() += line;
    output.finish();
    return report.any() ? kDifferent : kDone;
}

}  // namespace

const Command kDiff{
    "diff",
    "A [TABLE] B [TABLE]",
    "whether two tables hold the same records, and which differ",
    "Fields are compared by name and as values: the formats may be different, and an empty text "
    "counts\n"
    "as Null. Lines begin with - (only in the first table), + (only in the second) or ~ (the "
    "named\n"
    "fields differ). The exit code is 0 when all records are the same and 3 when not.",
    kOptions,
    run};

}  // namespace velnor::cli
