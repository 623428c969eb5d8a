#include "cli/record_writers.h"

#include <vector>

#include "access/value_text.h"
#include "cli/csv_writer.h"
#include "cli/field_words.h"
#include "cli/record_text.h"
#include "cli/time_columns.h"

namespace velnor::cli {

const std::string_view kTextFormats = "csv|json|ndjson|html|sql";

bool isTextFormat(std::string_view format)
{
    return format == "csv" || format == "json" || format == "ndjson" || format == "html" ||
           format == "sql";
}

namespace {

/// What every form does with a record: `put` writes it to the output's buffer.
template <class Put>
std::int64_t eachRecord(Recordset& rows, Output& output, Progress& progress, Put&& put)
{
    std::vector<ValueView> values(static_cast<std::size_t>(rows.fieldCount()));
    TimeColumns times(rows);
    std::int64_t done = 0;
    for (; !rows.Eof(); rows.MoveNext()) {
        rows.values(values);
        times.show(values);
        put(values, done);
        output.flushIfFull();
        if ((++done & 0x3FF) == 0) {
            stopIfInterrupted();
            progress.show(done);
        }
    }
    return done;
}

std::int64_t writeCsv(Recordset& rows, Output& output, Progress& progress)
{
    std::string& out = output.buffer();
    for (int i = 0; i < rows.fieldCount(); ++i) {
        out += i ? "," : "";
        appendCsvText(out, rows.Fields().Item(i).Name());
    }
    out += "\r\n";
    output.write(out);
    out.clear();
    CsvWriter csv(output);
    const std::int64_t done =
        eachRecord(rows, output, progress,
                   [&](const std::vector<ValueView>& values, std::int64_t) { csv.record(values); });
    csv.finish();
    return done;
}

std::int64_t writeJson(Recordset& rows, bool lines, Output& output, Progress& progress)
{
    std::string& out = output.buffer();
    std::vector<std::string> heads;
    for (int i = 0; i < rows.fieldCount(); ++i) {
        std::string head = i ? "," : "";
        appendJsonString(head, rows.Fields().Item(i).Name());
        heads.push_back(head + ":");
    }
    out += lines ? "" : "[";
    const std::int64_t done = eachRecord(rows, output, progress,
                                         [&](const std::vector<ValueView>& values, std::int64_t n) {
                                             out += lines ? "{" : n ? ",\n{" : "\n{";
                                             for (std::size_t i = 0; i < values.size(); ++i) {
                                                 out += heads[i];
                                                 appendJson(out, values[i]);
                                             }
                                             out += lines ? "}\n" : "}";
                                         });
    out += lines ? "" : "\n]\n";
    return done;
}

void appendHtmlText(std::string& out, std::string_view text)
{
    for (const char c : text)
        switch (c) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        default:
            out += c;
        }
}

bool standsRight(FieldType type)
{
    switch (type) {
    case FieldType::Text:
    case FieldType::Memo:
    case FieldType::Char:
    case FieldType::Guid:
    case FieldType::Boolean:
    case FieldType::Date:
        return false;
    default:
        return true;
    }
}

std::int64_t writeHtml(Recordset& rows, const std::string& name, Output& output, Progress& progress)
{
    std::string& out = output.buffer();
    out += "<!DOCTYPE html>\n<html>\n<head>\n<meta charset=\"utf-8\">\n<title>";
    appendHtmlText(out, name);
    out += "</title>\n</head>\n<body>\n<table>\n<tr>";
    std::vector<const char*> begins;
    for (int i = 0; i < rows.fieldCount(); ++i) {
        out += "<th>";
        appendHtmlText(out, rows.Fields().Item(i).Name());
        out += "</th>";
        begins.push_back(standsRight(rows.Fields().Item(i).def().type) ? "<td align=\"right\">"
                                                                       : "<td>");
    }
    out += "</tr>\n";
    std::string cell;
    const std::int64_t done =
        eachRecord(rows, output, progress, [&](const std::vector<ValueView>& values, std::int64_t) {
            out += "<tr>";
            for (std::size_t i = 0; i < values.size(); ++i) {
                out += begins[i];
                cell.clear();
                if (values[i].kind() == ValueKind::Text)
                    appendHtmlText(out, values[i].asText());
                else
                    appendCsv(cell, values[i]);
                out += cell;
                out += "</td>";
            }
            out += "</tr>\n";
        });
    out += "</table>\n</body>\n</html>\n";
    return done;
}

void appendSqlName(std::string& out, std::string_view name)
{
    out += '"';
    for (const char c : name) {
        out += c;
        if (c == '"')
            out += c;
    }
    out += '"';
}

const char* sqlColumnType(FieldType type)
{
    switch (type) {
    case FieldType::Boolean:
        return "BOOLEAN";
    case FieldType::Byte:
    case FieldType::Integer:
    case FieldType::Long:
    case FieldType::BigInt:
        return "INTEGER";
    case FieldType::Single:
    case FieldType::Double:
    case FieldType::Float:
        return "DOUBLE PRECISION";
    case FieldType::Currency:
        return "DECIMAL(19,4)";
    case FieldType::Numeric:
    case FieldType::Decimal:
        return "DECIMAL";
    case FieldType::Date:
    case FieldType::Time:
    case FieldType::TimeStamp:
        return "TIMESTAMP";
    case FieldType::Binary:
    case FieldType::VarBinary:
    case FieldType::LongBinary:
        return "BLOB";
    default:
        return "TEXT";
    }
}

void appendSqlValue(std::string& out, ValueView v)
{
    switch (v.kind()) {
    case ValueKind::Null:
        out += "NULL";
        return;
    case ValueKind::Boolean:
        out += v.asBoolean() ? "1" : "0";
        return;
    case ValueKind::Text:
        out += '\'';
        for (const char c : v.asText()) {
            out += c;
            if (c == '\'')
                out += c;
        }
        out += '\'';
        return;
    case ValueKind::Date:
        out += '\'';
        appendIsoDate(out, v.asDate());
        out += '\'';
        return;
    case ValueKind::Bytes:
        out += "X'";
        appendHex(out, v.asBytes());
        out += '\'';
        return;
    case ValueKind::Real: {
        std::string number;
        appendReal(number, v.asReal());
        const bool plain = number.find_first_not_of("0123456789+-.eE") == number.npos;
        out += plain ? number : "NULL";
        return;
    }
    default:
        appendCsv(out, v);
    }
}

std::int64_t writeSql(Recordset& rows, const std::string& name, Output& output, Progress& progress)
{
    std::string& out = output.buffer();
    std::string insert = "INSERT INTO ";
    appendSqlName(insert, name);
    insert += " VALUES(";
    out += "BEGIN;\nCREATE TABLE ";
    appendSqlName(out, name);
    for (int i = 0; i < rows.fieldCount(); ++i) {
        out += i ? ", " : " (";
        appendSqlName(out, rows.Fields().Item(i).Name());
        out += " ";
        out += sqlColumnType(rows.Fields().Item(i).def().type);
    }
    out += ");\n";
    const std::int64_t done =
        eachRecord(rows, output, progress, [&](const std::vector<ValueView>& values, std::int64_t) {
            out += insert;
            for (std::size_t i = 0; i < values.size(); ++i) {
                out += i ? "," : "";
                appendSqlValue(out, values[i]);
            }
            out += ");\n";
        });
    out += "COMMIT;\n";
    return done;
}

}  // namespace

std::int64_t writeRecords(Recordset& rows, std::string_view format, const std::string& name,
                          Output& output, Progress& progress)
{
    if (format == "csv")
        return writeCsv(rows, output, progress);
    if (format == "html")
        return writeHtml(rows, name, output, progress);
    if (format == "sql")
        return writeSql(rows, name, output, progress);
    return writeJson(rows, format == "ndjson", output, progress);
}

}  // namespace velnor::cli
