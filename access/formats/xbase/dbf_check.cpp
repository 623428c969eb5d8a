#include "access/formats/xbase/dbf_check.h"

#include <algorithm>

#include "access/formats/xbase/field_decode.h"
#include "access/formats/xbase/moments.h"
#include "platform/paths.h"

namespace velnor::xbase {
namespace {

constexpr int kMostReports = 200;
constexpr std::size_t kBlockBytes = 64u << 10;

class TableCheck {
public:
    TableCheck(DbfTable& table, const ProblemSink& report)
        : table_(table), header_(table.header()), sink_(report)
    {
    }

    void run();

private:
    struct Memo {
        std::uint64_t start, end;
        std::uint32_t record;
        const DbfField* field;
    };

    void header();
    void end();
    void records();
    void record(std::uint32_t number, const std::uint8_t* bytes);
    void value(std::uint32_t number, const DbfField& field, const std::uint8_t* bytes);
    void memo(std::uint32_t number, const DbfField& field, const std::uint8_t* bytes);
    void overlaps();
    void say(std::string where, std::string text, bool harmless = false);
    static std::string place(std::uint32_t number, const DbfField& field);
    bool blank(const DbfField& field, const std::uint8_t* bytes) const;

    DbfTable& table_;
    const DbfHeader& header_;
    const ProblemSink& sink_;
    std::vector<Memo> memos_;
    std::string scratch_;
    int reports_ = 0;
};

void TableCheck::say(std::string where, std::string text, bool harmless)
{
    ++reports_;
    if (reports_ < kMostReports)
        sink_({std::move(where), std::move(text), harmless});
    else if (reports_ == kMostReports)
        sink_({std::string(paths::fileName(table_.path())), "there is more, which is not listed",
               false});
}

std::string TableCheck::place(std::uint32_t number, const DbfField& field)
{
    return "record " + std::to_string(number) + ", field " + field.name;
}

void TableCheck::header()
{
    for (const Oddity& oddity : header_.oddities)
        say("header", oddity.text, oddity.harmless);
    if (!header_.year)
        say("header", "the date of the last update is no date", true);
    for (std::size_t i = 1; i < header_.fields.size(); ++i)
        for (std::size_t j = 0; j < i; ++j)
            if (paths::sameName(header_.fields[i].name, header_.fields[j].name)) {
                say("header", "two fields have the name " + header_.fields[i].name, true);
                break;
            }
    for (const DbfField& field : header_.fields)
        if (field.coding == Coding::Raw)
            say("header",
                "the field " + field.name + " is of the unknown type " + field.nativeType(), true);
    if (header_.saysProductionIndex() && table_.indexFiles().empty())
        say("header", "it tells of a production index that is not there", true);
}

void TableCheck::end()
{
    const std::uint64_t last = header_.offsetOf(table_.count() + 1ull);
    const std::uint64_t size = table_.fileBytes();
    if (size > last + 1)
        say("end of file", std::to_string(size - last - 1) + " bytes behind the last record", true);
}

bool TableCheck::blank(const DbfField& field, const std::uint8_t* bytes) const
{
    const std::uint8_t* p = bytes + field.offset;
    return std::all_of(p, p + field.length, [&](std::uint8_t c) {
        return c == ' ' || c == 0 || (field.coding == Coding::Day && c == '0') ||
               (field.coding == Coding::Logical && c == '?');
    });
}

void TableCheck::value(std::uint32_t number, const DbfField& field, const std::uint8_t* bytes)
{
    const bool text = field.coding == Coding::Number || field.coding == Coding::Logical ||
                      field.coding == Coding::Day;
    if (!text || !decodeField(header_, field, bytes, scratch_).isNull() || blank(field, bytes) ||
        isNullByFlag(header_, field, bytes))
        return;
    say(place(number, field), field.coding == Coding::Number    ? "is not a number"
                              : field.coding == Coding::Logical ? "is neither true nor false"
                                                                : "is not a date");
}

void TableCheck::memo(std::uint32_t number, const DbfField& field, const std::uint8_t* bytes)
{
    const std::uint64_t block = memoBlock(header_, field, bytes);
    const MemoFile* file = table_.memo();
    if (block == kBadPointer)
        return say(place(number, field), "its memo block is not a number");
    if (block == 0 || !file)
        return;
    const MemoExtent extent = file->extent(block);
    switch (extent.state) {
    case MemoExtent::State::PastEnd:
        return say(place(number, field), "its memo block " + std::to_string(block) +
                                             " is behind the end of the memo file");
    case MemoExtent::State::CutShort:
        say(place(number, field), "its memo is cut short");
        break;
    case MemoExtent::State::OtherForm:
        say(place(number, field), "its memo has no length in front", true);
        break;
    case MemoExtent::State::Whole:
        break;
    }
    memos_.push_back({block * file->blockSize(), extent.endOffset, number, &field});
}

void TableCheck::record(std::uint32_t number, const std::uint8_t* bytes)
{
    if (*bytes != ' ' && *bytes != '*')
        say("record " + std::to_string(number), "its flag is neither blank nor *", true);
    if (*bytes == '*')
        return;
    for (const DbfField& field : header_.fields)
        if (field.isMemo())
            memo(number, field, bytes);
        else
            value(number, field, bytes);
}

void TableCheck::records()
{
    const std::uint32_t length = header_.recordLength;
    const auto atOnce = std::max<std::uint32_t>(1, kBlockBytes / length);
    std::vector<std::uint8_t> block(std::size_t{atOnce} * length);
    for (std::uint32_t number = 1; number <= table_.count();) {
        const std::uint32_t now = std::min(atOnce, table_.count() - number + 1);
        table_.readRecords(number, now, block);
        for (std::uint32_t i = 0; i < now; ++i)
            record(number++, block.data() + std::size_t{i} * length);
    }
}

void TableCheck::overlaps()
{
    std::sort(memos_.begin(), memos_.end(),
              [](const Memo& a, const Memo& b) { return a.start < b.start; });
    for (std::size_t i = 1; i < memos_.size(); ++i)
        if (memos_[i].start < memos_[i - 1].end)
            say(place(memos_[i].record, *memos_[i].field),
                "its memo overlaps that of record " + std::to_string(memos_[i - 1].record));
}

void TableCheck::run()
{
    header();
    records();
    overlaps();
    end();
    if (MemoFile* file = table_.memo();
        file && !memos_.empty() &&
        file->nextFreeBlock() * std::uint64_t{file->blockSize()} < memos_.back().end)
        say("memo file", "its next free block is behind the last memo", true);
}

}  // namespace

void checkTable(DbfTable& table, const ProblemSink& report)
{
    TableCheck(table, report).run();
}

}  // namespace velnor::xbase
