// The dialect: any text as a statement over two small tables, translated and, when that goes well,
// run.
#include <atomic>
#include <string_view>

#include "access/sql/statement.h"
#include "platform/run_error.h"

using namespace velnor;

namespace {

TableLayout layoutOf(const char* name)
{
    TableLayout layout;
    layout.name = name;
    const auto add = [&](const char* field, FieldType type, int size) {
        FieldDef def;
        def.name = field;
        def.type = type;
        def.size = size;
        layout.fields.push_back(def);
    };
    add("A", FieldType::Long, 4);
    add("B", FieldType::Text, 10);
    add("C", FieldType::Currency, 8);
    add("D", FieldType::Date, 8);
    add("E", FieldType::Boolean, 1);
    return layout;
}

/// Three records; the second has no values.
class Rows final : public RowCursor {
public:
    bool first() override { return stand(1); }
    bool last() override { return stand(3); }
    bool next() override { return stand(at_ + 1); }
    bool previous() override { return stand(at_ - 1); }
    bool moveTo(RowId row) override { return stand(static_cast<int>(row)); }
    RowId row() const override { return static_cast<RowId>(at_); }
    ValueView field(int n) override
    {
        if (at_ == 2)
            return {};
        switch (n) {
        case 0:
            return ValueView::integer(at_);
        case 1:
            return ValueView::text(at_ == 1 ? "Lima" : "a'b");
        case 2:
            return ValueView::currency(12345 * at_);
        case 3:
            return ValueView::date(37652.25 * at_);
        default:
            return ValueView::boolean(at_ == 1);
        }
    }

private:
    bool stand(int n)
    {
        at_ = n;
        return n >= 1 && n <= 3;
    }
    int at_ = 0;
};

class Small final : public sql::SourceTable {
public:
    explicit Small(const char* name) : layout_(layoutOf(name)) {}
    const TableLayout& layout() const override { return layout_; }
    std::unique_ptr<RowCursor> cursor(std::optional<std::string_view>) override
    {
        return std::make_unique<Rows>();
    }
    std::int64_t recordCount() override { return 3; }

private:
    TableLayout layout_;
};

class Two final : public sql::Tables {
public:
    std::shared_ptr<sql::SourceTable> find(std::string_view, std::string_view table) override
    {
        if (table == "T" || table == "T.DBF")
            return std::make_shared<Small>("T");
        return table == "U" ? std::make_shared<Small>("U") : nullptr;
    }
    bool hasDatabase(std::string_view database) const override { return database == "x"; }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    Two tables;
    try {
        const sql::Translation made = sql::translate(text, tables);
        int asked = 0;
        sql::Statement run(made, sql::Statement::Gives::Values,
                           {1u << 20, [&asked] { return ++asked > 2000; }});
        for (int n = 0; n < 50 && run.step(); ++n)
            for (std::size_t i = 0; i < made.columns.size(); ++i)
                run.value(static_cast<int>(i));
    } catch (const EngineError& error) {
        if (error.number() <= 0 || *error.what() == 0)
            __builtin_trap();
    } catch (const RunError&) {  // no memory for what it asks
    }
    return 0;
}
