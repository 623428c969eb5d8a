#include "access/formats/paradox/new_table.h"

#include <algorithm>
#include <array>

#include "access/engine_error.h"
#include "access/formats/paradox/cipher.h"
#include "access/formats/paradox/mb_file.h"
#include "access/storage/replace_file.h"
#include "platform/paths.h"

namespace velnor::paradox {
namespace {

constexpr std::array kForms{
    NewTableForm{"Paradox 5.x;", 0x0B},
    NewTableForm{"Paradox 7.x;", 0x0C},
    NewTableForm{"Paradox 4.x;", 0x09},
    NewTableForm{"Paradox 3.x;", 0x04},
};
constexpr std::size_t kMostKeyFields = 16, kLongestFieldName = 25;
constexpr std::uint16_t kTableSerial = 3, kTreeSerial = 4, kIndexSerial = 5;

struct SortOrder {
    std::uint8_t byte;
    const char* name;
};
constexpr SortOrder kWindowsOrder{76, "DBWINUS0"}, kAsciiOrder{0, "ascii"};

[[noreturn]] void noKey(const StoredField& field)
{
    throw EngineError(EngineErrorNumber::InvalidIndex,
                      "The field " + field.name + " cannot be part of a key.");
}

std::uint32_t treeBlockBytes(std::size_t entryBytes)
{
    for (const std::uint32_t kib : {2u, 4u, 16u})
        if ((kib * 1024 - 6) / entryBytes >= (kib == 16 ? 3 : 8))
            return kib * 1024;
    return 32 * 1024;
}

/// The code page decides the order: both known orders compare bytes.
void chooseSortOrder(FileHeader& table, const std::string& wanted)
{
    const bool old = table.version < 5;
    table.codePage = CodePage::find(old ? 437 : 1252);
    if (!wanted.empty())
        table.codePage = CodePage::find(std::string_view(wanted));
    if (!table.codePage || (old && table.codePage->number() != 437))
        throw EngineError(EngineErrorNumber::InvalidArgument,
                          "Tables of this kind cannot have the code page \"" + wanted + "\".");
    const int number = table.codePage->number();
    const SortOrder& order = number == 1252 ? kWindowsOrder : kAsciiOrder;
    table.sortByte = order.byte;
    table.sortName = order.name;
    table.codePageNumber = old ? std::uint16_t{0} : static_cast<std::uint16_t>(number);
}

}  // namespace

const NewTableForm* formOfConnectWord(std::string_view word)
{
    const auto found = std::find_if(kForms.begin(), kForms.end(), [&](const NewTableForm& form) {
        return paths::sameName(form.connectWord, word);
    });
    return found == kForms.end() ? nullptr : &*found;
}

void setFieldName(StoredField& field, const std::string& name, const CodePage& page)
{
    field.name = name;
    field.stored.clear();
    if (!page.encode(name, field.stored) || field.stored.empty() ||
        field.stored.size() > kLongestFieldName || field.stored.find('\0') != std::string::npos)
        throw EngineError(EngineErrorNumber::InvalidFieldName,
                          "\"" + name + "\" cannot be the name of a field in a Paradox table.");
}

FileHeader newTreeHeader(const FileHeader& data, FileKind kind, std::string_view fileName)
{
    FileHeader tree;
    tree.kind = kind;
    tree.version = data.version;
    tree.serial = kTreeSerial;
    tree.root = 1;
    tree.sortByte = data.sortByte;
    tree.codePage = data.codePage;
    tree.lastNumber = 1;
    tree.dataStamp = 1;
    tree.fields.assign(data.fields.begin(), data.fields.begin() + data.keyFields);
    tree.storedTableName = fileName;
    layOutHeader(tree);
    tree.blockBytes = treeBlockBytes(tree.recordSize);
    return tree;
}

FileHeader newIndexHeader(const FileHeader& table, const std::vector<std::size_t>& fields,
                          std::uint8_t options, std::string_view label, std::string_view fileName)
{
    FileHeader index;
    const bool group = !label.empty();
    index.kind = group ? FileKind::KeptGroup : FileKind::KeptSingle;
    index.version = table.version;
    index.serial = kIndexSerial;
    index.sortByte = table.sortByte;
    index.sortName = table.sortName;
    index.codePage = table.codePage;
    index.codePageNumber = table.codePageNumber;
    index.link = 0xFF;
    index.dataStamp = 1;
    index.structureStamp = table.structureStamp;
    index.options = options;
    index.lastNumber = table.lastNumber;
    index.cipherKey = table.cipherKey;
    index.indexField = static_cast<std::uint16_t>(fields[0] + 1);
    if (!table.codePage->encode(label, index.label))
        throw EngineError(EngineErrorNumber::InvalidIndex,
                          "An index cannot have the name \"" + std::string(label) + "\".");
    std::uint16_t highest = 0;
    for (const std::size_t n : fields) {
        StoredField field = table.fields[n];
        if (!typeInfo(field.code).mayBeKey)
            noKey(field);
        field.number = static_cast<std::uint16_t>(n + 1);
        highest = std::max(highest, field.number);
        if (options & kDescending)
            field.number |= kFieldDescends;
        index.fields.push_back(std::move(field));
    }
    for (std::size_t i = 0; i < table.keyFields; ++i)
        index.fields.push_back(table.fields[i]);
    StoredField hint;
    hint.code = FieldCode::Short;
    hint.sizeByte = 2;
    hint.length = 2;
    hint.stored = hint.name = "Blk Num";
    index.fields.push_back(hint);
    for (std::size_t i = fields.size(); i < index.fields.size(); ++i) {
        index.fields[i].number = static_cast<std::uint16_t>(i + 1);
        highest = std::max(highest, index.fields[i].number);
    }
    index.nextFieldId = static_cast<std::uint16_t>(highest + 1);
    index.keyFields = static_cast<std::uint16_t>(index.fields.size() - 1);
    index.storedTableName = fileName;
    index.blockBytes = table.blockBytes;
    layOutHeader(index);
    if (index.recordsPerBlock() < 3)
        throw EngineError(EngineErrorNumber::RecordTooLarge,
                          "The key of the index would be too long for the blocks of the table.");
    return index;
}

FileHeader newTableHeader(const TableLayout& layout, std::uint8_t version,
                          std::string_view fileName, const std::string& codePage)
{
    FileHeader table;
    table.kind = FileKind::PlainTable;
    table.version = version;
    table.serial = kTableSerial;
    table.structureStamp = 1;
    table.dataStamp = 2;
    chooseSortOrder(table, codePage);
    bool numbered = false;
    for (const FieldDef& def : layout.fields) {
        StoredField field = storedFieldFor(def, version);
        setFieldName(field, def.name, *table.codePage);
        field.number = static_cast<std::uint16_t>(table.fields.size() + 1);
        if (field.code == FieldCode::Autonumber && numbered)
            throw EngineError(EngineErrorNumber::InvalidArgument,
                              "A Paradox table has at most one autonumber.");
        numbered = numbered || field.code == FieldCode::Autonumber;
        table.fields.push_back(std::move(field));
    }
    table.nextFieldId = static_cast<std::uint16_t>(table.fields.size() + 1);
    table.storedTableName = fileName;
    layOutHeader(table);
    table.blockBytes = blockBytesFor(table.recordSize);
    return table;
}

void makeKeyed(FileHeader& table, std::size_t count)
{
    if (count == 0 || count > kMostKeyFields || count > table.fields.size())
        throw EngineError(EngineErrorNumber::InvalidIndex,
                          "A primary key has one to sixteen fields.");
    for (std::size_t i = 0; i < count; ++i)
        if (!typeInfo(table.fields[i].code).mayBeKey)
            noKey(table.fields[i]);
    table.kind = FileKind::KeyedTable;
    table.keyFields = static_cast<std::uint16_t>(count);
    if (table.recordsPerBlock() < 3)
        throw EngineError(EngineErrorNumber::RecordTooLarge,
                          "The records are too long for a table with a primary key.");
}

std::size_t leadingFields(const TableLayout& layout, const IndexDef& index)
{
    if (index.fields.size() > layout.fields.size())
        return 0;
    for (std::size_t i = 0; i < index.fields.size(); ++i)
        if (!paths::sameName(index.fields[i].name, layout.fields[i].name) ||
            index.fields[i].descending)
            return 0;
    return index.fields.size();
}

void makeFile(FileSystem& files, const std::string& path, const std::vector<std::uint8_t>& bytes)
{
    const auto file = files.open(path, OpenMode::Replace);
    file->writeAt(0, bytes);
    file->sync();
}

void createTableFiles(FileSystem& files, const std::string& path, const FileHeader& table)
{
    std::vector<std::string> made;
    try {
        if (table.hasLongFields()) {
            made.push_back(paths::withExtension(path, "MB"));
            std::vector<std::uint8_t> values = MbFile::newHeader();
            if (table.cipherKey)
                encipherLongValues(values, table.cipherKey);
            makeFile(files, made.back(), values);
        }
        if (table.kind == FileKind::KeyedTable) {
            made.push_back(paths::withExtension(path, "PX"));
            FileHeader tree =
                newTreeHeader(table, FileKind::PrimaryTree, paths::fileName(made.back()));
            tree.link = linkOf(table.dataStamp, table.sortByte);
            makeFile(files, made.back(), headerBytes(tree));
        }
        FileReplacement file(files, path);
        file.file().writeAt(0, headerBytes(table));
        file.commit();
    } catch (...) {
        for (const std::string& companion : made)
            if (files.fileExists(companion))
                files.remove(companion);
        throw;
    }
}

}  // namespace velnor::paradox
