#include "access/formats/text/new_text.h"

#include "access/engine_error.h"
#include "access/formats/text/encoding.h"
#include "access/formats/text/field_text.h"
#include "access/formats/text/schema_ini.h"
#include "access/storage/replace_file.h"
#include "platform/paths.h"

namespace velnor::text {
namespace {

TextForm newForm(std::string_view name, const std::string& codePage)
{
    TextForm form;
    if (paths::sameName(paths::extension(name), "TAB"))
        form.delimiter = '\t';
    form.encoding =
        codePage.empty() ? Encoding{Units::Bytes, &utf8Page(), 0} : encodingNamed(codePage);
    if (form.encoding.wide())
        form.encoding.markBytes = 2;
    return form;
}

SchemaKeys newKeys(const TextForm& form, const TableLayout& layout)
{
    SchemaKeys keys{{"ColNameHeader", "True"},
                    {"Format", form.delimiter == '\t' ? "TabDelimited" : "CSVDelimited"},
                    {"MaxScanRows", "0"}};
    if (form.encoding.wide())
        keys.emplace_back("CharacterSet", "Unicode");
    else
        keys.emplace_back("CharacterSet", std::to_string(form.encoding.page->number()));
    for (std::size_t i = 0; i < layout.fields.size(); ++i)
        keys.emplace_back("Col" + std::to_string(i + 1), columnWords(layout.fields[i]));
    return keys;
}

std::string firstLine(const TextForm& form, const TableLayout& layout)
{
    std::string bytes;
    if (form.encoding.wide())
        appendEncoded(form.encoding, "\xEF\xBB\xBF", bytes);
    appendEncoded(form.encoding, headerLine(layout.fields, form) + form.lineEnd, bytes);
    return bytes;
}

}  // namespace

void createTextFile(FileSystem& files, std::string_view folder, const std::string& name,
                    const TableLayout& layout, const std::string& codePage)
{
    if (!layout.indexes.empty())
        throw EngineError(EngineErrorNumber::NotSupported, "Text files have no indexes.");
    const TextForm form = newForm(name, codePage);
    const SchemaKeys keys = newKeys(form, layout);
    const std::string line = firstLine(form, layout);
    writeSchema(files, folder, name, keys);
    FileReplacement file(files, paths::join(folder, name));
    file.file().writeAt(0,
                        std::span(reinterpret_cast<const std::uint8_t*>(line.data()), line.size()));
    file.commit();
}

}  // namespace velnor::text
