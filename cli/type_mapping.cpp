#include "cli/type_mapping.h"

#include "cli/field_words.h"
#include "cli/output.h"
#include "platform/memory_file_system.h"
#include "platform/paths.h"

namespace velnor::cli {
namespace {

constexpr std::size_t kMostBytes = 64u << 20;

void makeFolders(FileSystem& files, const std::string& folder)
{
    constexpr std::size_t kRoot = 2;  // "C:"
    if (folder.size() <= kRoot || files.exists(folder))
        return;
    makeFolders(files, std::string(paths::folder(folder)));
    files.makeFolder(folder);
}

/// The table as it is in the target when it is there, else as it would come out.
TableLayout madeLayout(Context& context, const Target& target, const TableLayout& layout)
{
    Target shown = target;
    if (target.fileExists) {
        Database there = openSource(context, shown.source, true);
        if (hasTable(context, there, shown))
            return there.TableDefs().Item(shown.source.table).layout();
    }
    MemoryFileSystem files(kMostBytes);
    makeFolders(files, std::string(paths::folder(target.source.path)));
    Workspace workspace(files);
    Context memory{files, workspace};
    shown.fileExists = false;
    Database made = openTarget(memory, shown);
    makeTable(made, shown, layout);
    made.TableDefs().Refresh();
    return made.TableDefs().Item(shown.source.table).layout();
}

std::string typeOf(const FieldDef& field)
{
    return fieldTypeWord(field.type) + " - " + std::to_string(field.size);
}

void appendFieldJson(std::string& out, const char* side, const FieldDef& field)
{
    out += std::string("\"") + side + "\":{\"name\":";
    appendJsonString(out, field.name);
    out += ",\"type\":";
    appendJsonString(out, fieldTypeWord(field.type));
    out += ",\"size\":" + std::to_string(field.size);
    if (!field.nativeType.empty()) {
        out += ",\"native\":";
        appendJsonString(out, field.nativeType);
    }
    out += "}";
}

}  // namespace

int showMapping(Context& context, const Target& target, const TableLayout& layout,
                const MappedFields& mapped, bool json)
{
    const TableLayout made = madeLayout(context, target, layout);
    Output output(context.files, "");
    std::string& out = output.buffer();
    out += json ? "{\"fields\":[" : "";
    for (std::size_t i = 0; i < mapped.fields.size() && i < made.fields.size(); ++i) {
        const FieldDef& from = mapped.rows.Fields().Item(mapped.fields[i]).def();
        const FieldDef& to = made.fields[i];
        if (json) {
            out += i ? ",\n{" : "\n{";
            appendFieldJson(out, "from", from);
            out += ",";
            appendFieldJson(out, "to", to);
            out += "}";
        } else {
            out += from.name + " - " + typeOf(from) + "  =  " + to.name + " - " + typeOf(to);
            out += to.nativeType.empty() ? "\n" : "  (" + to.nativeType + ")\n";
        }
    }
    if (json)
        out += "],\n\"indexes\":[";
    for (std::size_t i = 0; i < made.indexes.size(); ++i) {
        if (json) {
            out += i ? "," : "";
            appendJsonString(out, made.indexes[i].name);
        } else {
            out += "index " + made.indexes[i].name + "\n";
        }
    }
    out += json ? "]}\n" : "";
    output.finish();
    return kDone;
}

}  // namespace velnor::cli
