#include "fuzz/paradox_exercise.h"

#include <array>
#include <string>
#include <vector>

#include "access/formats/paradox/paradox_driver.h"
#include "fuzz/exercise.h"

namespace velnor::fuzzing {
namespace {

constexpr int kMostRecords = 2000;

std::unique_ptr<Store> openStore(MemoryFileSystem& files, bool readOnly)
{
    static const paradox::ParadoxDriver driver;
    OpenRequest request;
    request.name = "C:\\";
    request.connectWord = "Paradox 5.x;";
    request.readOnly = readOnly;
    request.password = "123";
    return driver.open(files, request);
}

FieldDef field(std::string name, FieldType type, int size = 0)
{
    FieldDef def;
    def.name = std::move(name);
    def.type = type;
    def.size = size;
    return def;
}

void walk(Store& store, std::optional<std::string_view> index, std::size_t fields)
{
    const auto cursor = store.cursor("T", index);
    int records = 0;
    for (bool on = cursor->first(); on && records < kMostRecords; on = cursor->next(), ++records)
        for (std::size_t i = 0; i < fields; ++i)
            seen = seen + touch(cursor->field(static_cast<int>(i)));
    for (bool on = cursor->last(); on && records-- > 0; on = cursor->previous())
        seen = seen + cursor->row();
    if (cursor->first()) {
        seen = seen + cursor->moveTo(cursor->row());
        seen = seen + cursor->moveToOrdinal(3);
        seen = seen + static_cast<std::uint64_t>(cursor->ordinal());
    }
    const ValueView key = ValueView::integer(7);
    attempt([&] { seen = seen + cursor->seek(Comparison::GreaterEqual, {&key, 1}); });
}

void readAll(MemoryFileSystem& files)
{
    const auto store = openStore(files, true);
    const TableLayout layout = store->layout("T");
    attempt([&] { walk(*store, std::nullopt, layout.fields.size()); });
    for (const IndexDef& index : layout.indexes)
        attempt([&] { walk(*store, index.name, layout.fields.size()); });
    attempt([&] { seen = seen + store->info("T").size(); });
    attempt([&] { store->check("T", [](const Problem& p) { seen = seen + p.text.size(); }); });
}

ValueView valueFor(FieldType type)
{
    static constexpr std::uint8_t kBytes[] = {1, 2, 3};
    switch (valueKindOf(type)) {
    case ValueKind::Boolean:
        return ValueView::boolean(true);
    case ValueKind::Integer:
        return ValueView::integer(77);
    case ValueKind::Currency:
        return ValueView::currency(12345);
    case ValueKind::Real:
        return ValueView::real(0.5);
    case ValueKind::Date:
        return ValueView::date(36526.25);
    case ValueKind::Text:
        return ValueView::text(type == FieldType::Memo ? std::string_view("A memo \xC3\xA4, long")
                                                       : "z");
    case ValueKind::Bytes:
        return ValueView::bytes(kBytes);
    default:
        return {};
    }
}

void change(Store& store)
{
    const TableLayout layout = store.layout("T");
    std::vector<FieldChange> changes;
    std::vector<ValueView> values;
    for (std::size_t i = 0; i < layout.fields.size(); ++i) {
        values.push_back(valueFor(layout.fields[i].type));
        if (i > 0)
            changes.push_back({static_cast<int>(i), values.back()});
    }
    const auto writer = store.writer("T");
    const auto cursor = store.cursor("T", std::nullopt);
    attempt([&] {
        if (cursor->first())
            writer->update(cursor->row(), changes);
    });
    attempt([&] {
        if (cursor->next())
            writer->remove(cursor->row());
    });
    attempt([&] { writer->insert(values); });
    attempt([&] { writer->insert(std::vector<ValueView>(values.size())); });
    store.commit();
}

}  // namespace

void exerciseParadox(MemoryFileSystem& files, bool structure)
{
    attempt([&] { readAll(files); });
    attempt([&] {
        const auto store = openStore(files, false);
        attempt([&] { change(*store); });
        if (structure) {
            attempt([&] { store->addField("T", field("EXTRA", FieldType::Double)); });
            attempt([&] { store->dropField("T", "M"); });
        }
        attempt([&] { change(*store); });
        store->commit();
    });
    attempt([&] { readAll(files); });
}

void putParadoxFamily(MemoryFileSystem& files)
{
    const auto store = openStore(files, false);
    TableLayout layout;
    layout.name = "T";
    layout.fields = {field("ID", FieldType::Long), field("A", FieldType::Text, 40),
                     field("M", FieldType::Memo), field("D", FieldType::Date)};
    const auto index = [](std::string name, std::vector<IndexFieldDef> fields) {
        IndexDef def;
        def.name = std::move(name);
        def.fields = std::move(fields);
        return def;
    };
    layout.indexes = {index("T#PX", {{"ID"}}), index("A", {{"A"}}), index("G", {{"A"}, {"D"}})};
    layout.indexes[0].primary = layout.indexes[0].unique = true;
    store->createTable(layout);
    const auto writer = store->writer("T");
    for (int i = 0; i < 90; ++i) {
        const std::string name = "name " + std::to_string(i * 7 % 90);
        const std::string memo(static_cast<std::size_t>(i % 9) * 400, 'm');
        writer->insert(std::array{ValueView::integer(i * 7 % 90), ValueView::text(name),
                                  memo.empty() ? ValueView() : ValueView::text(memo),
                                  ValueView::date(40000 + i)});
    }
    store->commit();
}

}  // namespace velnor::fuzzing
