// xbase_write_indexes FOLDER - tables with indexes of every kind, made by many changes, for outside
// readers.
//
// Makes C (CDX), M (MDX) and N (NDX files). Half of the records are there before the indexes.
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "access/formats/xbase/xbase_driver.h"
#include "platform/host.h"

namespace {

using namespace velnor;

FieldDef def(const char* name, FieldType type, int size = 0)
{
    FieldDef field;
    field.name = name;
    field.type = type;
    field.size = size;
    return field;
}

FieldDef amount()
{
    FieldDef field = def("AMOUNT", FieldType::Decimal);
    field.precision = 10;
    field.scale = 2;
    return field;
}

struct Kind {
    const char* word;
    const char* table;
    bool many;   ///< conditions and falling indexes are known
    bool noDay;  ///< the checker knows what stands for no day
};

class Writing {
public:
    Writing(const std::string& folder, const Kind& kind) : kind_(kind)
    {
        OpenRequest request;
        request.name = host().paths->fromPerson(folder);
        request.connectWord = kind.word;
        request.readOnly = false;
        store_ = driver_.open(*host().files, request);
    }

    void run()
    {
        TableLayout layout;
        layout.name = kind_.table;
        layout.fields = {def("NAME", FieldType::Text, 20), amount(), def("DAY", FieldType::Date),
                         def("CITY", FieldType::Text, 10)};
        store_->createTable(layout);
        for (int i = 0; i < 1500; ++i)
            insert();
        const std::string letter(1, kind_.table[0]);
        add(letter + "NAME", "NAME");
        add(letter + "AMOUNT", "AMOUNT");
        add(letter + "DAY", "DAY");
        add(letter + "MIXED", "CITY+UPPER(NAME)");
        if (kind_.many) {
            add("FALLS", "AMOUNT", true);
            add("SOME", "DTOS(DAY)+NAME", false, ".NOT. DELETED() .AND. AMOUNT > 0");
            add("GONE", "NAME");
            store_->dropIndex(kind_.table, "GONE");
        }
        for (int i = 0; i < 3000; ++i)
            change();
        store_->commit();
    }

private:
    void add(const std::string& name, const char* expression, bool falls = false,
             const char* condition = "")
    {
        IndexDef index;
        index.name = name;
        index.expression = expression;
        index.condition = condition;
        index.fields = {{"NAME", falls}};
        store_->addIndex(kind_.table, index);
    }

    std::vector<ValueView> values()
    {
        static const char* const kCities[] = {"Ulm", "Bonn", "Kiel", "Trier", ""};
        name_ = std::string(1, static_cast<char>('A' + random_() % 26)) + "name" +
                std::to_string(random_() % 700);
        const std::int64_t hundredths = static_cast<std::int64_t>(random_() % 20000000) - 10000000;
        return {ValueView::text(name_),
                ValueView::decimal(
                    hundredths < 0, 0,
                    static_cast<std::uint64_t>(hundredths < 0 ? -hundredths : hundredths), 2),
                !kind_.noDay || random_() % 20 ? ValueView::date(30000 + random_() % 9000)
                                               : ValueView::null(),
                ValueView::text(kCities[random_() % 5])};
    }

    void insert() { rows_.push_back(store_->writer(kind_.table)->insert(values())); }

    void change()
    {
        const unsigned what = random_() % 4;
        if (what == 0)
            return insert();
        std::swap(rows_[random_() % rows_.size()], rows_.back());
        const auto writer = store_->writer(kind_.table);
        if (what == 1) {
            writer->remove(rows_.back());
            rows_.pop_back();
            return;
        }
        const std::vector<ValueView> now = values();
        const FieldChange changes[] = {{0, now[0]}, {1, now[1]}, {2, now[2]}};
        writer->update(rows_.back(), std::span(changes, what));
    }

    Kind kind_;
    xbase::XbaseDriver driver_;
    std::unique_ptr<Store> store_;
    std::mt19937 random_{99};
    std::vector<RowId> rows_;
    std::string name_;
};

}  // namespace

int main(int argc, char** argv)
{
    if (argc < 2)
        return 2;
    try {
        for (const Kind& kind :
             {Kind{"FoxPro 2.6;", "C", true, true}, Kind{"dBASE 5.0;", "M", true, true},
              Kind{"dBASE III;", "N", false, false}})
            Writing(argv[1], kind).run();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
