#include "access/formats/xbase/index_set.h"

#include <algorithm>

#include "access/engine_error.h"
#include "access/formats/xbase/cdx_file.h"
#include "access/formats/xbase/dbf_table.h"
#include "access/formats/xbase/mdx_file.h"
#include "access/formats/xbase/ndx_file.h"
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

[[noreturn]] void misfit()
{
    throw EngineError(EngineErrorNumber::InvalidIndex,
                      "The length or type of its keys does not fit its expression.");
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
        misfit();
    form.length = tag.keyLength;
    return form;
}

/// The form of keys in a file of dBASE, by its header alone.
std::optional<KeyForm> dbaseFormOf(IndexKind kind, const IndexTag& tag)
{
    KeyForm form;
    form.length = tag.keyLength;
    form.turned = tag.descending;
    form.leavesOutDeleted = tag.primary;
    const char letter = tag.keyLetter;
    if (letter == 'C' && tag.keyLength > 0 && tag.keyLength <= 240)
        form.coding = KeyCoding::Text;
    else if (kind == IndexKind::Ndx && tag.keyLength == 8)
        form.coding = KeyCoding::Double;
    else if ((letter == 'N' || letter == 'F') && tag.keyLength == 12)
        form.coding = KeyCoding::Decimal;
    else if (letter == 'D' && tag.keyLength == 8)
        form.coding = KeyCoding::LateDay;
    else if ((letter == 'I' || letter == '+') && tag.keyLength == 4)
        form.coding = KeyCoding::Integer;
    else
        return std::nullopt;
    return form;
}

/// Whether an expression gives such keys.
void needFit(IndexKind kind, KeyForm& form, const IndexExpression& expression)
{
    const ExpressionType type = expression.type();
    const bool number = type == ExpressionType::Number || type == ExpressionType::Integer ||
                        type == ExpressionType::Money;
    const bool day = type == ExpressionType::Date;
    if (kind == IndexKind::Ndx && form.coding == KeyCoding::Double && day)
        form.coding = KeyCoding::LateDay;
    const bool fits = form.coding == KeyCoding::Text      ? type == ExpressionType::Text
                      : form.coding == KeyCoding::LateDay ? day
                      : form.coding == KeyCoding::Integer ? type == ExpressionType::Integer
                                                          : number;
    if (!fits)
        misfit();
}

/// Stands where an index has nothing that could be walked.
class NoNodes final : public NodeStore {
public:
    NoNodes() : NodeStore(1, true) {}
    std::uint32_t root() const override { return kNoNode; }
    void setRoot(std::uint32_t) override {}
    void load(std::uint32_t, TreeNode&) override { none(); }
    bool fits(const TreeNode&) const override { return true; }
    void store(const TreeNode&) override { none(); }
    std::uint32_t allocate() override { none(); }
    void release(std::uint32_t) override {}
    void releaseAll(std::span<const std::uint32_t>) override {}
    std::size_t fill(const SortedEntries&, std::size_t) const override { return 1; }
    std::size_t mostChildren() const override { return 2; }
    std::uint64_t mostNodes() const override { return 0; }

private:
    [[noreturn]] static void none()
    {
        throw EngineError(EngineErrorNumber::Corrupt, "The index has no tree.");
    }
};

std::string withoutStop(std::string text)
{
    while (text.ends_with('.'))
        text.pop_back();
    return text;
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
    std::unique_ptr<IndexFileFormat> format;
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
        file->pages = &table_.companion(file->path, indexFileOptions());
        openFormat(*file);
        for (IndexTag& tag : file->format->tags(paths::foldName(paths::baseName(name))))
            file->indexes.push_back(openIndex(*file, std::move(tag)));
        files_.push_back(std::move(file));
    } catch (const EngineError& error) {
        troubles_.emplace_back(name, error.what());
    }
}

void IndexSet::openFormat(IndexFile& file)
{
    const CodePage& page = *table_.header().codePage;
    if (file.kind == IndexKind::Mdx)
        file.format = std::make_unique<MdxFile>(*file.pages, page);
    else if (file.kind == IndexKind::Ndx)
        file.format = std::make_unique<NdxFile>(*file.pages, page);
    else if (file.kind == IndexKind::Idx && OldIdxFile::is(*file.pages))
        file.format = std::make_unique<OldIdxFile>(*file.pages, page);
    else
        file.format = std::make_unique<CdxFile>(*file.pages, page);
}

std::unique_ptr<TableIndex> IndexSet::openIndex(IndexFile& file, IndexTag tag)
{
    std::optional<KeyMaker> keys;
    std::unique_ptr<NodeStore> nodes;
    const bool fox = isFox(file.kind);
    std::uint8_t pad = tag.trouble.empty() ? likelyPad(tag) : 0;
    KeyForm form;
    form.length = tag.keyLength;
    try {
        if (const auto known = dbaseFormOf(file.kind, tag); !fox && known) {
            form = *known;
        } else if (!fox) {
            tag.walkable = false;
            misfit();
        }
        IndexExpression expression(tag.expression, table_.header());
        std::optional<IndexExpression> condition;
        if (!tag.condition.empty()) {
            condition.emplace(tag.condition, table_.header());
            if (condition->type() != ExpressionType::Logical)
                throw EngineError(EngineErrorNumber::InvalidIndex,
                                  "Its condition is no condition.");
        }
        if (tag.trouble.empty()) {
            if (fox)
                form = foxFormOf(tag, expression);
            else
                needFit(file.kind, form, expression);
            pad = form.coding == KeyCoding::Text ? ' ' : 0;
            keys.emplace(std::move(expression), std::move(condition), form);
        }
    } catch (const EngineError& error) {
        if (tag.trouble.empty())
            tag.trouble = withoutStop(error.what());
    }
    try {
        if (tag.walkable)
            nodes = file.format->nodes(tag, pad, form);
    } catch (const EngineError& error) {
        tag.walkable = false;
        tag.trouble = withoutStop(error.what());
    }
    if (!tag.walkable) {
        nodes = std::make_unique<NoNodes>();
        keys.reset();
    }
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
        std::vector<const IndexTag*> changed;
        for (const auto& index : file->indexes) {
            index->flush();
            if (index->changed())
                changed.push_back(&index->tag());
        }
        if (!changed.empty())
            file->format->touch(changed);
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
        if (file->kind == kind && kind != IndexKind::Ndx)
            return *file;
    auto file = std::make_unique<IndexFile>();
    file->path = path;
    file->kind = kind;
    if (kind == IndexKind::Ndx && table_.fileSystem().fileExists(path))
        throw EngineError(EngineErrorNumber::ItemExists, "There is a file " + path + " already.");
    file->pages = &table_.companion(path, indexFileOptions(), true);
    file->pages->resize(0);
    const DbfHeader& header = table_.header();
    if (kind == IndexKind::Mdx) {
        auto mdx = std::make_unique<MdxFile>(*file->pages, *header.codePage);
        mdx->create(paths::baseName(path), header.format->level7, header.languageMark);
        file->format = std::move(mdx);
    } else if (kind == IndexKind::Ndx) {
        file->format = std::make_unique<NdxFile>(*file->pages, *header.codePage);
    } else {
        auto cdx = std::make_unique<CdxFile>(*file->pages, *header.codePage);
        cdx->create();
        file->format = std::move(cdx);
    }
    if (kind != IndexKind::Ndx)
        table_.setProductionIndex(true);
    files_.push_back(std::move(file));
    return *files_.back();
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
    made.unique = def.unique || def.primary;
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
