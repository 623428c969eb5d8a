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
    std::size_t fill(const SortedEntries&, std::size_t) override { return 1; }
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

IndexSet::IndexSet(DbfTable& table) : table_(table) {}
IndexSet::~IndexSet() = default;

PageFileOptions IndexSet::indexFileOptions() const
{
    PageFileOptions options;
    options.pageSize = 4096;
    // Seeks go all over the file; a writer enters keys in order, and has changed pages beside.
    options.cacheBytes = (table_.readOnly() ? 16u : 4u) << 20;
    options.rank = 2;
    return options;
}

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
            index->flush([this] { table_.relieve(); });
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
