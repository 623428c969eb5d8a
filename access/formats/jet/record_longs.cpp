#include "access/formats/jet/record_longs.h"

#include "access/formats/jet/text_compression.h"

namespace velnor::jet {
namespace {

std::span<const std::uint8_t> bytesOf(const std::string& text)
{
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

[[noreturn]] void wrongKind()
{
    throw EngineError(EngineErrorNumber::TypeConversion,
                      "The value does not fit the type of its field.");
}

}  // namespace

RecordLongs::RecordLongs(JetTable& table) : table_(table)
{
    const auto& fields = table.plan().fields;
    ofField_.assign(fields.size(), -1);
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (!fields[i].longValue())
            continue;
        ofField_[i] = static_cast<int>(parts_.size());
        Part part;
        part.field = static_cast<int>(i);
        if (const LongValueMaps* maps = table.def().mapsOf(fields[i].id))
            part.column = std::make_unique<LongValueColumn>(table.file(), *maps);
        parts_.push_back(std::move(part));
    }
}

void RecordLongs::startEmpty()
{
    for (Part& part : parts_)
        part.old.clear();
}

void RecordLongs::start(const RowReader& row)
{
    for (Part& part : parts_) {
        const auto stored = row.raw(part.field);
        part.old.clear();
        if (stored)
            part.old.assign(reinterpret_cast<const char*>(stored->data()), stored->size());
    }
}

void RecordLongs::setAll(std::span<const ValueView> values)
{
    for (Part& part : parts_) {
        part.set = true;
        part.value = values[static_cast<std::size_t>(part.field)];
        part.written = false;
    }
}

void RecordLongs::setChanged(std::span<const ValueView> values, const std::vector<bool>& changed)
{
    for (Part& part : parts_) {
        const auto field = static_cast<std::size_t>(part.field);
        part.set = changed[field];
        part.value = part.set ? values[field] : ValueView::null();
        part.written = false;
    }
}

void RecordLongs::setNone()
{
    for (Part& part : parts_) {
        part.set = true;
        part.value = ValueView::null();
        part.written = false;
    }
}

void RecordLongs::encode(const Part& part, std::string& bytes, std::size_t& plain) const
{
    bytes.clear();
    if (table_.plan().fields[static_cast<std::size_t>(part.field)].type != column_type::kOle)
        return encodeText(part, bytes, plain);
    if (part.value.kind() != ValueKind::Bytes)
        wrongKind();
    const auto data = part.value.asBytes();
    bytes.assign(reinterpret_cast<const char*>(data.data()), data.size());
    plain = bytes.size();
}

void RecordLongs::encodeText(const Part& part, std::string& bytes, std::size_t& plain) const
{
    const FieldPlan& field = table_.plan().fields[static_cast<std::size_t>(part.field)];
    if (part.value.kind() != ValueKind::Text)
        wrongKind();
    const JetFile& file = table_.file();
    if (file.format().wideText) {
        encodeMemo(part.value.asText(), field.compress, bytes);
        plain = 2 * utf16Length(part.value.asText());
        return;
    }
    if (!file.codePage().encode(part.value.asText(), bytes))
        throw EngineError(EngineErrorNumber::TypeConversion,
                          "The text has letters that the file's code page cannot hold.");
    plain = bytes.size();
}

RecordLongs::Sizes RecordLongs::sizes()
{
    const LongValueLayout& limits = table_.file().format().longValue;
    Sizes sizes;
    for (const Part& part : parts_) {
        if (!part.set || part.value.isNull())
            continue;
        std::size_t plain = 0;
        encode(part, encoded_, plain);
        const bool fits = plain <= static_cast<std::size_t>(limits.maxInline);
        sizes.inRow += LongValueHeader::kBytes + (fits ? encoded_.size() : 0);
        sizes.outside += LongValueHeader::kBytes;
    }
    return sizes;
}

void RecordLongs::write(bool mayInline, RowWriterBuffer& row)
{
    for (Part& part : parts_) {
        if (!part.set || part.value.isNull())
            continue;
        if (!part.column)
            throw EngineError(EngineErrorNumber::Corrupt,
                              "The definition of table \"" + table_.name() +
                                  "\" is damaged; repair the database.");
        std::size_t plain = 0;
        encode(part, encoded_, plain);
        part.column->write(bytesOf(encoded_), plain, mayInline, part.stored);
        part.written = true;
        row.setRaw(part.field, bytesOf(part.stored));
    }
}

void RecordLongs::undoWrite()
{
    for (Part& part : parts_)
        if (part.written) {
            part.written = false;
            part.column->erase(bytesOf(part.stored));
        }
}

void RecordLongs::eraseOld()
{
    for (Part& part : parts_)
        if (part.set && !part.old.empty() && part.column)
            part.column->erase(bytesOf(part.old));
}

}  // namespace velnor::jet
