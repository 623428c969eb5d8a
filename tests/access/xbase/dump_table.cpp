// dump_table - one table as canonical CSV on the standard output, for the corpus test.
//
//   xbase_dump FILE.DBF [CODEPAGE]     exits 1 with the engine's words when it cannot be opened
// What a check finds beyond harmless notes goes to the standard error.
#include <cstdio>
#include <string>

#include "access/formats/xbase/xbase_driver.h"
#include "access/value_text.h"
#include "platform/host.h"
#include "platform/paths.h"

namespace {

using namespace velnor;

void appendQuoted(std::string& out, std::string_view text)
{
    if (!text.empty() && text.find_first_of(",\"\r\n") == text.npos) {
        out += text;
        return;
    }
    out += '"';
    for (const char c : text)
        out.append(c == '"' ? 2 : 1, c);
    out += '"';
}

void appendValue(std::string& out, ValueView v)
{
    if (v.kind() == ValueKind::Text)
        appendQuoted(out, v.asText());
    else if (v.kind() == ValueKind::Date)
        appendIsoDate(out, v.asDate());
    else if (v.kind() == ValueKind::Bytes && v.asBytes().size() > 64)
        out += "[binary " + std::to_string(v.asBytes().size()) + " bytes]";
    else
        appendText(out, v);
}

/// As the windows do: dBASE first, FoxPro when that is refused with 3274.
std::unique_ptr<Store> openEither(const OpenRequest& request, const std::string& table)
{
    const xbase::XbaseDriver driver;
    OpenRequest asked = request;
    try {
        asked.connectWord = "dBASE 5.0;";
        auto store = driver.open(*host().files, asked);
        store->layout(table);
        return store;
    } catch (const EngineError& error) {
        if (error.code() != EngineErrorNumber::UnexpectedFormat)
            throw;
    }
    asked.connectWord = "FoxPro 3.0;";
    return driver.open(*host().files, asked);
}

void dump(const std::string& native, const std::string& codePage)
{
    const std::string path = host().paths->fromPerson(native);
    OpenRequest request;
    request.name = paths::folder(path);
    request.codePage = codePage;
    const std::string table(paths::baseName(path));
    const auto store = openEither(request, table);
    const TableLayout layout = store->layout(table);
    std::string out;
    for (std::size_t i = 0; i < layout.fields.size(); ++i) {
        out += i ? "," : "";
        appendQuoted(out, layout.fields[i].name);
    }
    out += '\n';
    const auto cursor = store->cursor(table, std::nullopt);
    std::int64_t records = 0;
    for (bool there = cursor->first(); there; there = cursor->next(), ++records) {
        for (std::size_t i = 0; i < layout.fields.size(); ++i) {
            out += i ? "," : "";
            appendValue(out, cursor->field(static_cast<int>(i)));
        }
        out += '\n';
    }
    std::fwrite(out.data(), 1, out.size(), stdout);
    store->check(table, [](const Problem& problem) {
        if (!problem.harmless)
            std::fprintf(stderr, "%s: %s\n", problem.where.c_str(), problem.text.c_str());
    });
    if (records != store->recordCount(table))
        throw EngineError(EngineErrorNumber::Corrupt, "the record count is not that of the walk");
}

}  // namespace

int main(int count, char** words)
{
    try {
        dump(words[1], count > 2 ? words[2] : "");
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
