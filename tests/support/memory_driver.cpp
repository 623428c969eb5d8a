#include "tests/support/memory_driver.h"

#include <algorithm>

#include "access/value_text.h"
#include "platform/paths.h"

namespace velnor::test {
namespace {

int compareNumbers(double a, double b)
{
    return a < b ? -1 : a > b;
}

/// Null first; texts blind to case, as the engine's order is.
int compareValues(ValueView a, ValueView b)
{
    if (a.isNull() || b.isNull())
        return static_cast<int>(b.isNull()) - static_cast<int>(a.isNull());
    if (a.kind() == ValueKind::Text && b.kind() == ValueKind::Text)
        return paths::foldName(a.asText()).compare(paths::foldName(b.asText()));
    return compareNumbers(realOf(a).value_or(0), realOf(b).value_or(0));
}

int fieldNamed(const std::vector<FieldDef>& fields, std::string_view name)
{
    for (std::size_t i = 0; i < fields.size(); ++i)
        if (paths::sameName(fields[i].name, name))
            return static_cast<int>(i);
    return -1;
}

class MemoryCursor final : public RowCursor {
public:
    MemoryCursor(MemoryTable& table, MemoryIndex* index) : table_(table), index_(index) {}

    bool first() override
    {
        state_ = State::Before;
        return next();
    }
    bool last() override
    {
        state_ = State::Behind;
        return previous();
    }
    bool next() override { return index_ ? step(index_->entries, true) : stepRows(true); }
    bool previous() override { return index_ ? step(index_->entries, false) : stepRows(false); }
    bool moveTo(RowId row) override
    {
        const auto found = table_.rows.find(row);
        if (found == table_.rows.end())
            return false;
        here_ = index_ ? index_->entryOf(row, found->second) : MemoryIndex::Entry{{}, row};
        state_ = State::On;
        return true;
    }
    bool seek(Comparison comparison, std::span<const ValueView> key) override
    {
        if (!index_)
            return RowCursor::seek(comparison, key);
        const MemoryIndex::Entry* found = nullptr;
        for (const MemoryIndex::Entry& entry : index_->entries) {
            const int order = compareKey(entry, key);
            const bool low = comparison == Comparison::Less || comparison == Comparison::LessEqual;
            if (fits(comparison, order) && (low || !found))
                found = &entry;
        }
        if (!found)
            return false;
        here_ = *found;
        state_ = State::On;
        return true;
    }
    RowId row() const override { return here_.row; }
    ValueView field(int n) override
    {
        return table_.rows.at(here_.row).at(static_cast<std::size_t>(n)).view();
    }

private:
    enum class State { Before, On, Behind };

    static bool fits(Comparison comparison, int order)
    {
        switch (comparison) {
        case Comparison::Equal:
            return order == 0;
        case Comparison::GreaterEqual:
            return order >= 0;
        case Comparison::Greater:
            return order > 0;
        case Comparison::LessEqual:
            return order <= 0;
        case Comparison::Less:
            return order < 0;
        }
        return false;
    }

    int compareKey(const MemoryIndex::Entry& entry, std::span<const ValueView> key) const
    {
        for (std::size_t i = 0; i < key.size(); ++i)
            if (const int order = compareValues(entry.key[i].view(), key[i]); order != 0)
                return index_->def.fields[i].descending ? -order : order;
        return 0;
    }

    bool stand(const MemoryIndex::Entry& entry)
    {
        here_ = entry;
        state_ = State::On;
        return true;
    }

    template <class Set> bool step(Set& set, bool forward)
    {
        if (forward) {
            const auto at = state_ == State::Before   ? set.begin()
                            : state_ == State::Behind ? set.end()
                                                      : set.upper_bound(here_);
            if (at != set.end())
                return stand(*at);
            state_ = State::Behind;
            return false;
        }
        auto at = state_ == State::Behind   ? set.end()
                  : state_ == State::Before ? set.begin()
                                            : set.lower_bound(here_);
        if (at != set.begin())
            return stand(*--at);
        state_ = State::Before;
        return false;
    }

    bool stepRows(bool forward)
    {
        auto& rows = table_.rows;
        if (forward) {
            const auto at = state_ == State::Before   ? rows.begin()
                            : state_ == State::Behind ? rows.end()
                                                      : rows.upper_bound(here_.row);
            if (at != rows.end())
                return stand({{}, at->first});
            state_ = State::Behind;
            return false;
        }
        auto at = state_ == State::Behind   ? rows.end()
                  : state_ == State::Before ? rows.begin()
                                            : rows.lower_bound(here_.row);
        if (at != rows.begin())
            return stand({{}, (--at)->first});
        state_ = State::Before;
        return false;
    }

    MemoryTable& table_;
    MemoryIndex* index_;
    State state_ = State::Before;
    MemoryIndex::Entry here_{{}, 0};
};

std::size_t sizeOf(std::span<const Value> values)
{
    std::size_t bytes = 0;
    for (const Value& value : values)
        bytes += value.view().kind() == ValueKind::Text ? value.view().asText().size() : 8;
    return bytes;
}

class MemoryWriter final : public RowWriter {
public:
    MemoryWriter(MemoryDatabase& database, MemoryTable& table) : database_(database), table_(table)
    {
    }
    RowId insert(std::span<const ValueView> values) override
    {
        std::vector<Value> row(values.size());
        for (std::size_t i = 0; i < row.size(); ++i) {
            row[i].assign(values[i]);
            if (table_.layout.fields[i].autonumber && values[i].isNull())
                row[i].assign(ValueView::integer(table_.nextNumber++));
        }
        const RowId id = table_.nextRow;
        requireUnique(id, row);
        ++table_.nextRow;
        put(id, std::move(row));
        return id;
    }
    void update(RowId id, std::span<const FieldChange> changes) override
    {
        std::vector<Value> row = table_.rows.at(id);
        for (const FieldChange& change : changes)
            row[static_cast<std::size_t>(change.field)].assign(change.value);
        requireUnique(id, row);
        remove(id);
        put(id, std::move(row));
    }
    void remove(RowId id) override
    {
        const auto& row = table_.rows.at(id);
        for (const auto& index : table_.indexes)
            index->entries.erase(index->entryOf(id, row));
        database_.pending += 8;
        table_.rows.erase(id);
    }

private:
    void requireUnique(RowId id, std::span<const Value> row) const
    {
        for (const auto& index : table_.indexes) {
            const auto entry = index->entryOf(id, row);
            if (index->holdsKey(entry))
                throw EngineError(EngineErrorNumber::DuplicateKey, "Duplicate key.");
        }
    }
    void put(RowId id, std::vector<Value> row)
    {
        for (const auto& index : table_.indexes)
            index->entries.insert(index->entryOf(id, row));
        database_.pending += sizeOf(row);
        table_.rows[id] = std::move(row);
    }

    MemoryDatabase& database_;
    MemoryTable& table_;
};

class MemoryStore final : public Store {
public:
    MemoryStore(std::shared_ptr<MemoryDatabase> database, std::unique_ptr<File> lock)
        : database_(std::move(database)), lock_(std::move(lock))
    {
    }
    std::vector<TableEntry> catalogue() override
    {
        std::vector<TableEntry> all;
        for (const auto& [key, table] : database_->tables)
            all.push_back({table.layout.name, table.layout.attributes});
        return all;
    }
    TableLayout layout(std::string_view table) override { return named(table).layout; }
    std::int64_t recordCount(std::string_view table) override
    {
        return static_cast<std::int64_t>(named(table).rows.size());
    }
    std::unique_ptr<RowCursor> cursor(std::string_view table,
                                      std::optional<std::string_view> index) override
    {
        MemoryTable& found = named(table);
        if (!index)
            return std::make_unique<MemoryCursor>(found, nullptr);
        for (const auto& candidate : found.indexes)
            if (paths::sameName(candidate->def.name, *index))
                return std::make_unique<MemoryCursor>(found, candidate.get());
        throw EngineError(EngineErrorNumber::IndexKeyMissing, "No such index.");
    }
    std::unique_ptr<RowWriter> writer(std::string_view table) override
    {
        return std::make_unique<MemoryWriter>(*database_, named(table));
    }
    void createTable(const TableLayout& layout) override
    {
        const auto [at, added] = database_->tables.try_emplace(paths::foldName(layout.name));
        if (!added)
            throw EngineError(EngineErrorNumber::TableAlreadyExists, "Table exists.");
        at->second.layout = layout;
        for (const IndexDef& index : layout.indexes)
            at->second.indexes.push_back(std::make_unique<MemoryIndex>(index, layout.fields));
    }
    void dropTable(std::string_view table) override
    {
        named(table);
        database_->tables.erase(paths::foldName(table));
    }
    void addField(std::string_view table, const FieldDef& field) override
    {
        MemoryTable& found = named(table);
        found.layout.fields.push_back(field);
        for (auto& [id, row] : found.rows)
            row.emplace_back();
    }
    void dropField(std::string_view table, std::string_view field) override
    {
        MemoryTable& found = named(table);
        const int at = fieldNamed(found.layout.fields, field);
        for (const auto& index : found.indexes)
            if (std::count(index->positions.begin(), index->positions.end(), at) > 0)
                throw EngineError(EngineErrorNumber::InvalidIndex, "An index needs the field.");
        found.layout.fields.erase(found.layout.fields.begin() + at);
        for (auto& [id, row] : found.rows)
            row.erase(row.begin() + at);
        for (const auto& index : found.indexes)
            for (int& position : index->positions)
                position -= position > at;
    }
    void addIndex(std::string_view table, const IndexDef& def) override
    {
        MemoryTable& found = named(table);
        auto index = std::make_unique<MemoryIndex>(def, found.layout.fields);
        for (const auto& [id, row] : found.rows) {
            const auto entry = index->entryOf(id, row);
            if (index->holdsKey(entry))
                throw EngineError(EngineErrorNumber::DuplicateKey, "Duplicate key.");
            index->entries.insert(entry);
        }
        found.indexes.push_back(std::move(index));
        found.layout.indexes.push_back(def);
    }
    void dropIndex(std::string_view table, std::string_view name) override
    {
        MemoryTable& found = named(table);
        std::erase_if(found.indexes,
                      [&](const auto& index) { return paths::sameName(index->def.name, name); });
        std::erase_if(found.layout.indexes,
                      [&](const IndexDef& index) { return paths::sameName(index.name, name); });
    }
    bool acceptsPassword(std::string_view password) override
    {
        return database_->password.empty() || database_->password == password;
    }
    void commit() override
    {
        ++database_->commits;
        database_->pending = 0;
    }
    std::size_t pendingBytes() const override { return database_->pending; }
    void check(std::string_view, const ProblemSink&) override {}
    std::vector<std::pair<std::string, std::string>> info(std::string_view) override
    {
        return {{"Format", "memory"}};
    }

private:
    MemoryTable& named(std::string_view table)
    {
        const auto found = database_->tables.find(paths::foldName(table));
        if (found == database_->tables.end())
            throw EngineError(EngineErrorNumber::TableNotFound,
                              "No such table: " + std::string(table));
        return found->second;
    }

    std::shared_ptr<MemoryDatabase> database_;
    std::unique_ptr<File> lock_;
};

}  // namespace

bool MemoryIndex::Less::operator()(const Entry& a, const Entry& b) const
{
    for (std::size_t i = 0; i < a.key.size() && i < b.key.size(); ++i) {
        const int order = compareValues(a.key[i].view(), b.key[i].view());
        if (order != 0)
            return (*fields)[i].descending ? order > 0 : order < 0;
    }
    return a.row < b.row;
}

MemoryIndex::MemoryIndex(IndexDef definition, const std::vector<FieldDef>& fields)
    : def(std::move(definition)), entries(Less{&def.fields})
{
    for (const IndexFieldDef& key : def.fields)
        positions.push_back(fieldNamed(fields, key.name));
}

MemoryIndex::Entry MemoryIndex::entryOf(RowId row, std::span<const Value> values) const
{
    Entry entry{{}, row};
    for (const int position : positions)
        entry.key.push_back(values[static_cast<std::size_t>(position)]);
    return entry;
}

bool MemoryIndex::holdsKey(const Entry& entry) const
{
    if (!def.unique && !def.primary)
        return false;
    for (const Value& part : entry.key)
        if (part.isNull())
            return false;
    const auto at = entries.lower_bound({entry.key, 0});
    if (at == entries.end() || at->row == entry.row)
        return false;
    for (std::size_t i = 0; i < entry.key.size(); ++i)
        if (compareValues(at->key[i].view(), entry.key[i].view()) != 0)
            return false;
    return true;
}

MemoryDriver::MemoryDriver(std::vector<std::string_view> words) : words_(std::move(words))
{
    folderTraits.folder = true;
    folderTraits.maxFieldName = 10;
    folderTraits.cutFieldNames = true;
    folderTraits.emptyTextIsNull = true;
}

const FormatTraits& MemoryDriver::traits(std::string_view connectWord) const
{
    return connectWord == "MemoryFolder;" ? folderTraits : fileTraits;
}

MemoryDatabase& MemoryDriver::database(std::string_view path) const
{
    auto& held = databases_[paths::foldName(path)];
    if (!held)
        held = std::make_shared<MemoryDatabase>();
    return *held;
}

std::unique_ptr<Store> MemoryDriver::open(FileSystem& files, const OpenRequest& request) const
{
    std::unique_ptr<File> lock;
    if (!traits(request.connectWord).folder) {
        lock = files.open(request.name, request.readOnly ? OpenMode::Read : OpenMode::ReadWrite);
        if (!lock->tryLock(request.readOnly ? LockKind::Shared : LockKind::Exclusive))
            throw EngineError(EngineErrorNumber::FileInUse, "In use.");
    }
    const MemoryDatabase& found = database(request.name);
    if (!found.password.empty() && found.password != request.password)
        throw EngineError(EngineErrorNumber::InvalidPassword, "Not a valid password.");
    ++opened;
    return std::make_unique<MemoryStore>(databases_.at(paths::foldName(request.name)),
                                         std::move(lock));
}

void MemoryDriver::create(FileSystem& files, const CreateRequest& request) const
{
    files.open(request.name, OpenMode::CreateNew);
    database(request.name).password = request.password;
}

void MemoryDriver::compact(FileSystem& files, const OpenRequest& from,
                           const CreateRequest& to) const
{
    const auto store = open(files, from);
    create(files, to);
    const auto target = open(files, {to.name, false, true, {}, to.password, {}, {}});
    for (const TableEntry& entry : store->catalogue())
        target->createTable(store->layout(entry.name));
}

void MemoryDriver::repair(FileSystem& files, const OpenRequest& request, const ProblemSink&) const
{
    open(files, request);
    ++repaired;
}

}  // namespace velnor::test
