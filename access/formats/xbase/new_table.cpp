#include "access/formats/xbase/new_table.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "access/engine_error.h"
#include "access/formats/xbase/field_name.h"
#include "access/formats/xbase/language.h"
#include "access/formats/xbase/memo_file.h"
#include "access/storage/byte_reader.h"
#include "access/storage/replace_file.h"
#include "platform/host.h"
#include "platform/paths.h"

namespace velnor::xbase {
namespace {

constexpr std::size_t kHeadBytes = 32, kBacklinkBytes = 263;
constexpr std::uint8_t kMayBeNull = 0x02, kAutonumber = 0x0C, kHiddenBinary = 0x05;
constexpr char kNullFlags = '0';

bool isMemoLetter(char letter)
{
    return letter == 'M' || letter == 'G';
}

/// Letter, length and decimals only.
NewField field(char letter, int length, int decimals = 0)
{
    NewField made;
    made.letter = letter;
    made.length = static_cast<std::uint8_t>(length);
    made.decimals = static_cast<std::uint8_t>(decimals);
    return made;
}

NewField number(const NewTableForm& form, int width, int decimals)
{
    width = std::min(width, form.maxNumberWidth);
    return field('N', width, std::clamp(decimals, 0, std::min(width - 2, 15)));
}

/// Digits, a sign and a point, for the types that say their digits.
NewField decimalNumber(const FieldDef& def, const NewTableForm& form)
{
    if (def.precision == 0)
        return number(form, 20, 5);
    return number(form, std::max(def.precision + 1 + (def.scale ? 1 : 0), def.scale + 2),
                  def.scale);
}

NewField binaryField(const FieldDef& def, const NewTableForm& form)
{
    if (!form.binaryFields)
        throw EngineError(EngineErrorNumber::NotSupported,
                          "Tables of this kind have no binary fields: " + def.name + ".");
    return field('G', form.visualFox ? 4 : 10);
}

NewField textField(const FieldDef& def)
{
    return field('C', def.size <= 0 ? 254 : std::min(def.size, 254));
}

NewField plainField(const FieldDef& def, const NewTableForm& form)
{
    const bool visual = form.visualFox;
    switch (def.type) {
    case FieldType::Text:
    case FieldType::Char:
        return textField(def);
    case FieldType::Guid:
        return field('C', 38);
    case FieldType::Byte:
        return number(form, 4, 0);
    case FieldType::Integer:
        return number(form, 6, 0);
    case FieldType::Long:
        return visual ? field('I', 4) : number(form, 11, 0);
    case FieldType::BigInt:
        return number(form, 20, 0);
    case FieldType::Double:
        return visual ? field('B', 8, 5) : number(form, 20, 5);
    case FieldType::Currency:
        return visual ? field('Y', 8, 4) : number(form, 20, 5);
    case FieldType::Numeric:
    case FieldType::Decimal:
        return decimalNumber(def, form);
    case FieldType::Single:
    case FieldType::Float:
        return number(form, 20, 5);
    case FieldType::Boolean:
        return field('L', 1);
    case FieldType::Date:
    case FieldType::Time:
    case FieldType::TimeStamp:
        return visual ? field('T', 8) : field('D', 8);
    case FieldType::Memo:
        return field('M', visual ? 4 : 10);
    case FieldType::Binary:
    case FieldType::VarBinary:
    case FieldType::LongBinary:
        return binaryField(def, form);
    case FieldType::None:
        break;
    }
    throw EngineError(EngineErrorNumber::NotSupported,
                      "Tables of this kind have no type for the field " + def.name + ".");
}

/// Whole numbers, doubles and money have no blank: they are Null by a flag.
bool needsNullFlag(const NewField& made, const FieldDef& def)
{
    return !def.required && (made.letter == 'I' || made.letter == 'B' || made.letter == 'Y');
}

void checkSizes(const std::vector<NewField>& fields, const TableLayout& layout,
                const NewTableForm& form)
{
    if (fields.empty())
        throw EngineError(EngineErrorNumber::InvalidArgument,
                          "The table \"" + layout.name + "\" has no fields.");
    if (static_cast<int>(layout.fields.size()) > form.maxFields)
        throw EngineError(EngineErrorNumber::TooManyFields, "A table of this kind has at most " +
                                                                std::to_string(form.maxFields) +
                                                                " fields.");
    int bytes = 1;
    for (const NewField& made : fields)
        bytes += made.length;
    if (bytes > form.maxRecordBytes)
        throw EngineError(EngineErrorNumber::RecordTooLarge,
                          "The records of \"" + layout.name + "\" would be longer than " +
                              std::to_string(form.maxRecordBytes) + " bytes.");
}

void checkNames(const std::vector<NewField>& fields)
{
    for (std::size_t i = 1; i < fields.size(); ++i)
        for (std::size_t j = 0; j < i; ++j)
            if (fields[i].name == fields[j].name)
                throw EngineError(EngineErrorNumber::SameFieldNames,
                                  "Two fields would have the name " + fields[i].name + ".");
}

void addNullFlags(std::vector<NewField>& fields)
{
    const auto bits = std::count_if(fields.begin(), fields.end(),
                                    [](const NewField& f) { return f.flags & kMayBeNull; });
    if (bits)
        fields.push_back(nullFlagsField(static_cast<int>(bits)));
}

std::uint8_t versionFor(const std::vector<NewField>& fields, const NewTableForm& form)
{
    const auto any = [&fields](auto test) {
        return std::any_of(fields.begin(), fields.end(), test);
    };
    if (any([](const NewField& f) { return (f.flags & kAutonumber) == kAutonumber; }))
        return form.autonumberVersion;
    return any([](const NewField& f) { return isMemoLetter(f.letter); }) ? form.memoVersion
                                                                         : form.plainVersion;
}

void makeMemoFile(FileSystem& files, const std::string& path, const NewTableForm& form)
{
    const auto file = files.open(path, OpenMode::Replace);
    file->writeAt(0, newMemoHeader(form.memo, paths::foldName(paths::baseName(path))));
    file->sync();
}

}  // namespace

NewField newField(const FieldDef& def, const NewTableForm& form)
{
    NewField made = plainField(def, form);
    made.name = cleanFieldName(def.name);
    if (form.visualFox && def.autonumber && made.letter == 'I')
        made.flags = kAutonumber;
    else if (form.visualFox && needsNullFlag(made, def))
        made.flags = kMayBeNull;
    return made;
}

NewField nullFlagsField(int bits)
{
    NewField flags = field(kNullFlags, (bits + 7) / 8);
    flags.name = "_NullFlags";
    flags.flags = kHiddenBinary;
    return flags;
}

void putDescriptor(const NewField& made, const HeaderShape& shape, std::uint8_t* to)
{
    std::memcpy(to, made.name.data(),
                std::min<std::size_t>(made.name.size(), shape.nameSize - std::size_t{1}));
    to[shape.typeAt] = static_cast<std::uint8_t>(made.letter);
    to[shape.lengthAt] = made.length;
    to[shape.decimalsAt] = made.decimals;
    if (!shape.flagsAt)
        return;
    to[shape.flagsAt] = made.flags;
    if ((made.flags & kAutonumber) == kAutonumber) {
        storeLE<std::uint32_t>(to + shape.autonumberAt, 1);
        to[shape.stepAt] = 1;
    }
}

std::vector<NewField> newFields(const TableLayout& layout, const NewTableForm& form)
{
    std::vector<NewField> fields;
    for (const FieldDef& def : layout.fields)
        fields.push_back(newField(def, form));
    if (form.visualFox)
        addNullFlags(fields);
    checkSizes(fields, layout, form);
    checkNames(fields);
    return fields;
}

std::vector<std::uint8_t> newHeader(const std::vector<NewField>& fields, const NewTableForm& form,
                                    std::uint8_t languageMark)
{
    const std::size_t length =
        kHeadBytes * (fields.size() + 1) + 1 + (form.visualFox ? kBacklinkBytes : 0);
    std::vector<std::uint8_t> head(length + 1, 0);
    const LocalTime now = host().clock->now();
    head[0] = versionFor(fields, form);
    head[1] = static_cast<std::uint8_t>(now.year - 1900);
    head[2] = static_cast<std::uint8_t>(now.month);
    head[3] = static_cast<std::uint8_t>(now.day);
    storeLE(&head[8], static_cast<std::uint16_t>(length));
    head[29] = languageMark;
    std::uint32_t offset = 1;
    std::size_t at = kHeadBytes;
    const HeaderShape& shape = *formatOfVersion(head[0])->shape;
    for (const NewField& made : fields) {
        putDescriptor(made, shape, &head[at]);
        if (form.fox)
            storeLE(&head[at + 12], offset);
        offset += made.length;
        at += kHeadBytes;
        if (form.visualFox && isMemoLetter(made.letter))
            head[28] = 0x02;
    }
    storeLE(&head[10], static_cast<std::uint16_t>(offset));
    head[at] = 0x0D;
    head[length] = 0x1A;
    return head;
}

void createTableFiles(FileSystem& files, const std::string& path, const TableLayout& layout,
                      const NewTableForm& form, const std::string& codePage)
{
    const std::vector<NewField> fields = newFields(layout, form);
    const CodePage& page = chooseCodePage(codePage, 0, {}, form.codePage);
    const std::uint8_t mark =
        page.number() == form.codePage ? form.languageMark : markOfCodePage(page.number());
    const std::vector<std::uint8_t> head = newHeader(fields, form, mark);
    const bool memo = std::any_of(fields.begin(), fields.end(),
                                  [](const NewField& f) { return isMemoLetter(f.letter); });
    const std::string memoPath =
        paths::withExtension(path, form.memo == MemoForm::Fpt ? "FPT" : "DBT");
    if (memo)
        makeMemoFile(files, memoPath, form);
    try {
        FileReplacement table(files, path);
        table.file().writeAt(0, head);
        table.commit();
    } catch (...) {
        if (memo && files.fileExists(memoPath))
            files.remove(memoPath);
        throw;
    }
}

}  // namespace velnor::xbase
