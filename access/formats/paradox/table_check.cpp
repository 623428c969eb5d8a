#include "access/formats/paradox/table_check.h"

#include <algorithm>

#include "access/engine_error.h"
#include "access/formats/paradox/check_file.h"
#include "access/formats/paradox/check_index.h"
#include "access/formats/paradox/check_mb.h"
#include "access/formats/paradox/field_codec.h"
#include "platform/paths.h"

namespace velnor::paradox {
namespace {

bool anyByte(const std::uint8_t* bytes, std::size_t length)
{
    return std::any_of(bytes, bytes + length, [](std::uint8_t b) { return b != 0; });
}

/// Whether the bytes are those of a value, or of Null.
bool isValue(const StoredField& field, const std::uint8_t* bytes, const CodePage& page,
             std::string& scratch)
{
    switch (field.code) {
    case FieldCode::Alpha:
    case FieldCode::Bytes:
        return true;
    case FieldCode::Logical:
        return bytes[0] == 0 || bytes[0] == 0x80 || bytes[0] == 0x81;
    case FieldCode::Bcd:
        return (bytes[0] & 0xC0) == 0 || ((bytes[0] & 0x40) && (bytes[0] & 0x3F) == field.sizeByte);
    default:
        return !anyByte(bytes, field.length) || !decodeField(field, bytes, page, scratch).isNull();
    }
}

void checkValues(FileCheck& file, std::uint32_t lastNumber)
{
    const FileHeader& header = file.header();
    std::string scratch;
    std::int64_t number = 0, highest = 0;
    for (const FileCheck::ChainBlock& block : file.chain()) {
        const std::uint8_t* record = file.recordsOf(block);
        for (std::size_t i = 0; i < block.records; ++i, record += header.recordSize) {
            ++number;
            for (const StoredField& field : header.fields) {
                const std::uint8_t* bytes = record + field.offset;
                if (!field.isLong() && !isValue(field, bytes, *header.codePage, scratch))
                    file.fault("record " + std::to_string(number) + ", field " + field.name +
                                   ": no value has its bytes",
                               "value");
                if (field.code == FieldCode::Autonumber)
                    highest = std::max(highest, integerAt(bytes, 4));
            }
        }
    }
    if (highest > static_cast<std::int64_t>(lastNumber))
        file.fault("the last autonumber is " + std::to_string(lastNumber) + ", a record has " +
                   std::to_string(highest));
}

void checkPrimaryTree(DbTable& table, FileCheck& records, CheckReport& report)
{
    const Companion* companion = findCompanion(table.companions(), "PX");
    if (!table.keyed()) {
        if (companion)
            report.fault(std::string(paths::fileName(companion->path)),
                         "it belongs to a table without a key");
        return;
    }
    if (!companion)
        return records.fault("its primary index, a PX file, is missing");
    const std::string name(paths::fileName(companion->path));
    try {
        FileCheck tree(name, table.companion(companion->path), table.opening().codePage, report);
        if (tree.header().kind != FileKind::PrimaryTree)
            return tree.fault("it is no primary index");
        tree.checkTree(records, records.header().keyLength(),
                       linkOf(records.header().dataStamp, records.header().sortByte));
    } catch (const EngineError& error) {
        report.fault(name, error.what());
    }
}

void checkChecks(DbTable& table, CheckReport& report)
{
    const Companion* companion = findCompanion(table.companions(), "VAL");
    if (!companion)
        return;
    const std::string name(paths::fileName(companion->path));
    if (table.header().version < 5)
        return report.note(name, "checks of level 3 are not looked at");
    if (!table.checks())
        return report.fault(name, "it is out of date, or damaged");
    std::vector<std::uint16_t> ids;
    for (const StoredField& field : table.header().fields)
        ids.push_back(field.number);
    if (table.checks()->fieldIds != ids)
        report.fault(name, "its list of fields is not that of the table");
}

}  // namespace

void checkTable(DbTable& table, const ProblemSink& sink)
{
    table.commit();  // what is looked at is the files
    CheckReport report(sink);
    FileCheck records(std::string(paths::fileName(table.path())), table.set().main(),
                      table.opening().codePage, report);
    records.checkHeader();
    records.checkBlocks();
    checkValues(records, table.header().lastNumber);
    const FileHeader& header = records.header();
    if (table.keyed())
        records.checkOrder(header.keyLength(),
                           keyOrderOf(header, {header.fields.data(), header.keyFields}, false),
                           true);
    checkPrimaryTree(table, records, report);
    for (const auto& [file, why] : table.indexTroubles())
        report.fault(file, why);
    for (const auto& index : table.indexes())
        checkIndex(table, *index, records, report);
    for (const Companion& companion : table.companions())
        if (companion.kind == CompanionKind::IndexTree &&
            !findCompanion(table.companions(), "X" + companion.extension.substr(1)))
            report.fault(std::string(paths::fileName(companion.path)), "its X file is missing");
    if (table.mb())
        checkLongValues(table, records, report);
    else if (table.mbMissing())
        records.fault("its MB file is missing");
    checkChecks(table, report);
}

}  // namespace velnor::paradox
