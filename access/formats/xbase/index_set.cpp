#include "access/formats/xbase/index_set.h"

#include <algorithm>

#include "access/engine_error.h"
#include "access/formats/xbase/dbf_table.h"
#include "platform/paths.h"

namespace velnor::xbase {
namespace {

constexpr std::size_t kLongestName = 10;

PageFileOptions indexFileOptions()
{
    PageFileOptions options;
    options.pageSize = 4096;
    options.rank = 2;
    return options;
}

IndexKind kindOfFile(std::string_view name)
{
    const std::string extension = paths::foldName(paths::extension(name));
    return extension == "MDX"   ? IndexKind::Mdx
           : extension == "NDX" ? IndexKind::Ndx
           : extension == "IDX" ? IndexKind::Idx
                                : IndexKind::Cdx;
}

bool isFox(IndexKind kind)
{
    return kind == IndexKind::Cdx || kind == IndexKind::Idx;
}

/// The form of keys in a FoxPro index whose header says this of them.
KeyForm foxFormOf(const IndexTag& tag, const IndexExpression& expression)
{
    KeyForm form = foxKeyForm(expression);
    form.nullByte = tag.nullByte;
    const std::uint32_t length = tag.keyLength - std::min(tag.keyLength, tag.nullByte ? 1u : 0u);
    if (form.coding == KeyCoding::Integer && length == 8)
        form.coding = KeyCoding::Double;
    else if (form.coding != KeyCoding::Text && form.length != length)
        throw EngineError(EngineErrorNumber::InvalidIndex,
                          "The length of its keys does not fit its expression.");
    form.length = tag.keyLength;
    return form;
}

/// The byte that ends keys, where the expression does not tell.
std::uint8_t likelyPad(const IndexTag& tag)
{
    const std::uint32_t length = tag.keyLength - (tag.nullByte ? 1 : 0);
    return length == 8 || length == 4 ? 0 : ' ';
}

}  // namespace

struct IndexSet::IndexFile {
    std::string path;
    IndexKind kind = IndexKind::Cdx;
    PageFile* pages = nullptr;
    std::unique_ptr<CdxFile> cdx;
    std::vector<std::unique_ptr<TableIndex>> indexes;
};

IndexSet::IndexSet(DbfTable& table) : table_(table) {}
IndexSet::~IndexSet() = default;

void IndexSet::open()
{
    if (open_)
        return;
    open_ = true;
    for (const std::string& name : table_.indexFiles())
        openFile(name);
}

void IndexSet::openFile(const std::string& name)
{
    auto file = std::make_unique<IndexFile>();
    file->path = paths::join(paths::folder(table_.path()), name);
    file->kind = kindOfFile(name);
    try {
        if (!isFox(file->kind))
            throw EngineError(EngineErrorNumber::IndexNotMaintained,
                              "Index files of this kind are not kept.");
        file->pages = &table_.companion(file->path, indexFileOptions());
        file->cdx = std::make_unique<CdxFile>(*file->pages, *table_.header().codePage);
        for (IndexTag& tag : file->cdx->tags(paths::foldName(paths::baseName(name))))
            file->indexes.push_back(openIndex(*file, std::move(tag)));
        files_.push_back(std::move(file));
    } catch (const EngineError& error) {
        troubles_.emplace_back(name, error.what());
    }
}

std::unique_ptr<TableIndex> IndexSet::openIndex(IndexFile& file, IndexTag tag)
{
    std::optional<KeyMaker> keys;
    std::uint8_t pad = tag.trouble.empty() ? likelyPad(tag) : 0;
    try {
        IndexExpression expression(tag.expression, table_.header());
        std::optional<IndexExpression> condition;
        if (!tag.condition.empty()) {
            condition.emplace(tag.condition, table_.header());
            if (condition->type() != ExpressionType::Logical)
                throw EngineError(EngineErrorNumber::InvalidIndex,
                                  "Its condition is no condition.");
        }
        if (tag.trouble.empty()) {
            const KeyForm form = foxFormOf(tag, expression);
            pad = form.coding == KeyCoding::Text ? ' ' : 0;
            keys.emplace(std::move(expression), std::move(condition), form);
        }
    } catch (const EngineError& error) {
        if (tag.trouble.empty())
            tag.trouble = error.what();
        while (tag.trouble.ends_with('.'))
            tag.trouble.pop_back();
    }
    auto nodes = file.cdx->nodes(tag, pad);
    return std::make_unique<TableIndex>(table_, std::move(tag), std::move(nodes), std::move(keys));
}

bool IndexSet::shows(const IndexFile& file) const
{
    return isFox(file.kind) == table_.foxWord();
}

std::vector<IndexDef> IndexSet::definitions()
{
    open();
    std::vector<IndexDef> found;
    for (const auto& file : files_)
        if (shows(*file))
            for (const auto& index : file->indexes)
                found.push_back(index->definition());
    return found;
}

TableIndex& IndexSet::find(std::string_view name)
{
    open();
    for (const auto& file : files_)
        if (shows(*file))
            for (const auto& index : file->indexes)
                if (paths::sameName(index->tag().name, name))
                    return *index;
    throw EngineError(EngineErrorNumber::IndexKeyMissing,
                      "There is no index \"" + std::string(name) + "\".");
}

void IndexSet::needKept()
{
    open();
    const auto refuse = [this](const std::string& what, const std::string& why) {
        throw EngineError(EngineErrorNumber::IndexNotMaintained,
                          table_.path() + " is not written: " + what + " would go stale, " + why +
                              ".");
    };
    if (!troubles_.empty())
        refuse("the index file " + troubles_[0].first, troubles_[0].second);
    for (const auto& file : files_)
        for (const auto& index : file->indexes)
            if (!index->whyNotKept().empty())
                refuse("the index " + index->tag().name, index->whyNotKept());
}

void IndexSet::before(std::uint32_t number, RecordImage oldImage, RecordImage newImage)
{
    for (const auto& file : files_)
        for (const auto& index : file->indexes)
            index->before(number, oldImage, newImage);
}

void IndexSet::after(std::uint32_t number)
{
    for (const auto& file : files_)
        for (const auto& index : file->indexes)
            index->after(number);
}

bool IndexSet::caresForDeletion()
{
    for (const auto& file : files_)
        for (const auto& index : file->indexes)
            if (index->caresForDeletion())
                return true;
    return false;
}

void IndexSet::beforeCommit()
{
    for (const auto& file : files_) {
        bool changed = false;
        for (const auto& index : file->indexes) {
            index->flush();
            changed |= index->changed();
        }
        if (changed)
            file->cdx->touch();
    }
}

void IndexSet::committed()
{
    for (const auto& file : files_)
        for (const auto& index : file->indexes)
            index->committed();
}

std::size_t IndexSet::pendingBytes() const
{
    std::size_t bytes = 0;
    for (const auto& file : files_)
        for (const auto& index : file->indexes)
            bytes += index->pendingBytes();
    return bytes;
}

void IndexSet::forget()
{
    files_.clear();
    troubles_.clear();
    open_ = false;
    ++epoch_;
}

IndexSet::IndexFile& IndexSet::fileForNew(IndexKind kind, const std::string& path)
{
    for (const auto& file : files_)
        if (file->kind == kind && paths::sameName(file->path, path))
            return *file;
    auto file = std::make_unique<IndexFile>();
    file->path = path;
    file->kind = kind;
    file->pages = &table_.companion(path, indexFileOptions(), true);
    file->pages->resize(0);
    file->cdx = std::make_unique<CdxFile>(*file->pages, *table_.header().codePage);
    file->cdx->create();
    table_.setProductionIndex(true);
    files_.push_back(std::move(file));
    return *files_.back();
}

void IndexSet::add(const IndexDef& def)
{
    open();
    const DbfHeader& header = table_.header();
    if (!table_.foxWord())
        throw EngineError(EngineErrorNumber::NotSupported,
                          "Indexes of dBASE tables cannot be made.");
    if (!troubles_.empty())
        throw EngineError(EngineErrorNumber::IndexNotMaintained,
                          "The index file " + troubles_[0].first + ": " + troubles_[0].second);
    NewTag made;
    made.name = paths::foldName(def.name);
    if (made.name.empty() || made.name.size() > kLongestName)
        throw EngineError(EngineErrorNumber::InvalidIndex,
                          "The name of an index has one to ten characters.");
    for (const IndexDef& known : definitions())
        if (paths::sameName(known.name, made.name))
            throw EngineError(EngineErrorNumber::ItemExists,
                              "There is an index \"" + def.name + "\" already.");
    std::vector<std::size_t> fields;
    for (const IndexFieldDef& field : def.fields) {
        const int n = fieldOfName(header, field.name);
        if (n < 0)
            throw EngineError(EngineErrorNumber::InvalidIndex,
                              "There is no field \"" + field.name + "\".");
        if (field.descending != def.fields[0].descending)
            throw EngineError(EngineErrorNumber::InvalidIndex,
                              "The fields of an index rise all, or fall all.");
        fields.push_back(static_cast<std::size_t>(n));
    }
    const std::string text =
        def.expression.empty() ? expressionOfFields(fields, header) : def.expression;
    IndexExpression expression(text, header);
    header.codePage->encode(text, made.expression);
    header.codePage->encode(def.condition, made.condition);
    made.unique = def.unique || def.primary;
    made.descending = !def.fields.empty() && def.fields[0].descending;
    made.plainField = expression.plainField();
    made.form = foxKeyForm(expression);
    const DbfField* plain = expression.plainField();
    if (plain && plain->nullBit >= 0) {
        made.form.nullByte = true;
        ++made.form.length;
    }
    if (!def.condition.empty())
        IndexExpression(def.condition, header);
    IndexFile& file = fileForNew(IndexKind::Cdx, paths::withExtension(table_.path(), "CDX"));
    IndexTag tag = file.cdx->addTag(made);
    auto index = openIndex(file, std::move(tag));
    if (!index->tag().trouble.empty())
        throw EngineError(EngineErrorNumber::InvalidIndex, index->tag().trouble);
    index->build();
    const auto place =
        std::find_if(file.indexes.begin(), file.indexes.end(),
                     [&](const auto& other) { return other->tag().name > index->tag().name; });
    file.indexes.insert(place, std::move(index));
}

void IndexSet::drop(std::string_view name)
{
    TableIndex& gone = find(name);
    for (const auto& file : files_) {
        const auto at = std::find_if(file->indexes.begin(), file->indexes.end(),
                                     [&](const auto& index) { return index.get() == &gone; });
        if (at == file->indexes.end())
            continue;
        if (file->indexes.size() > 1) {
            if (gone.tag().walkable)
                gone.drop();
            file->cdx->removeTag(gone.tag());
            file->cdx->touch();
            file->indexes.erase(at);
        } else {
            table_.setProductionIndex(false);
            table_.removeCompanion(std::string(file->path));
        }
        ++epoch_;
        return;
    }
}

std::vector<IndexSet::Named> IndexSet::all()
{
    open();
    std::vector<Named> found;
    for (const auto& file : files_)
        for (const auto& index : file->indexes)
            found.push_back({std::string(paths::fileName(file->path)), index.get()});
    return found;
}

std::vector<std::pair<std::string, std::string>> IndexSet::troubles()
{
    open();
    return troubles_;
}

}  // namespace velnor::xbase
