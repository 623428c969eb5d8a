// Measures what tables of FoxPro and dBASE do with indexes, on a real folder. Not a test: run it by
// hand.
//
//   xbase_speed FOLDER [RECORDS]
//
// Prints seconds of CPU time a job, for CDX and MDX.
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "platform/host.h"
#include "tests/access/xbase/xbase_testing.h"

namespace velnor::xbase_testing {
namespace {

constexpr std::size_t kMostPendingBytes = 8u << 20;

class Stopwatch {
public:
    double seconds() const { return static_cast<double>(std::clock() - start_) / CLOCKS_PER_SEC; }

private:
    std::clock_t start_ = std::clock();
};

class Speed {
public:
    Speed(const std::string& folder, const char* word, int records)
        : word_(word), records_(records), native_(folder + "/speed")
    {
        std::filesystem::remove_all(native_);
        std::filesystem::create_directory(native_);
        paths_.mount("C:", native_);
        files_ = makeLinuxFileSystem(paths_);
    }
    ~Speed() { std::filesystem::remove_all(native_); }

    void run()
    {
        openStore(*files_, word_)->createTable(
            layoutOf("T", {fieldDef("NAME", FieldType::Text, 30), fieldDef("CITY", FieldType::Text, 20),
                           numberDef("AMOUNT", 12, 2)}));
        tell("append without indexes", append(records_));
        for (const char* on : {"NAME", "CITY", "AMOUNT"}) {
            const auto store = openStore(*files_, word_);
            const Stopwatch watch;
            store->addIndex("T", indexDef(on, {on}));
            tell(("index on " + std::string(on)).c_str(), watch.seconds());
        }
        tell("append of a tenth more with them", append(records_ / 10));
        for (const bool readOnly : {true, false})
            for (const char* by : {"NAME", "AMOUNT"})
                seek(by, readOnly);
    }

private:
    void tell(const char* what, double seconds) const
    {
        std::printf("%-11s %-34s %7.3f s\n", word_, what, seconds);
    }

    double append(int count)
    {
        const auto store = openStore(*files_, word_);
        const Stopwatch watch;
        const auto writer = store->writer("T");
        std::string name, city;
        for (int i = 0; i < count; ++i) {
            const auto r = random_();
            name = "Customer " + std::to_string(r % 10000000);
            city = "City " + std::to_string(r % 997);
            names_.push_back(name);
            amounts_.push_back(static_cast<double>(r % 10000000) / 100);
            const ValueView row[] = {text(name), text(city), ValueView::real(amounts_.back())};
            writer->insert(row);
            if (i % 16 == 0)
                store->breathe(kMostPendingBytes);
        }
        store->commit();
        return watch.seconds();
    }

    void seek(const char* by, bool readOnly)
    {
        const auto store = openStore(*files_, word_, readOnly);
        const auto cursor = store->cursor("T", by);
        constexpr int kSeeks = 200000;
        int found = 0;
        const Stopwatch watch;
        for (int i = 0; i < kSeeks; ++i) {
            const std::size_t n = random_() % names_.size();
            const ValueView key = *by == 'N' ? text(names_[n]) : ValueView::real(amounts_[n]);
            found += cursor->seek(Comparison::Equal, {&key, 1}) && !cursor->field(0).isNull();
        }
        const double seconds = watch.seconds();
        std::printf("%-11s %d of %d seeks by %-6s %-8s %7.3f s  %.0f a second\n", word_, found, kSeeks, by,
                    readOnly ? "reading" : "writing", seconds, kSeeks / seconds);
    }

    const char* word_;
    int records_;
    std::string native_;
    HostPaths paths_;
    std::unique_ptr<FileSystem> files_;
    std::mt19937 random_{1};
    std::vector<std::string> names_;
    std::vector<double> amounts_;
};

}  // namespace
}  // namespace velnor::xbase_testing

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::fprintf(stderr, "xbase_speed FOLDER [RECORDS]\n");
        return 2;
    }
    const int records = argc > 2 ? std::atoi(argv[2]) : 1000000;
    for (const char* word : {"FoxPro 3.0;", "dBASE 5.0;"})
        velnor::xbase_testing::Speed(argv[1], word, records < 20000 ? 20000 : records).run();
}
