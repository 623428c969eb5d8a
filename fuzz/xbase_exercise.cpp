#include "fuzz/xbase_exercise.h"

#include <cstdio>
#include <string>
#include <vector>

#include "access/formats/xbase/xbase_driver.h"
#include "fuzz/exercise.h"

namespace velnor::fuzzing {
namespace {

class Exercise {
public:
    Exercise(MemoryFileSystem& files, std::string_view word, bool readOnly) : files_(files)
    {
        OpenRequest request;
        request.name = "C:\\";
        request.connectWord = word;
        request.readOnly = readOnly;
        store_ = driver_.open(files, request);
        layout_ = store_->layout("T");
    }

    ~Exercise() { seen = sum_; }

    void read()
    {
        const auto cursor = store_->cursor("T", std::nullopt);
        std::int64_t records = 0;
        for (bool there = cursor->first(); there && records < 2000;
             there = cursor->next(), ++records)
            readFields(*cursor);
        for (bool there = cursor->last(); there && records-- > 0; there = cursor->previous())
            readFields(*cursor);
        const std::int64_t count = store_->recordCount("T");
        if (count > 0 && cursor->moveToOrdinal(count / 2))
            sum_ += static_cast<std::uint64_t>(cursor->ordinal() == count / 2);
        cursor->moveTo(3);
        store_->info("T");
    }

    void check()
    {
        store_->check("T", [this](const Problem& problem) { sum_ += problem.text.size(); });
    }

    void change()
    {
        const auto writer = store_->writer("T");
        const auto cursor = store_->cursor("T", std::nullopt);
        std::vector<FieldChange> changes;
        for (std::size_t i = 0; i < layout_.fields.size(); ++i)
            changes.push_back({static_cast<int>(i), valueFor(layout_.fields[i].type, i)});
        if (cursor->first())
            writer->update(cursor->row(), changes);
        if (cursor->next())
            writer->remove(cursor->row());
        std::vector<ValueView> values;
        for (const FieldChange& change : changes)
            values.push_back(change.value);
        writer->insert(values);
        writer->insert(std::vector<ValueView>(values.size()));
        store_->commit();
        read();
    }

    void walkIndexes()
    {
        for (const IndexDef& index : layout_.indexes)
            attempt([&] { walkIndex(index); });
    }

    void changeFields()
    {
        FieldDef field;
        field.name = "FUZZED";
        field.type = FieldType::Text;
        field.size = 5;
        attempt([&] { store_->addField("T", field); });
        if (!layout_.fields.empty())
            attempt([&] { store_->dropField("T", layout_.fields[0].name); });
        store_.reset();
        OpenRequest from;
        from.name = "C:\\T.DBF";
        CreateRequest to;
        to.name = from.name;
        attempt([&] { driver_.compact(files_, from, to); });
        driver_.repair(files_, from,
                       [this](const Problem& problem) { sum_ += problem.text.size(); });
    }

    void makeIndex()
    {
        IndexDef index;
        index.name = "FUZZ";
        index.fields = {{"A", false}};
        store_->addIndex("T", index);
        store_->dropIndex("T", layout_.indexes.empty() ? "FUZZ" : layout_.indexes[0].name);
    }

private:
    void walkIndex(const IndexDef& index)
    {
        const auto cursor = store_->cursor("T", index.name);
        std::int64_t records = 0;
        for (bool there = cursor->first(); there && records < 2000;
             there = cursor->next(), ++records)
            readFields(*cursor);
        for (bool there = cursor->last(); there && records-- > 0; there = cursor->previous())
            sum_ += cursor->row();
        cursor->moveTo(2);
        std::vector<ValueView> key;
        for (const IndexFieldDef& wanted : index.fields)
            for (std::size_t i = 0; i < layout_.fields.size(); ++i)
                if (layout_.fields[i].name == wanted.name)
                    key.push_back(valueFor(layout_.fields[i].type, i));
        for (const Comparison comparison :
             {Comparison::Equal, Comparison::GreaterEqual, Comparison::Less})
            sum_ += cursor->seek(comparison, key);
    }

    void readFields(RowCursor& cursor)
    {
        for (std::size_t i = 0; i < layout_.fields.size(); ++i)
            sum_ += touch(cursor.field(static_cast<int>(i)));
    }

    static ValueView valueFor(FieldType type, std::size_t n)
    {
        static constexpr std::uint8_t kBytes[] = {1, 2, 3};
        switch (valueKindOf(type)) {
        case ValueKind::Boolean:
            return ValueView::boolean(n & 1);
        case ValueKind::Integer:
            return ValueView::integer(static_cast<std::int64_t>(n));
        case ValueKind::Currency:
            return ValueView::currency(12345);
        case ValueKind::Real:
            return ValueView::real(0.5);
        case ValueKind::Date:
            return ValueView::date(36526.25);
        case ValueKind::Text:
            return ValueView::text(type == FieldType::Memo ? "A memo \xC3\xA4" : "");
        case ValueKind::Bytes:
            return type == FieldType::LongBinary ? ValueView::bytes(kBytes) : ValueView::null();
        default:
            return ValueView::null();
        }
    }

    MemoryFileSystem& files_;
    xbase::XbaseDriver driver_;
    std::unique_ptr<Store> store_;
    TableLayout layout_;
    std::uint64_t sum_ = 0;
};

void append(std::vector<std::uint8_t>& bytes, std::string_view text)
{
    bytes.insert(bytes.end(), text.begin(), text.end());
}

}  // namespace

void exerciseTable(MemoryFileSystem& files)
{
    for (const std::string_view word : {"dBASE 5.0;", "FoxPro 3.0;"}) {
        attempt([&] {
            Exercise exercise(files, word, true);
            attempt([&] { exercise.read(); });
            attempt([&] { exercise.check(); });
        });
    }
    attempt([&] {
        Exercise exercise(files, "FoxPro 3.0;", false);
        attempt([&] { exercise.change(); });
        attempt([&] { exercise.check(); });
        attempt([&] { exercise.changeFields(); });
    });
}

void putMemoTable(MemoryFileSystem& files, std::uint8_t version)
{
    constexpr int kRecords = 26;
    const bool visual = version == 0x30;
    const std::uint8_t width = visual ? 4 : 10;
    std::vector<std::uint8_t> bytes(32 * 3, 0);
    bytes[0] = version;
    bytes[1] = 99;
    bytes[2] = bytes[3] = 1;
    bytes[4] = kRecords;
    bytes[8] = 97;
    bytes[10] = static_cast<std::uint8_t>(1 + 2 * width);
    for (int i = 0; i < 2; ++i) {
        std::uint8_t* descriptor = &bytes[static_cast<std::size_t>(32 * (i + 1))];
        descriptor[0] = static_cast<std::uint8_t>('A' + i);
        descriptor[11] = i ? 'G' : 'M';
        descriptor[16] = width;
    }
    bytes.push_back(0x0D);
    for (int record = 0; record < kRecords; ++record) {
        bytes.push_back(' ');
        for (const unsigned block : {record + 1u, record > 23 ? 4000000000u : record * 7u}) {
            if (visual) {
                for (int i = 0; i < 4; ++i)
                    bytes.push_back(static_cast<std::uint8_t>(block >> (8 * i)));
                continue;
            }
            char text[16];
            std::snprintf(text, sizeof text, "%10u", block);
            append(bytes, text);
        }
    }
    bytes.push_back(0x1A);
    files.put("C:\\T.DBF", bytes);
}

void putIndexedTable(MemoryFileSystem& files, std::uint8_t version)
{
    constexpr int kRecords = 30;
    const bool visual = version == 0x30;
    std::vector<std::uint8_t> bytes(32 * 4, 0);
    bytes[0] = version;
    bytes[1] = 99;
    bytes[2] = bytes[3] = 1;
    bytes[4] = kRecords;
    bytes[28] = 1;
    struct {
        char name, letter;
        std::uint8_t length, decimals;
    } const fields[] = {{'A', 'C', 10, 0}, {'N', 'N', 10, 2}, {'D', 'D', 8, 0}};
    std::size_t at = 32;
    for (const auto& field : fields) {
        bytes[at] = static_cast<std::uint8_t>(field.name);
        bytes[at + 11] = static_cast<std::uint8_t>(field.letter);
        bytes[at + 16] = field.length;
        bytes[at + 17] = field.decimals;
        at += 32;
    }
    bytes.push_back(0x0D);
    bytes.resize(bytes.size() + (visual ? 263 : 0));
    bytes[8] = static_cast<std::uint8_t>(bytes.size());
    bytes[9] = static_cast<std::uint8_t>(bytes.size() >> 8);
    bytes[10] = 29;
    for (int record = 0; record < kRecords; ++record) {
        char text[32];
        std::snprintf(text, sizeof text, "%cK%-9d%10.2f199901%02d", record % 7 == 6 ? '*' : ' ',
                      record * 37 % 30, record * 1.25 - 9, record % 28 + 1);
        append(bytes, text);
    }
    bytes.push_back(0x1A);
    files.put("C:\\T.DBF", bytes);
}

void exerciseIndexes(MemoryFileSystem& files)
{
    for (const std::string_view word : {"dBASE 5.0;", "FoxPro 3.0;"})
        attempt([&] {
            Exercise exercise(files, word, true);
            exercise.walkIndexes();
            attempt([&] { exercise.check(); });
        });
    for (const std::string_view word : {"FoxPro 3.0;", "dBASE 5.0;"})
        attempt([&] {
            Exercise exercise(files, word, false);
            attempt([&] { exercise.change(); });
            attempt([&] { exercise.makeIndex(); });
            attempt([&] { exercise.change(); });
            attempt([&] { exercise.walkIndexes(); });
            attempt([&] { exercise.changeFields(); });
        });
}

}  // namespace velnor::fuzzing
