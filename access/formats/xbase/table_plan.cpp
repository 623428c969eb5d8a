#include "access/formats/xbase/table_plan.h"

#include <algorithm>
#include <cstring>

#include "access/engine_error.h"
#include "access/formats/xbase/new_table.h"
#include "access/storage/byte_reader.h"
#include "platform/paths.h"

namespace velnor::xbase {
namespace {

constexpr std::size_t kBacklinkBytes = 263, kPlaceAt = 12;
constexpr std::uint8_t kEndOfFields = 0x0D, kEndOfFile = 0x1A;
constexpr std::uint8_t kHasIndex = 0x01, kHasMemo = 0x02;
constexpr std::uint8_t kMayBeNull = 0x02, kAutonumber = 0x0C;
constexpr std::string_view kMemoLetters = "MGPW", kDbaseMemoLetters = "MGPWB";

/// The form that files of a dBASE kind have, when they were made under another word.
const NewTableForm& formNamed(std::string_view word)
{
    return *formOfConnectWord(word);
}

}  // namespace

/// New fields are made in the way of the table, whatever word it was opened by.
NewTableForm TablePlanner::formFor(const NewTableForm& word) const
{
    const DbfFormat& format = *header_.format;
    if (format.visualFox)
        return formNamed("FoxPro 3.0;");
    if (format.fox)
        return formNamed("FoxPro 2.6;");
    NewTableForm form = word.visualFox ? formNamed("FoxPro 2.6;") : word;
    if (header_.hasMemoField()) {
        form.memo = format.memo;
        form.memoVersion = header_.version;
        form.binaryFields = form.binaryFields && format.memo != MemoForm::DbtIII;
    } else if (format.level7) {
        form.memo = MemoForm::DbtIV;
        form.memoVersion = 0x8C;
    }
    return form;
}

TablePlanner::TablePlanner(std::span<const std::uint8_t> bytes, const DbfHeader& header,
                           const NewTableForm& form)
    : bytes_(bytes), header_(header), form_(formFor(form))
{
    for (std::size_t i = 0; i < header.fields.size(); ++i)
        columns_.push_back(columnOf(header.fields[i], static_cast<int>(i)));
    for (const DbfField& field : header.hidden) {
        columns_.push_back(columnOf(field, -1));
        columns_.back().hidden = true;
    }
    const auto place = [&](const Column& column, std::size_t i) {
        return column.hidden ? header.hidden[i - header.fields.size()].offset
                             : header.fields[i].offset;
    };
    std::vector<std::pair<std::uint32_t, std::size_t>> order;
    for (std::size_t i = 0; i < columns_.size(); ++i)
        order.emplace_back(place(columns_[i], i), i);
    std::sort(order.begin(), order.end());
    std::vector<Column> sorted;
    for (const auto& [offset, i] : order)
        sorted.push_back(std::move(columns_[i]));
    columns_ = std::move(sorted);
}

TablePlanner::Column TablePlanner::columnOf(const DbfField& field, int source) const
{
    Column column;
    const auto from = bytes_.subspan(field.descriptorAt, header_.format->shape->descriptorSize);
    column.descriptor.assign(from.begin(), from.end());
    column.length = field.length;
    column.letter = field.letter;
    column.flags = field.flags;
    column.source = source;
    return column;
}

std::vector<std::uint8_t> TablePlanner::newDescriptor(const NewField& made) const
{
    const HeaderShape& shape = *header_.format->shape;
    std::vector<std::uint8_t> descriptor(shape.descriptorSize);
    putDescriptor(made, shape, descriptor.data());
    return descriptor;
}

void TablePlanner::checkSize() const
{
    const auto fields = std::count_if(columns_.begin(), columns_.end(),
                                      [](const Column& column) { return !column.hidden; });
    if (fields > form_.maxFields)
        throw EngineError(EngineErrorNumber::TooManyFields, "A table of this kind has at most " +
                                                                std::to_string(form_.maxFields) +
                                                                " fields.");
    std::uint64_t bytes = 1 + nullFlags().length;
    for (const Column& column : columns_)
        bytes += column.length;
    if (bytes > static_cast<std::uint64_t>(form_.maxRecordBytes))
        throw EngineError(EngineErrorNumber::RecordTooLarge,
                          "The records would be longer than " +
                              std::to_string(form_.maxRecordBytes) + " bytes.");
}

void TablePlanner::add(const FieldDef& def)
{
    const NewField made = newField(def, form_);
    for (const DbfField& field : header_.fields)
        if (paths::sameName(field.name, made.name))
            throw EngineError(EngineErrorNumber::SameFieldNames,
                              "Two fields would have the name " + made.name + ".");
    Column column;
    column.descriptor = newDescriptor(made);
    column.length = made.length;
    column.letter = made.letter;
    column.flags = made.flags;
    columns_.push_back(std::move(column));
    checkSize();
}

void TablePlanner::drop(std::size_t field)
{
    if (header_.fields.size() < 2)
        throw EngineError(EngineErrorNumber::InvalidArgument, "A table keeps at least one field.");
    std::erase_if(columns_, [&](const Column& column) {
        return !column.hidden && column.source == static_cast<int>(field);
    });
}

void TablePlanner::widen(std::size_t field, const FieldDef& def)
{
    const NewField made = newField(def, form_);
    const DbfField& old = header_.fields[field];
    const bool number = made.letter == 'N' && old.coding == Coding::Number;
    const bool text = made.letter == 'C' &&
                      (old.coding == Coding::Character || old.coding == Coding::Varchar) &&
                      old.length < 256;
    const int places = made.length - made.decimals - (made.decimals ? 1 : 0);
    const int placesBefore = static_cast<int>(old.length) - old.decimals - (old.decimals ? 1 : 0);
    const bool holds = number ? made.decimals >= old.decimals && places >= placesBefore
                              : text && made.length >= old.length;
    if (!holds)
        throw EngineError(EngineErrorNumber::NotSupported, "The field " + old.name + ", which is " +
                                                               old.nativeType() +
                                                               ", can only become longer.");
    for (Column& column : columns_)
        if (!column.hidden && column.source == static_cast<int>(field)) {
            const HeaderShape& shape = *header_.format->shape;
            column.length = made.length;
            column.descriptor[shape.lengthAt] = made.length;
            column.descriptor[shape.decimalsAt] = made.decimals;
        }
    checkSize();
}

/// One bit for the length of each V and Q, one for each field that may be Null.
TablePlanner::Column TablePlanner::nullFlags() const
{
    Column flags;
    if (!header_.format->visualFox)
        return flags;
    std::uint32_t bits = 0;
    for (const Column& column : columns_)
        bits += (column.letter == 'V' || column.letter == 'Q') + ((column.flags & kMayBeNull) != 0);
    flags.length = (bits + 7) / 8;
    if (bits)
        flags.descriptor = newDescriptor(nullFlagsField(static_cast<int>(bits)));
    flags.letter = '0';
    flags.hidden = true;
    return flags;
}

bool TablePlanner::anyOf(const std::vector<Column>& columns, std::string_view letters) const
{
    return std::any_of(columns.begin(), columns.end(), [&](const Column& column) {
        return letters.find(column.letter) != letters.npos;
    });
}

/// The version byte stays, unless memo fields or counters come or go.
std::uint8_t TablePlanner::version(const std::vector<Column>& columns) const
{
    const std::uint8_t old = header_.version;
    if (header_.format->visualFox) {
        const bool counts = std::any_of(columns.begin(), columns.end(), [](const Column& c) {
            return (c.flags & kAutonumber) == kAutonumber;
        });
        return old == 0x30 && counts ? 0x31 : old;
    }
    const bool memo = anyOf(columns, kDbaseMemoLetters);
    if (memo == header_.hasMemoField())
        return old;
    if (memo)
        return form_.memoVersion;
    if (header_.format->fox || old == 0xFB)
        return 0x03;
    const auto without = static_cast<std::uint8_t>(old & ~0x88);
    return formatOfVersion(without) ? without : old;
}

/// FoxPro keeps the place of a field in its descriptor; others have rubbish there, or nothing.
bool TablePlanner::keepsPlaces() const
{
    if (header_.format->level7)
        return false;
    return form_.fox ||
           std::all_of(header_.fields.begin(), header_.fields.end(), [this](const DbfField& field) {
               return loadLE<std::uint32_t>(&bytes_[field.descriptorAt + kPlaceAt]) == field.offset;
           });
}

TablePlan TablePlanner::plan() const
{
    const HeaderShape& shape = *header_.format->shape;
    std::vector<Column> columns = columns_;
    if (Column flags = nullFlags(); flags.length)
        columns.push_back(std::move(flags));
    TablePlan plan;
    std::vector<std::uint8_t>& head = plan.header;
    head.assign(bytes_.begin(), bytes_.begin() + shape.firstDescriptor);
    const bool places = keepsPlaces();
    std::uint32_t offset = 1;
    for (Column& column : columns) {
        if (places)
            storeLE(&column.descriptor[kPlaceAt], offset);
        offset += column.length;
        head.insert(head.end(), column.descriptor.begin(), column.descriptor.end());
        if (!column.hidden)
            plan.sources.push_back(column.source);
    }
    head.push_back(kEndOfFields);
    if (header_.format->visualFox) {  // which database container the table belongs to
        const std::size_t behind = header_.endOfFields + std::size_t{1};
        const std::size_t there = bytes_.size() - std::min(bytes_.size(), behind);
        const std::size_t kept = std::min(there, kBacklinkBytes);
        const std::size_t at = head.size();
        head.resize(at + kBacklinkBytes);
        if (kept)
            std::memcpy(head.data() + at, bytes_.data() + behind, kept);
    }
    head[0] = version(columns);
    storeLE(&head[4], std::uint32_t{0});
    storeLE(&head[8], static_cast<std::uint16_t>(head.size()));
    storeLE(&head[10], static_cast<std::uint16_t>(offset));
    head[28] = static_cast<std::uint8_t>(head[28] & ~kHasIndex);
    if (header_.format->visualFox)
        head[28] = static_cast<std::uint8_t>((head[28] & ~kHasMemo) |
                                             (anyOf(columns, kMemoLetters) ? kHasMemo : 0));
    head.push_back(kEndOfFile);
    return plan;
}

}  // namespace velnor::xbase
