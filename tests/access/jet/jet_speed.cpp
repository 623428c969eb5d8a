// Measures what tables of Access files do with indexes, on a real folder. Not a test: run it by
// hand.
//
//   jet_speed FOLDER [RECORDS]
//
// Prints seconds of CPU time a job, for both versions.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "access/formats/jet/index_keys.h"
#include "access/formats/jet/jet_driver.h"
#include "platform/host.h"

namespace velnor {
namespace {

constexpr const char* kFile = "C:\\speed.mdb";
constexpr std::size_t kMostPendingBytes = 8u << 20;

class Stopwatch {
public:
    double seconds() const { return static_cast<double>(std::clock() - start_) / CLOCKS_PER_SEC; }

private:
    std::clock_t start_ = std::clock();
};

FieldDef field(const char* name, FieldType type, int size = 0)
{
    FieldDef def;
    def.name = name;
    def.type = type;
    def.size = size;
    return def;
}

IndexDef index(const char* name, const char* on)
{
    IndexDef def;
    def.name = name;
    def.fields = {{on, false}};
    return def;
}

TableLayout customers(bool indexes)
{
    TableLayout layout;
    layout.name = "T";
    layout.fields = {field("ID", FieldType::Long), field("NAME", FieldType::Text, 30),
                     field("AMOUNT", FieldType::Double), field("CITY", FieldType::Text, 20),
                     field("DAY", FieldType::Date)};
    if (!indexes)
        return layout;
    IndexDef key = index("PrimaryKey", "ID");
    key.primary = key.unique = key.required = true;
    layout.indexes = {key, index("ByName", "NAME"), index("ByAmount", "AMOUNT")};
    return layout;
}

class Speed {
public:
    Speed(const std::string& folder, int version, int records)
        : version_(version), records_(records), native_(folder + "/speed.mdb")
    {
        paths_.mount("C:", folder);
        files_ = makeLinuxFileSystem(paths_);
    }

    void run()
    {
        const double plain = append(false);
        std::printf("Jet %d  append without indexes      %7.3f s\n", version_, plain);
        addIndexes();
        const double indexed = append(true);
        std::printf("Jet %d  append, key and two indexes %7.3f s  %.2f times\n", version_, indexed,
                    indexed / plain);
        seek();
        ordinals();
        change();
        std::filesystem::remove(native_);
    }

private:
    std::unique_ptr<Store> open()
    {
        OpenRequest request;
        request.name = kFile;
        request.readOnly = false;
        return driver_.open(*files_, request);
    }

    double append(bool indexes)
    {
        std::filesystem::remove(native_);
        CreateRequest create;
        create.name = kFile;
        create.options = version_ == 3 ? 32 : 0;
        driver_.create(*files_, create);
        const auto store = open();
        store->createTable(customers(indexes));
        const Stopwatch watch;
        const auto writer = store->writer("T");
        std::mt19937 random(1);
        std::string name, city;
        for (int i = 0; i < records_; ++i) {
            const auto r = random();
            name = "Customer " + std::to_string(r % 10000000);
            city = "City " + std::to_string(r % 997);
            const ValueView row[] = {ValueView::integer(i + 1), ValueView::text(name),
                                     ValueView::real(r / 7.0), ValueView::text(city),
                                     ValueView::date(36526.0 + r % 9000)};
            writer->insert(row);
            if (i % 16 == 0)
                store->breathe(kMostPendingBytes);
        }
        store->commit();
        return watch.seconds();
    }

    void addIndexes()
    {
        const auto store = open();
        for (const char* on : {"ID", "NAME", "AMOUNT"}) {
            const Stopwatch watch;
            store->addIndex("T", index(on, on));
            const double built = watch.seconds();
            const double sorted = sortKeys(*store, on);
            std::printf("Jet %d  index on %-8s           %7.3f s  %.2f times sorting its keys\n",
                        version_, on, built, built / sorted);
        }
    }

    /// The keys of a field as strings in one list, sorted: what an index cannot do without.
    double sortKeys(Store& store, const std::string& on)
    {
        const auto cursor = store.cursor("T", std::nullopt);
        const int n = on == "ID" ? 0 : on == "NAME" ? 1 : 2;
        jet::KeyColumn column;
        column.type = n == 0 ? 4 : n == 1 ? 10 : 7;
        jet::KeyBuilder keys(version_ == 3, CodePage::find(1252), {&column, 1});
        std::vector<std::string> all;
        for (bool there = cursor->first(); there; there = cursor->next()) {
            const ValueView value = cursor->field(n);
            const auto key = keys.build({&value, 1});
            all.emplace_back(key.begin(), key.end());
            const auto row = cursor->row();
            all.back().append(reinterpret_cast<const char*>(&row), 4);
        }
        const Stopwatch watch;
        std::sort(all.begin(), all.end());
        return watch.seconds();
    }

    void seek()
    {
        const auto store = open();
        std::mt19937 random(2);
        for (const char* by : {"PrimaryKey", "ByName"}) {
            const auto cursor = store->cursor("T", by);
            const bool text = by[0] == 'B';
            std::vector<std::string> names;
            if (text) {
                const auto all = store->cursor("T", std::nullopt);
                for (bool on = all->first(); on; on = all->next())
                    names.emplace_back(all->field(1).asText());
            }
            constexpr int kSeeks = 200000;
            int found = 0;
            const Stopwatch watch;
            for (int i = 0; i < kSeeks; ++i) {
                const auto n = static_cast<int>(random() % static_cast<unsigned>(records_));
                const ValueView key = text ? ValueView::text(names[static_cast<std::size_t>(n)])
                                           : ValueView::integer(n + 1);
                found += cursor->seek(Comparison::Equal, {&key, 1}) && !cursor->field(0).isNull();
            }
            const double seconds = watch.seconds();
            std::printf("Jet %d  %d seeks %-12s   %7.3f s  %.0f a second\n", version_, found, by,
                        seconds, kSeeks / seconds);
        }
    }

    /// A value that is in an index changes, then records go.
    void change()
    {
        const auto store = open();
        const auto writer = store->writer("T");
        std::vector<RowId> rows;
        {
            const auto cursor = store->cursor("T", std::nullopt);
            for (bool on = cursor->first(); on; on = cursor->next())
                rows.push_back(cursor->row());
        }
        const auto timed = [&](const char* what, std::size_t every, auto act) {
            const Stopwatch watch;
            std::size_t done = 0;
            for (std::size_t i = 0; i < rows.size(); i += every) {
                act(rows[i], i);
                if (++done % 16 == 0)
                    store->breathe(kMostPendingBytes);
            }
            store->commit();
            std::printf("Jet %d  %zu records %-14s %7.3f s\n", version_, done, what, watch.seconds());
        };
        timed("changed", 10, [&](RowId row, std::size_t i) {
            const FieldChange change{2, ValueView::real(static_cast<double>(i))};
            writer->update(row, {&change, 1});
        });
        timed("deleted", 10, [&](RowId row, std::size_t) { writer->remove(row); });
    }

    void ordinals()
    {
        const auto store = open();
        const auto cursor = store->cursor("T", "ByName");
        const Stopwatch first;
        cursor->moveToOrdinal(records_ / 2);
        const double once = first.seconds();
        const Stopwatch watch;
        constexpr int kMoves = 10000;
        std::int64_t sum = 0;
        for (int i = 0; i < kMoves; ++i) {
            cursor->moveToOrdinal(std::int64_t{i} * 7919 % records_);
            sum += cursor->ordinal();
        }
        std::printf("Jet %d  first ordinal %.4f s, %d more %.4f s (%lld)\n", version_, once, kMoves,
                    watch.seconds(), static_cast<long long>(sum % 10));
    }

    jet::JetDriver driver_;
    HostPaths paths_;
    std::unique_ptr<FileSystem> files_;
    int version_;
    int records_;
    std::string native_;
};

}  // namespace
}  // namespace velnor

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::fprintf(stderr, "jet_speed FOLDER [RECORDS]\n");
        return 2;
    }
    const int records = argc > 2 ? std::atoi(argv[2]) : 200000;
    for (const int version : {4, 3})
        velnor::Speed(argv[1], version, std::max(records, 1000)).run();
}
