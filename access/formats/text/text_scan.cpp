#include "access/formats/text/text_scan.h"

#include <algorithm>
#include <map>

#include "access/formats/text/encoding.h"
#include "access/formats/text/record_reader.h"
#include "access/formats/text/text_value.h"
#include "access/value_text.h"

namespace velnor::text {
namespace {

constexpr std::size_t kLongestText = 255;
constexpr int kLinesToGuessBy = 20;

class Scan {
public:
    Scan(PageFile& file, const TextForm& form, std::uint64_t end)
        : form_(form), reader_(file, form, end)
    {
    }

    ScanResult run(bool blankLinesCount);

private:
    void names();
    void record();
    void value(ColumnFacts& facts, std::size_t n);

    const TextForm& form_;
    RecordReader reader_;
    ScanResult result_;
    std::string scratch_;
};

void Scan::names()
{
    for (std::size_t i = 0; i < reader_.fields().size(); ++i)
        result_.names.emplace_back(reader_.raw(i, scratch_));
    result_.columns.resize(std::max(result_.columns.size(), result_.names.size()));
}

void Scan::value(ColumnFacts& facts, std::size_t n)
{
    const Slice& slice = reader_.fields()[n];
    if (slice.raw.empty())
        return;
    facts.any = true;
    if (facts.kinds)
        facts.kinds &= slice.quoted ? 0 : kindsOf(slice.raw, form_);
    if (slice.raw.size() > kLongestText && !facts.longText)
        facts.longText = textLength(reader_.raw(n, scratch_)) > kLongestText;
}

void Scan::record()
{
    const std::size_t count = reader_.fields().size();
    result_.mostFields = std::max(result_.mostFields, reader_.fieldCount());
    if (result_.columns.size() < count)
        result_.columns.resize(count);
    for (std::size_t i = 0; i < count; ++i)
        value(result_.columns[i], i);
}

ScanResult Scan::run(bool blankLinesCount)
{
    result_.blankLinesCount = blankLinesCount;
    bool header = form_.header;
    bool empty = true;
    for (bool there = reader_.readAt(form_.encoding.markBytes); there; there = reader_.next()) {
        empty = false;
        const std::string_view whole = reader_.whole();
        result_.utf8 = result_.utf8 && (isAscii(whole) || isUtf8(whole));
        result_.endsWithLineEnd = whole.back() == '\n' || whole.back() == '\r';
        if (header && !reader_.blank()) {
            header = false;
            names();
            result_.mostFields = std::max(result_.mostFields, reader_.fieldCount());
            result_.firstRecord = reader_.behind();
            continue;
        }
        result_.blankLines = result_.blankLines || (!header && reader_.blank());
        if (!header && (blankLinesCount || !reader_.blank())) {
            if (result_.places.empty() && !form_.header)
                result_.firstRecord = reader_.start();
            result_.places.add(reader_.start());
            record();
        }
    }
    result_.headerMissing = header;
    if (empty || header || (!form_.header && result_.places.empty()))
        result_.firstRecord = reader_.behind() ? reader_.behind() : form_.encoding.markBytes;
    return std::move(result_);
}

/// How evenly a delimiter stands in the first lines: of 100, and fields a line.
struct Evenness {
    int percent = 0;
    std::size_t fields = 0;
};

Evenness evenness(std::string_view head, char delimiter, bool wholeFile)
{
    RecordSplitter splitter(delimiter, '"');
    const char* p = head.data();
    const char* end = p + head.size();
    std::map<std::size_t, int> linesOf;  // by their fields
    int lines = 0;
    while (p && p != end && lines < kLinesToGuessBy) {
        p = splitter.split(p, end, wholeFile);
        if (!p || splitter.blankLine())
            continue;
        ++lines;
        ++linesOf[splitter.fieldCount()];
    }
    Evenness most;
    for (const auto& [fields, equal] : linesOf)
        if (100 * equal / lines >= most.percent)
            most = {100 * equal / lines, fields};
    return most.fields < 2 ? Evenness{} : most;
}

}  // namespace

ScanResult scanText(PageFile& file, const TextForm& form, std::uint64_t end)
{
    ScanResult result = Scan(file, form, end).run(false);
    if (result.blankLines && std::max(result.columns.size(), form.columns.size()) <= 1)
        result = Scan(file, form, end).run(true);
    return result;
}

FieldType typeOf(const ColumnFacts& facts)
{
    const unsigned kinds = facts.any ? facts.kinds : 0;
    if (kinds & kLong)
        return FieldType::Long;
    if (kinds & kDouble)
        return FieldType::Double;
    if (kinds & kDate)
        return FieldType::Date;
    if (kinds & kBoolean)
        return FieldType::Boolean;
    return facts.longText ? FieldType::Memo : FieldType::Text;
}

char guessDelimiter(std::string_view head, bool wholeFile)
{
    constexpr int kEnough = 75;
    char best = 0;
    Evenness most{kEnough - 1, 0};
    for (const char delimiter : {',', ';', '\t', '|'}) {
        const Evenness found = evenness(head, delimiter, wholeFile);
        if (found.percent > most.percent ||
            (found.percent == most.percent && found.fields > most.fields)) {
            most = found;
            best = delimiter;
        }
    }
    return best;
}

std::string guessLineEnd(std::string_view head)
{
    const std::size_t at = head.find_first_of("\r\n");
    if (at == head.npos)
        return "\r\n";
    if (head[at] == '\n')
        return "\n";
    return at + 1 < head.size() && head[at + 1] == '\n' ? "\r\n" : "\r";
}

}  // namespace velnor::text
