#include "access/formats/paradox/record_view.h"

#include <algorithm>

#include "access/engine_error.h"
#include "access/formats/paradox/field_codec.h"

namespace velnor::paradox {

RecordView::RecordView(DbTable& table)
    : table_(table), texts_(table.header().fields.size()), bytes_(table.header().fields.size())
{
}

bool readLongValue(DbTable& table, const StoredField& field, const std::uint8_t* record,
                   std::string& out, std::string& why)
{
    why.clear();
    const std::uint8_t* bytes = record + field.offset;
    const std::size_t leader = field.leader();
    const LongPointer pointer = LongPointer::read(bytes + leader);
    if (pointer.length == 0)
        return false;
    if (pointer.length > leader) {
        if (MbFile* mb = table.mb(); mb && mb->read(pointer, out, why))
            return true;
        if (!table.mb())
            why = "the MB file is missing";
    }
    out.assign(reinterpret_cast<const char*>(bytes), std::min<std::size_t>(pointer.length, leader));
    return true;
}

ValueView RecordView::longValue(std::size_t n, const StoredField& field)
{
    std::string why;
    std::string& bytes = bytes_[n];
    if (!readLongValue(table_, field, record_, bytes, why))
        return {};
    if (field.code == FieldCode::Memo)
        return decodeText(bytes, *table_.header().codePage, texts_[n]);
    return ValueView::bytes({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
}

ValueView RecordView::value(std::size_t n, const StoredField& field)
{
    if (field.isLong())
        return longValue(n, field);
    return decodeField(field, record_ + field.offset, *table_.header().codePage, texts_[n]);
}

ValueView RecordView::field(std::size_t n)
{
    const std::vector<StoredField>& fields = table_.header().fields;
    if (!record_ || n >= fields.size())
        throw EngineError(EngineErrorNumber::NoCurrentRecord, "There is no current record.");
    return value(n, fields[n]);
}

void RecordView::fields(std::span<ValueView> out)
{
    const std::vector<StoredField>& fields = table_.header().fields;
    if (!record_ || out.size() > fields.size())
        throw EngineError(EngineErrorNumber::NoCurrentRecord, "There is no current record.");
    for (std::size_t n = 0; n < out.size(); ++n)
        out[n] = value(n, fields[n]);
}

}  // namespace velnor::paradox
