#include "access/formats/text/text_check.h"

#include "access/formats/text/encoding.h"
#include "access/formats/text/record_reader.h"
#include "access/formats/text/text_value.h"
#include "platform/paths.h"

namespace velnor::text {
namespace {

constexpr int kMostReports = 200;

class TextCheck {
public:
    TextCheck(TextTable& table, const ProblemSink& report)
        : table_(table), sink_(report), reader_(table.file(), table.form(), table.end())
    {
    }
    void run();

private:
    void record(std::int64_t number);
    void value(std::int64_t number, std::size_t n);
    void say(std::int64_t number, std::string text, bool harmless = false);

    TextTable& table_;
    const ProblemSink& sink_;
    RecordReader reader_;
    std::string scratch_, other_;
    int reports_ = 0;
};

void TextCheck::say(std::int64_t number, std::string text, bool harmless)
{
    if (++reports_ < kMostReports)
        sink_({"record " + std::to_string(number), std::move(text), harmless});
    else if (reports_ == kMostReports)
        sink_({std::string(paths::fileName(table_.path())), "there is more, which is not listed",
               harmless});
}

void TextCheck::value(std::int64_t number, std::size_t n)
{
    const FieldDef& field = table_.fields()[n];
    if (valueKindOf(field.type) == ValueKind::Text)
        return;
    const std::string_view text = reader_.raw(n, scratch_);
    if (text.find_first_not_of(' ') != text.npos &&
        readValue(field.type, text, table_.form(), other_).isNull())
        say(number, "field " + field.name + " holds no value of its type and reads as Null");
}

void TextCheck::record(std::int64_t number)
{
    if (reader_.openQuote())
        say(number, "a quote is not closed");
    if (reader_.fieldCount() > kMostColumns)
        say(number, "the line has " + std::to_string(reader_.fieldCount()) + " fields, " +
                        std::to_string(kMostColumns) + " are shown");
    else if (reader_.fieldCount() != table_.fields().size())
        say(number,
            "the line has " + std::to_string(reader_.fieldCount()) + " fields, the table " +
                std::to_string(table_.fields().size()),
            true);
    for (std::size_t i = 0; i < reader_.fields().size() && i < table_.fields().size(); ++i)
        value(number, i);
}

void TextCheck::run()
{
    std::int64_t number = 0;
    const ScanResult& facts = table_.facts();
    for (bool there = reader_.readAt(facts.firstRecord); there; there = reader_.next())
        if (!reader_.blank() || facts.blankLinesCount)
            record(++number);
}

std::string lineEndWords(const std::string& lineEnd)
{
    return lineEnd == "\n" ? "LF" : lineEnd == "\r" ? "CR" : "CR LF";
}

std::string formWords(const TextForm& form)
{
    if (form.fixed)
        return "columns of fixed width";
    if (!form.delimiter)
        return "lines of one field";
    if (form.delimiter == '\t')
        return "fields separated by tabs";
    return std::string("fields separated by \"") + form.delimiter + "\"";
}

}  // namespace

void checkText(TextTable& table, const ProblemSink& report)
{
    TextCheck(table, report).run();
}

std::vector<std::pair<std::string, std::string>> textInfo(TextTable& table)
{
    const TextForm& form = table.form();
    return {{"Format", "Text, " + formWords(form)},
            {"Field names", form.header ? "in the first line" : "none in the file"},
            {"Characters", encodingWords(form.encoding)},
            {"Line ends", lineEndWords(form.lineEnd)},
            {"Records", std::to_string(table.recordCount())},
            {"schema.ini", table.hasSchema() ? "tells the form of this file" : "not used"},
            {"File size", std::to_string(table.fileBytes()) + " bytes"}};
}

}  // namespace velnor::text
