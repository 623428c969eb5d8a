#include "access/formats/paradox/structure.h"

#include <algorithm>

#include "access/engine_error.h"
#include "access/formats/paradox/index_cursor.h"
#include "access/formats/paradox/rewrite.h"
#include "platform/paths.h"

namespace velnor::paradox {
namespace {

constexpr std::uint8_t kLevel4 = 5, kLevel7 = 0x0C;
constexpr std::size_t kMostIndexFields = 16;
constexpr unsigned kMostGroups = 16;

[[noreturn]] void invalidIndex(const std::string& name, const std::string& why)
{
    throw EngineError(EngineErrorNumber::InvalidIndex, "The index " + name + " " + why + ".");
}

bool descends(const IndexDef& index)
{
    return std::any_of(index.fields.begin(), index.fields.end(),
                       [](const IndexFieldDef& key) { return key.descending; });
}

std::size_t fieldNamed(const FileHeader& table, std::string_view name)
{
    for (std::size_t i = 0; i < table.fields.size(); ++i)
        if (paths::sameName(table.fields[i].name, name))
            return i;
    throw EngineError(EngineErrorNumber::ItemNotFound,
                      "There is no field \"" + std::string(name) + "\".");
}

/// What the files of an index are called, and how it compares.
struct IndexForm {
    std::string extension;
    std::string label;  ///< empty: named for its only field
    std::uint8_t options = 0;
    std::vector<std::size_t> fields;
};

IndexForm formOf(const FileHeader& table, const IndexDef& index,
                 const std::vector<Companion>& companions)
{
    IndexForm form;
    bool text = false;
    for (const IndexFieldDef& key : index.fields) {
        form.fields.push_back(fieldNamed(table, key.name));
        text = text || table.fields[form.fields.back()].isText();
        if (key.descending != index.fields[0].descending)
            invalidIndex(index.name, "would ascend and descend; Paradox has no such indexes");
    }
    if (form.fields.empty() || form.fields.size() > kMostIndexFields)
        invalidIndex(index.name, "must have one to sixteen fields");
    const bool single = form.fields.size() == 1 && !index.unique && !descends(index) &&
                        paths::sameName(index.name, index.fields[0].name);
    if (single) {
        form.extension = singleExtension('X', static_cast<unsigned>(form.fields[0] + 1));
        return form;
    }
    if (table.version < kLevel4)
        invalidIndex(index.name, "must be on one field and have its name in tables of level 3");
    if ((index.unique || descends(index)) && table.version < kLevel7)
        invalidIndex(index.name, "is unique or descends, which needs a table of level 7");
    form.label = index.name;
    // Indexes of one field that is compared with case are named for it; others are blind to case.
    form.options = static_cast<std::uint8_t>((text || form.fields.size() == 1 ? kBlindToCase : 0) |
                                             (descends(index) ? kDescending : 0) |
                                             (index.unique ? kUnique : 0));
    for (unsigned n = 0; n < kMostGroups && form.extension.empty(); ++n)
        if (!findCompanion(companions, groupExtension('X', n)))
            form.extension = groupExtension('X', n);
    if (form.extension.empty())
        invalidIndex(index.name, "is one too many for the table");
    return form;
}

void removeIndexFiles(FileSystem& files, const std::string& path, const std::string& extension)
{
    for (const Companion& companion : companionsOf(files, path))
        if (companion.extension == extension || companion.extension == "Y" + extension.substr(1))
            files.remove(companion.path);
    files.syncFolder(paths::folder(path));
}

void addSecondaryIndex(DbTable& table, const IndexDef& def)
{
    if (!table.keyed())
        invalidIndex(def.name, "needs a primary key in the table first");
    if (findIndex(table, def.name))
        throw EngineError(EngineErrorNumber::ItemExists,
                          "There is an index " + def.name + " already.");
    table.prepareWriting();
    const IndexForm form = formOf(table.header(), def, table.companions());
    if (findCompanion(table.companions(), form.extension))
        throw EngineError(EngineErrorNumber::ItemExists,
                          "There is an index file " + form.extension + " already.");
    const FileHeader made = newIndexHeader(table.header(), form.fields, form.options, form.label,
                                           table.name() + "." + form.extension);
    table.makeIndex(form.extension, made);
}

/// The index that becomes the primary key; null when the table gets none.
const IndexDef* primaryOf(const TableLayout& layout)
{
    if (layout.indexes.empty())
        return nullptr;
    const auto marked = std::find_if(layout.indexes.begin(), layout.indexes.end(),
                                     [](const IndexDef& index) { return index.primary; });
    if (marked == layout.indexes.end())
        invalidIndex(layout.indexes[0].name, "needs a primary key in the table first");
    return &*marked;
}

std::size_t keyFieldsOf(const TableLayout& layout, const IndexDef& index)
{
    const std::size_t count = leadingFields(layout, index);
    if (count == 0)
        invalidIndex(index.name, "cannot be the primary key: that is on the first fields of a "
                                 "table, in their order");
    return count;
}

std::uint8_t versionFor(const TableLayout& layout, const NewTableForm& form,
                        std::string_view fileName)
{
    const bool needsSeven =
        fileName.size() >= storedNameBytes(form.version) ||
        std::any_of(layout.indexes.begin(), layout.indexes.end(), [](const IndexDef& index) {
            return !index.primary && (index.unique || descends(index));
        });
    return needsSeven && form.version >= kLevel4 ? std::max(form.version, kLevel7) : form.version;
}

TableLayout layoutOfFields(const FileHeader& header)
{
    TableLayout layout;
    for (const StoredField& field : header.fields)
        layout.fields.push_back(fieldDefOf(field));
    return layout;
}

}  // namespace

void createTableWithIndexes(FileSystem& files, const std::string& path, const TableLayout& layout,
                            const NewTableForm& form, const std::string& codePage)
{
    const std::string_view fileName = paths::fileName(path);
    const IndexDef* primary = primaryOf(layout);
    FileHeader header =
        newTableHeader(layout, versionFor(layout, form, fileName), fileName, codePage);
    if (primary)
        makeKeyed(header, keyFieldsOf(layout, *primary));
    // Files of a table that is gone would become this one's.
    for (const Companion& left : companionsOf(files, path))
        files.remove(left.path);
    makeInNewFolder(files, path, [&](const std::string& newPath) {
        createTableFiles(files, newPath, header);
        TableOpening opening;
        opening.files = &files;
        opening.path = newPath;
        opening.readOnly = false;
        opening.codePage = codePage;
        for (const IndexDef& index : layout.indexes)
            if (!index.primary)  // a second primary key is the same one under another name
                addSecondaryIndex(*std::make_unique<DbTable>(opening), index);
    });
    moveInto(files, path);
}

void addTableField(DbTable& table, const FieldDef& def)
{
    FileHeader header = table.header();
    StoredField field = storedFieldFor(def, header.version);
    setFieldName(field, def.name, *header.codePage);
    for (const StoredField& other : header.fields)
        if (field.code == FieldCode::Autonumber && other.code == FieldCode::Autonumber)
            throw EngineError(EngineErrorNumber::InvalidArgument,
                              "A Paradox table has at most one autonumber.");
    field.number = header.nextFieldId++;
    std::vector<int> sources;
    for (std::size_t i = 0; i < header.fields.size(); ++i)
        sources.push_back(static_cast<int>(i));
    sources.push_back(-1);
    header.fields.push_back(std::move(field));
    rewriteTable(table, std::move(header), sources);
}

void dropTableField(DbTable& table, std::string_view name)
{
    FileHeader header = table.header();
    const std::size_t gone = fieldNamed(header, name);
    if (header.fields.size() == 1)
        throw EngineError(EngineErrorNumber::NotSupported, "A table must have a field.");
    if (gone < header.keyFields)
        invalidIndex(table.primaryIndexName(), "is on the field " + header.fields[gone].name);
    for (const auto& index : table.indexes())
        if (index->kept() && std::find(index->fields().begin(), index->fields().end(), gone) !=
                                 index->fields().end())
            invalidIndex(index->name(), "is on the field " + header.fields[gone].name);
    std::vector<int> sources;
    for (std::size_t i = 0; i < header.fields.size(); ++i)
        if (i != gone)
            sources.push_back(static_cast<int>(i));
    header.fields.erase(header.fields.begin() + static_cast<std::ptrdiff_t>(gone));
    rewriteTable(table, std::move(header), sources);
}

void addTableIndex(DbTable& table, const IndexDef& index)
{
    if (!index.primary)
        return addSecondaryIndex(table, index);
    if (table.keyed())
        throw EngineError(EngineErrorNumber::ItemExists, "The table has a primary key already.");
    FileHeader header = table.header();
    makeKeyed(header, keyFieldsOf(layoutOfFields(header), index));
    const std::span<const StoredField> keys(header.fields.data(), header.keyFields);
    if (!keyOrderOf(header, keys, false).byBytes)
        throw EngineError(EngineErrorNumber::IndexNotMaintained,
                          table.path() + " sorts its texts by the order " + sortOrderWords(header) +
                              ", whose weights are not known.");
    std::vector<int> sources;
    for (std::size_t i = 0; i < header.fields.size(); ++i)
        sources.push_back(static_cast<int>(i));
    rewriteTable(table, std::move(header), sources);
}

void dropTableIndex(DbTable& table, std::string_view name)
{
    FileSystem& files = *table.opening().files;
    const std::string path = table.path();
    if (table.keyed() && paths::sameName(name, table.primaryIndexName())) {
        for (const auto& index : table.indexes())
            if (index->kept())
                invalidIndex(table.primaryIndexName(),
                             "is needed by the index " + index->name() + ", which must go first");
        FileHeader header = table.header();
        header.kind = FileKind::PlainTable;
        header.keyFields = 0;
        std::vector<int> sources;
        for (std::size_t i = 0; i < header.fields.size(); ++i)
            sources.push_back(static_cast<int>(i));
        return rewriteTable(table, std::move(header), sources);
    }
    const SecondaryIndex* index = findIndex(table, name);
    if (!index)
        throw EngineError(EngineErrorNumber::IndexKeyMissing,
                          std::string(name) + " is not an index of " + path + ".");
    const std::string extension = index->extension();
    table.withFilesClosed([&] { removeIndexFiles(files, path, extension); });
}

}  // namespace velnor::paradox
