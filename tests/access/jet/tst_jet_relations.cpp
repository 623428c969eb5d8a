// Relationships that are enforced: no child without its parent, and changes carried on where the
// relationship says so.
#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <set>
#include <utility>

#include "access/engine_error.h"
#include "access/formats/jet/catalog.h"
#include "access/formats/jet/catalog_objects.h"
#include "access/formats/jet/data_page.h"
#include "access/formats/jet/jet_driver.h"
#include "access/formats/jet/jet_file.h"
#include "access/formats/jet/relation_rows.h"
#include "tests/access/jet/jet_testing.h"

namespace velnor::testing {
namespace {

enum Rule : std::uint8_t { kRefuse = 0, kCascade = 1, kSetNull = 2 };

class Related : public ::testing::TestWithParam<int> {
protected:
    void SetUp() override
    {
        CreateRequest request;
        request.name = kTestFile;
        request.options = GetParam() == 3 ? 32 : 0;
        driver_.create(files_, request);
        const auto store = driver_.open(files_, writing());
        // Regions have customers, customers have orders, orders have lines; staff have chiefs.
        makeTable(*store, "Regions", {"Code"}, "Code");
        makeTable(*store, "Customers", {"ID", "Region"}, "ID", "Region");
        makeTable(*store, "Orders", {"ID", "Customer"}, "ID", "Customer");
        makeTable(*store, "Staff", {"ID", "Chief"}, "ID", "Chief");
    }
    static void makeTable(Store& store, const char* name, std::initializer_list<const char*> fields,
                          const char* key, const char* foreign = nullptr)
    {
        TableLayout layout;
        layout.name = name;
        for (const char* field : fields) {
            FieldDef def;
            def.name = field;
            const bool text =
                std::string_view(field) == "Code" || std::string_view(field) == "Region";
            def.type = text ? FieldType::Text : FieldType::Long;
            def.size = text ? 20 : 4;
            layout.fields.push_back(def);
        }
        FieldDef note;
        note.name = "Note";
        note.type = FieldType::Memo;
        layout.fields.push_back(note);
        IndexDef primary;
        primary.name = "PrimaryKey";
        primary.fields = {{key, false}};
        primary.primary = primary.unique = primary.required = true;
        layout.indexes.push_back(primary);
        if (foreign) {
            IndexDef child;
            child.name = std::string(name) + foreign;
            child.fields = {{foreign, false}};
            layout.indexes.push_back(child);
        }
        store.createTable(layout);
    }
    /// Makes index `end` of the child table the child's end of a relationship to `parent`.
    void relate(const char* child, const char* end, const char* parent, Rule update, Rule remove)
    {
        jet::JetFile file(files_, writing());
        jet::Catalog catalog(file);
        const auto pageOf = [&](const char* name) {
            return static_cast<jet::PageNumber>(catalog.find(name)->id);
        };
        const bool itself = std::string_view(child) == parent;
        jet::JetTable children(file, pageOf(child), child), parents(file, pageOf(parent), parent);
        jet::TableDef below = children.def(), above = parents.def();
        jet::TableDef& holder = itself ? below : above;
        jet::LogicalIndex top;
        for (const jet::LogicalIndex& index : holder.logicalIndexes) {
            top.number = std::max(top.number, index.number + 1);
            if (index.kind == jet::LogicalKind::Primary)
                top.realIndex = index.realIndex;
        }
        top.name = ".r" + std::string(1, static_cast<char>('B' + relations_++));
        top.relation = jet::RelationKind::Parent;
        top.otherTable = below.page();
        top.updateRule = update;
        top.deleteRule = remove;
        for (jet::LogicalIndex& index : below.logicalIndexes)
            if (index.name == end) {
                index.relation = jet::RelationKind::Child;
                index.kind = jet::LogicalKind::Foreign;
                index.otherTable = above.page();
                index.otherIndex = static_cast<std::int32_t>(top.number);
                index.updateRule = update;
                index.deleteRule = remove;
                top.otherIndex = static_cast<std::int32_t>(index.number);
            }
        holder.logicalIndexes.insert(holder.logicalIndexes.begin(), top);
        writeTableChain(file, buildTableDef(below, file.names()), below.chain);
        if (!itself)
            writeTableChain(file, buildTableDef(above, file.names()), above.chain);
        jet::RelationRows(file, catalog).complete([](const std::string&) {});
        addMissingRights(catalog);
        catalog.saveCounts();
        file.commit();
    }
    void open() { store_ = driver_.open(files_, writing()); }
    static ValueView view(const char* text) { return ValueView::text(text); }
    static ValueView view(int number) { return ValueView::integer(number); }
    static ValueView view(std::nullptr_t) { return ValueView::null(); }

    template <class... Values> RowId add(const char* table, Values... values)
    {
        std::vector<ValueView> row{view(values)...};
        row.resize(sizeof...(values) + 1);
        return store_->writer(table)->insert(row);
    }
    template <class Step> static int errorOf(Step step)
    {
        try {
            step();
        } catch (const EngineError& error) {
            return error.number();
        }
        return 0;
    }
    template <class T> int change(const char* table, RowId row, int field, T value)
    {
        return errorOf([&] {
            const FieldChange one{field, view(value)};
            store_->writer(table)->update(row, std::span(&one, 1));
        });
    }
    int remove(const char* table, RowId row)
    {
        return errorOf([&] { store_->writer(table)->remove(row); });
    }
    /// Field n of every record.
    std::multiset<std::string> column(const char* table, int n)
    {
        std::multiset<std::string> values;
        const auto cursor = store_->cursor(table, std::nullopt);
        for (bool on = cursor->first(); on; on = cursor->next()) {
            const ValueView v = cursor->field(n);
            values.insert(v.isNull()                    ? "Null"
                          : v.kind() == ValueKind::Text ? std::string(v.asText())
                                                        : std::to_string(v.asInteger()));
        }
        return values;
    }
    using Texts = std::multiset<std::string>;
    /// The only record of a table.
    RowId rowOf(const char* table)
    {
        const auto cursor = store_->cursor(table, std::nullopt);
        return cursor->first() ? cursor->row() : 0;
    }
    /// What the definition of a table says; the store is closed for it and opened again.
    template <class Look> auto fromDefinition(const char* table, Look look)
    {
        store_->commit();
        store_.reset();
        const auto found = [&] {
            jet::JetFile file(files_, reading());
            jet::Catalog catalog(file);
            const auto page = static_cast<jet::PageNumber>(catalog.find(table)->id);
            return look(jet::JetTable(file, page, table).def());
        }();
        open();
        return found;
    }
    jet::PageNumber rootOf(const char* table, std::string_view index)
    {
        return fromDefinition(table, [&](const jet::TableDef& def) {
            for (const jet::LogicalIndex& known : def.logicalIndexes)
                if (known.name == index)
                    return def.realIndexes[known.realIndex].root;
            return jet::PageNumber{0};
        });
    }
    jet::RowPointer mapOfNotes(const char* table)
    {
        return fromDefinition(table, [](const jet::TableDef& def) { return def.longValues[0].owned; });
    }
    /// Where the bytes of a record begin in its page.
    std::size_t recordAt(jet::RowPointer place)
    {
        const jet::JetFormat& format = GetParam() == 3 ? jet::kJet3 : jet::kJet4;
        const auto bytes = files_.content(kTestFile);
        const std::uint8_t* page = bytes.data() + std::size_t{place.page} * format.pageSize;
        return static_cast<std::size_t>(jet::DataPage(format, page).row(place.slot)->data() - page);
    }
    /// Puts a byte into a page of the file, and gives the one that was there.
    std::uint8_t patch(jet::PageNumber page, std::size_t at, std::uint8_t byte)
    {
        store_->commit();
        store_.reset();
        auto bytes = files_.content(kTestFile);
        const std::size_t size = GetParam() == 3 ? jet::kJet3.pageSize : jet::kJet4.pageSize;
        const std::uint8_t was = std::exchange(bytes[page * size + at], byte);
        files_.put(kTestFile, bytes);
        open();
        return was;
    }
    void TearDown() override
    {
        if (!store_)
            return;
        store_->commit();
        store_->check({}, [](const Problem& problem) {
            ADD_FAILURE() << problem.where << ": " << problem.text;
        });
        const Verdict verdict = outsideCheck(files_.content(kTestFile));
        if (verdict.available) {
            EXPECT_TRUE(verdict.sound) << verdict.output;
        }
    }

    MemoryFileSystem files_;
    jet::JetDriver driver_;
    std::unique_ptr<Store> store_;
    int relations_ = 0;
};

TEST_P(Related, aChildNeedsItsParent)
{
    relate("Customers", "CustomersRegion", "Regions", kRefuse, kRefuse);
    open();
    add("Regions", "north");
    EXPECT_EQ(errorOf([&] { add("Customers", 1, "south"); }), 3201);
    const RowId customer = add("Customers", 1, "NORTH");  // keys are blind to case
    add("Customers", 2, nullptr);                         // belongs to nothing
    EXPECT_EQ(change("Customers", customer, 1, "south"), 3201);
    EXPECT_EQ(change("Customers", customer, 1, "North"), 0);
    EXPECT_EQ(change("Customers", customer, 1, nullptr), 0);
    EXPECT_EQ(change("Customers", customer, 0, 7), 0) << "no part of the relationship";
    EXPECT_EQ(column("Customers", 0), (Texts{"2", "7"}));
}

TEST_P(Related, aParentWithChildrenStays)
{
    relate("Customers", "CustomersRegion", "Regions", kRefuse, kRefuse);
    open();
    const RowId north = add("Regions", "north"), south = add("Regions", "south");
    const RowId customer = add("Customers", 1, "north");
    EXPECT_EQ(remove("Regions", north), 3200);
    EXPECT_EQ(change("Regions", north, 0, "up"), 3200);
    EXPECT_EQ(change("Regions", north, 0, "NORTH"), 0) << "the key is the same";
    EXPECT_EQ(change("Regions", south, 0, "down"), 0);
    EXPECT_EQ(remove("Regions", south), 0);
    EXPECT_EQ(remove("Customers", customer), 0);
    EXPECT_EQ(remove("Regions", north), 0);
    EXPECT_EQ(column("Regions", 0), Texts{});
}

TEST_P(Related, aNewKeyOfTheParentReachesItsChildren)
{
    relate("Customers", "CustomersRegion", "Regions", kCascade, kRefuse);
    relate("Orders", "OrdersCustomer", "Customers", kCascade, kRefuse);
    open();
    const RowId north = add("Regions", "north");
    add("Regions", "south");
    const RowId one = add("Customers", 1, "north");
    add("Customers", 2, "south");
    for (int i = 0; i < 300; ++i)
        add("Orders", i, i % 2 + 1);
    EXPECT_EQ(change("Regions", north, 0, "a far longer name"), 0);
    EXPECT_EQ(column("Customers", 1), (Texts{"a far longer name", "south"}));
    EXPECT_EQ(change("Customers", one, 0, 77), 0);
    EXPECT_EQ(column("Orders", 1).count("77"), 150u);
    EXPECT_EQ(column("Orders", 1).count("1"), 0u);
    EXPECT_EQ(remove("Customers", one), 3200);
    EXPECT_EQ(change("Customers", one, 0, 2), 3022) << "and nothing was changed";
    EXPECT_EQ(column("Orders", 1).count("77"), 150u);
    // Children are found by their index in its new order.
    const auto cursor = store_->cursor("Orders", "OrdersCustomer");
    const ValueView key = ValueView::integer(77);
    ASSERT_TRUE(cursor->seek(Comparison::Equal, std::span(&key, 1)));
}

TEST_P(Related, deletingAParentDeletesThoseBelowIt)
{
    relate("Customers", "CustomersRegion", "Regions", kRefuse, kCascade);
    relate("Orders", "OrdersCustomer", "Customers", kRefuse, kCascade);
    open();
    const RowId north = add("Regions", "north");
    add("Regions", "south");
    for (int c = 0; c < 10; ++c) {
        add("Customers", c, c < 6 ? "north" : "south");
        for (int o = 0; o < 40; ++o)
            add("Orders", c * 100 + o, c);
    }
    EXPECT_EQ(remove("Regions", north), 0);
    EXPECT_EQ(column("Regions", 0), Texts{"south"});
    EXPECT_EQ(store_->recordCount("Customers"), 4);
    EXPECT_EQ(store_->recordCount("Orders"), 160);
    EXPECT_EQ(column("Orders", 1).count("5"), 0u);
}

TEST_P(Related, whatStopsACascadeFurtherDownStopsItAsAWhole)
{
    relate("Customers", "CustomersRegion", "Regions", kRefuse, kCascade);
    relate("Orders", "OrdersCustomer", "Customers", kRefuse, kRefuse);
    open();
    const RowId north = add("Regions", "north");
    for (int c = 0; c < 5; ++c)
        add("Customers", c, "north");
    const RowId order = add("Orders", 1, 4);
    EXPECT_EQ(remove("Regions", north), 3200);
    EXPECT_EQ(store_->recordCount("Regions"), 1);
    EXPECT_EQ(store_->recordCount("Customers"), 5);
    EXPECT_EQ(remove("Orders", order), 0);
    EXPECT_EQ(remove("Regions", north), 0);
    EXPECT_EQ(store_->recordCount("Customers"), 0);
}

TEST_P(Related, aDeleteThatDamageStopsHalfWay_takesNothingAway)
{
    relate("Customers", "CustomersRegion", "Regions", kRefuse, kCascade);
    relate("Orders", "OrdersCustomer", "Customers", kRefuse, kCascade);
    open();
    const RowId north = add("Regions", "north");
    for (int c = 0; c < 3; ++c) {
        add("Customers", c, "north");
        for (int o = 0; o < 200; ++o)
            add("Orders", c * 1000 + o, c);
    }
    const Texts orders = column("Orders", 0);
    // The orders go first, then the first customer cannot be taken out of its index.
    const auto page = rootOf("Customers", "PrimaryKey");
    const auto was = patch(page, 0, 0x55);
    EXPECT_EQ(remove("Regions", north), 3197);
    EXPECT_EQ(store_->recordCount("Orders"), 600);
    EXPECT_EQ(column("Orders", 0), orders);
    EXPECT_EQ(store_->recordCount("Customers"), 3);
    EXPECT_EQ(store_->recordCount("Regions"), 1);
    patch(page, 0, was);
    add("Orders", 5000, 1);
    EXPECT_EQ(store_->recordCount("Orders"), 601);
    EXPECT_EQ(remove("Regions", rowOf("Regions")), 0);
    EXPECT_EQ(store_->recordCount("Orders"), 0);
}

TEST_P(Related, aNewKeyThatCannotBeWritten_leavesTheChildrenTheirOldOne)
{
    relate("Customers", "CustomersRegion", "Regions", kCascade, kRefuse);
    open();
    const RowId north = add("Regions", "north");
    for (int c = 0; c < 300; ++c)
        add("Customers", c, "north");
    // The children follow first; then the parent's memo finds no page.
    const jet::RowPointer map = mapOfNotes("Regions");
    const auto at = recordAt(map);
    const auto was = patch(map.page, at, 7);
    const std::string note(6000, 'n');
    const FieldChange both[] = {{0, view("a far longer name")}, {1, ValueView::text(note)}};
    EXPECT_EQ(errorOf([&] { store_->writer("Regions")->update(north, both); }), 3197);
    EXPECT_EQ(column("Customers", 1).count("north"), 300u);
    EXPECT_EQ(column("Regions", 0), Texts{"north"});
    patch(map.page, at, was);
    EXPECT_EQ(errorOf([&] { store_->writer("Regions")->update(rowOf("Regions"), both); }), 0);
    EXPECT_EQ(column("Customers", 1).count("a far longer name"), 300u);
}

TEST_P(Related, childrenCanBeLeftWithoutAParent)
{
    relate("Customers", "CustomersRegion", "Regions", kRefuse, kSetNull);
    open();
    const RowId north = add("Regions", "north");
    add("Customers", 1, "north");
    add("Customers", 2, "north");
    EXPECT_EQ(remove("Regions", north), 0);
    EXPECT_EQ(column("Customers", 1), (Texts{"Null", "Null"}));
}

TEST_P(Related, aTableCanBeRelatedToItself)
{
    relate("Staff", "StaffChief", "Staff", kCascade, kCascade);
    open();
    EXPECT_EQ(errorOf([&] { add("Staff", 2, 1); }), 3201);
    const RowId chief = add("Staff", 1, 1);  // one's own chief
    RowId last = chief;
    for (int i = 2; i <= 30; ++i)
        last = add("Staff", i, i - 1);
    const RowId other = add("Staff", 99, nullptr);
    EXPECT_EQ(change("Staff", last, 1, 98), 3201);
    EXPECT_EQ(change("Staff", other, 0, 100), 0);
    // A ring: the first belongs to the last.
    EXPECT_EQ(change("Staff", chief, 1, 30), 0);
    EXPECT_EQ(change("Staff", last, 0, 31), 0);
    EXPECT_EQ(column("Staff", 1).count("31"), 1u);
    EXPECT_EQ(remove("Staff", chief), 0);
    EXPECT_EQ(column("Staff", 0), Texts{"100"});
}

TEST_P(Related, aRecordThatIsItsOwnParentGoesWithItsKey)
{
    relate("Staff", "StaffChief", "Staff", kCascade, kCascade);
    open();
    const RowId chief = add("Staff", 1, 1);
    add("Staff", 2, 1);
    EXPECT_EQ(change("Staff", chief, 0, 7), 0);
    EXPECT_EQ(column("Staff", 0), (Texts{"7", "2"}));
    EXPECT_EQ(column("Staff", 1), (Texts{"7", "7"}));
}

TEST_P(Related, aRecordThatIsItsOwnParentKeepsItsKeyWithoutCascade)
{
    relate("Staff", "StaffChief", "Staff", kRefuse, kRefuse);
    open();
    const RowId chief = add("Staff", 1, 1);
    EXPECT_EQ(change("Staff", chief, 0, 7), 3200);
    EXPECT_EQ(change("Staff", chief, 1, nullptr), 0);
    EXPECT_EQ(change("Staff", chief, 0, 7), 0);
    EXPECT_EQ(column("Staff", 1), Texts{"Null"});
}

INSTANTIATE_TEST_SUITE_P(Jet, Related, ::testing::Values(3, 4));

}  // namespace
}  // namespace velnor::testing
