// Indexes that come and go: new ones, dropped ones, and those of a table that is written anew.
#include <algorithm>

#include "access/engine_error.h"
#include "access/formats/xbase/cdx_file.h"
#include "access/formats/xbase/dbf_table.h"
#include "access/formats/xbase/index_set.h"
#include "access/formats/xbase/mdx_file.h"
#include "access/formats/xbase/ndx_file.h"
#include "platform/paths.h"

namespace velnor::xbase {
namespace {

constexpr std::size_t kLongestName = 10;

}  // namespace

/// An empty file of a kind; what another program left at its path goes.
IndexSet::IndexFile& IndexSet::makeFile(IndexKind kind, const std::string& path,
                                        std::uint8_t languageMark)
{
    auto file = std::make_unique<IndexFile>();
    file->path = path;
    file->kind = kind;
    file->pages = &table_.companion(path, indexFileOptions(), true);
    file->pages->resize(0);
    const DbfHeader& header = table_.header();
    if (kind == IndexKind::Mdx) {
        auto mdx = std::make_unique<MdxFile>(*file->pages, *header.codePage);
        mdx->create(paths::baseName(path), header.format->level7, languageMark);
        file->format = std::move(mdx);
    } else if (kind == IndexKind::Ndx) {
        file->format = std::make_unique<NdxFile>(*file->pages, *header.codePage);
    } else {
        const bool single = kind == IndexKind::Idx;
        auto cdx = std::make_unique<CdxFile>(*file->pages, *header.codePage, single);
        if (!single)
            cdx->create();
        file->format = std::move(cdx);
    }
    if (kind == IndexKind::Mdx || kind == IndexKind::Cdx)
        table_.setProductionIndex(true);
    files_.push_back(std::move(file));
    return *files_.back();
}

IndexSet::IndexFile& IndexSet::fileForNew(IndexKind kind, const std::string& path)
{
    for (const auto& file : files_)
        if (file->kind == kind && kind != IndexKind::Ndx)
            return *file;
    if (kind == IndexKind::Ndx && table_.fileSystem().fileExists(path))
        throw EngineError(EngineErrorNumber::ItemExists, "There is a file " + path + " already.");
    return makeFile(kind, path, table_.header().languageMark);
}

/// The kind of new indexes: by the word that the table was opened by.
IndexKind IndexSet::kindForNew() const
{
    if (table_.foxWord())
        return IndexKind::Cdx;
    return table_.listsIndexFiles() ? IndexKind::Ndx : IndexKind::Mdx;
}

std::vector<std::size_t> IndexSet::fieldsFor(const IndexDef& def) const
{
    std::vector<std::size_t> fields;
    for (const IndexFieldDef& field : def.fields) {
        const int n = fieldOfName(table_.header(), field.name);
        if (n < 0)
            throw EngineError(EngineErrorNumber::InvalidIndex,
                              "There is no field \"" + field.name + "\".");
        if (field.descending != def.fields[0].descending)
            throw EngineError(EngineErrorNumber::InvalidIndex,
                              "The fields of an index rise all, or fall all.");
        fields.push_back(static_cast<std::size_t>(n));
    }
    return fields;
}

std::string IndexSet::nameFor(const IndexDef& def)
{
    const std::string name = paths::foldName(def.name);
    if (name.empty() || name.size() > kLongestName ||
        name.find_first_of("\\/:*?\"<>|.") != name.npos)
        throw EngineError(EngineErrorNumber::InvalidIndex,
                          "The name of an index has one to ten letters and digits.");
    for (const IndexDef& known : definitions())
        if (paths::sameName(known.name, name))
            throw EngineError(EngineErrorNumber::ItemExists,
                              "There is an index \"" + def.name + "\" already.");
    return name;
}

/// Names, texts and form of a new index; throws where it cannot be one.
NewTag IndexSet::newTag(const IndexDef& def, IndexKind kind)
{
    const DbfHeader& header = table_.header();
    NewTag made;
    made.name = nameFor(def);
    const std::string text =
        def.expression.empty() ? expressionOfFields(fieldsFor(def), header) : def.expression;
    const IndexExpression expression(text, header);
    if (!def.condition.empty())
        IndexExpression(def.condition, header);
    header.codePage->encode(text, made.expression);
    header.codePage->encode(def.condition, made.condition);
    made.unique = made.refusesEqual = def.unique || def.primary;
    made.descending = !def.fields.empty() && def.fields[0].descending;
    made.languageMark = header.languageMark;
    const DbfField* plain = expression.plainField();
    made.plainField = plain;
    if (kind == IndexKind::Cdx) {
        made.form = foxKeyForm(expression);
        made.form.nullByte = plain && plain->nullBit >= 0;
        made.form.length += made.form.nullByte;
        return made;
    }
    made.form = kind == IndexKind::Mdx ? mdxKeyForm(expression) : ndxKeyForm(expression);
    made.keyLetter = made.form.coding == KeyCoding::Text      ? 'C'
                     : made.form.coding == KeyCoding::LateDay ? 'D'
                     : made.form.coding == KeyCoding::Integer ? 'I'
                                                              : 'N';
    return made;
}

/// dBASE notes in a field's descriptor that it is a key by itself; `gone` is leaving.
void IndexSet::markPlainField(const std::unique_ptr<TableIndex>& gone, IndexKind kind,
                              const std::vector<std::unique_ptr<TableIndex>>& indexes)
{
    const auto plain = [this](const TableIndex& index) {
        return fieldOfName(table_.header(), index.tag().expression);
    };
    const int n = plain(*gone);
    if (kind != IndexKind::Mdx || n < 0)
        return;
    const bool stays = std::any_of(indexes.begin(), indexes.end(), [&](const auto& other) {
        return other != gone && plain(*other) == n;
    });
    table_.markIndexedField(static_cast<std::size_t>(n), stays);
}

void IndexSet::add(const IndexDef& def)
{
    open();
    if (!troubles_.empty())
        throw EngineError(EngineErrorNumber::IndexNotMaintained,
                          "The index file " + troubles_[0].first + ": " + troubles_[0].second);
    const IndexKind kind = kindForNew();
    const NewTag made = newTag(def, kind);
    const std::string path =
        kind == IndexKind::Ndx
            ? paths::join(paths::folder(table_.path()), made.name + ".NDX")
            : paths::withExtension(table_.path(), kind == IndexKind::Mdx ? "MDX" : "CDX");
    IndexFile& file = fileForNew(kind, path);
    auto index = openIndex(file, file.format->addTag(made));
    if (!index->tag().trouble.empty())
        throw EngineError(EngineErrorNumber::InvalidIndex, index->tag().trouble);
    index->build();
    if (kind == IndexKind::Mdx && made.plainField)
        table_.markIndexedField(index->fields().front(), true);
    auto place = file.indexes.end();
    if (kind == IndexKind::Cdx)
        place = std::find_if(file.indexes.begin(), file.indexes.end(), [&](const auto& other) {
            return other->tag().name > index->tag().name;
        });
    file.indexes.insert(place, std::move(index));
    if (kind == IndexKind::Ndx)
        listInInf(table_.fileSystem(), table_.path(), paths::fileName(path), made.unique);
}

void IndexSet::drop(std::string_view name)
{
    TableIndex& gone = find(name);
    for (const auto& file : files_) {
        const auto at = std::find_if(file->indexes.begin(), file->indexes.end(),
                                     [&](const auto& index) { return index.get() == &gone; });
        if (at == file->indexes.end())
            continue;
        ++epoch_;
        markPlainField(*at, file->kind, file->indexes);
        if (file->indexes.size() > 1) {
            if (gone.tag().walkable)
                gone.drop();
            file->format->removeTag(gone.tag());
            file->indexes.erase(at);
            return;
        }
        const std::string path = file->path;
        const auto other = [&](const auto& one) {
            return one != file && (one->kind == IndexKind::Mdx || one->kind == IndexKind::Cdx);
        };
        if (file->kind != IndexKind::Ndx)
            table_.setProductionIndex(std::any_of(files_.begin(), files_.end(), other));
        table_.removeCompanion(path);
        unlistInInf(table_.fileSystem(), table_.path(), paths::fileName(path));
        return;
    }
}

void IndexSet::needRebuildable()
{
    open();
    const auto refuse = [this](const std::string& what, const std::string& why) {
        throw EngineError(EngineErrorNumber::IndexNotMaintained,
                          table_.path() + " is not written anew: " + what + " cannot be built, " +
                              why + ".");
    };
    if (!troubles_.empty())
        refuse("the index file " + troubles_[0].first, troubles_[0].second);
    for (const auto& file : files_)
        for (const auto& index : file->indexes)
            if (!index->canBeBuilt())
                refuse("the index " + index->tag().name, index->tag().trouble);
}

std::string IndexSet::indexOnField(std::size_t field)
{
    open();
    const auto names = [&](std::string_view expression) {
        const auto fields = fieldsOfExpression(expression, table_.header());
        return std::find(fields.begin(), fields.end(), field) != fields.end();
    };
    for (const auto& file : files_)
        for (const auto& index : file->indexes)
            if (names(index->tag().expression) || names(index->tag().condition))
                return index->tag().name;
    return {};
}

/// The same index once more, with all that its header says.
NewTag IndexSet::sameTag(const TableIndex& index) const
{
    const IndexTag& tag = index.tag();
    const CodePage& page = *table_.header().codePage;
    NewTag made;
    page.encode(tag.name, made.name);
    page.encode(tag.expression, made.expression);
    page.encode(tag.condition, made.condition);
    made.unique = tag.unique;
    made.refusesEqual = tag.refusesEqual;
    made.descending = tag.descending;
    made.plainField = fieldOfName(table_.header(), tag.expression) >= 0;
    made.keyLetter = tag.keyLetter;
    made.languageMark = tag.languageMark;
    made.options = tag.options;
    made.form = index.keys()->form();
    return made;
}

/// The pages of one index at a time wait in memory. Gives how many records have the key of another
/// where that may not be.
std::uint64_t IndexSet::takeOver(IndexFile& file, TableIndex& index, bool tolerant)
{
    auto made = openIndex(file, file.format->addTag(sameTag(index)));
    if (!made->keys())
        throw EngineError(EngineErrorNumber::IndexNotMaintained, made->tag().trouble);
    const std::uint64_t doubled = made->build(tolerant);
    file.indexes.push_back(std::move(made));
    table_.noteChange();
    table_.commit();
    return doubled;
}

void IndexSet::takeOver(IndexFile& from, const ProblemSink* report)
{
    const auto lost = [&](const std::string& index, const std::string& why) {
        std::string where(paths::fileName(from.path));
        (*report)({index.empty() ? where : where + ", index " + index, why, false});
    };
    const auto buildable = [](const auto& index) { return index->canBeBuilt(); };
    if (report && std::none_of(from.indexes.begin(), from.indexes.end(), buildable))
        return lost("", "None of its indexes can be built; it is left out.");
    const std::uint8_t mark =
        from.indexes.empty() ? table_.header().languageMark : from.indexes[0]->tag().languageMark;
    IndexFile& file = makeFile(from.kind, from.path, mark);
    for (const auto& index : from.indexes) {
        if (report && !index->canBeBuilt())
            lost(index->tag().name,
                 "It cannot be built, " + index->tag().trouble + "; it is left out.");
        else if (const std::uint64_t doubled = takeOver(file, *index, report != nullptr))
            lost(index->tag().name,
                 std::to_string(doubled) + " records have the key of another; they are not in it.");
    }
    table_.noteChange();
    table_.commit();
}

void IndexSet::takeOver(IndexSet& old, const ProblemSink* report)
{
    old.open();
    open();
    if (report)
        for (const auto& [name, why] : old.troubles_)
            (*report)({name, why + " It is left out.", false});
    for (const auto& file : old.files_)
        takeOver(*file, report);
}

}  // namespace velnor::xbase
