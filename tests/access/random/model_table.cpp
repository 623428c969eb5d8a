#include "tests/access/random/model_table.h"

#include <algorithm>

#include "access/value_text.h"
#include "platform/paths.h"

namespace velnor::testing {

std::string plainText(ValueView v)
{
    std::string text;
    if (v.kind() == ValueKind::Date)
        appendIsoDate(text, v.asDate());
    else if (v.kind() == ValueKind::Bytes && v.asBytes().size() > 64)
        text = "[binary " + std::to_string(v.asBytes().size()) + " bytes]";
    else
        appendText(text, v);
    return text;
}

ModelTable::ModelTable(const RandomFormat& format)
    : fields(format.start.fields), indexes(format.start.indexes), format_(format)
{
}

int ModelTable::fieldPosition(const std::string& name) const
{
    for (std::size_t i = 0; i < fields.size(); ++i)
        if (paths::sameName(fields[i].name, name))
            return static_cast<int>(i);
    return -1;
}

bool ModelTable::indexUses(const std::string& field) const
{
    for (const IndexDef& index : indexes)
        for (const IndexFieldDef& part : index.fields)
            if (paths::sameName(part.name, field))
                return true;
    return false;
}

int ModelTable::compareField(const FieldDef& field, ValueView a, ValueView b) const
{
    return format_.compare ? format_.compare(field, a, b) : compareValues(a, b);
}

int ModelTable::compareKeys(const IndexDef& index, const ModelRow& a, const ModelRow& b) const
{
    for (const IndexFieldDef& part : index.fields) {
        const auto at = static_cast<std::size_t>(fieldPosition(part.name));
        if (const int order = compareField(fields[at], a[at].view(), b[at].view()))
            return part.descending ? -order : order;
    }
    return 0;
}

int ModelTable::compareWithKey(const IndexDef& index, const ModelRow& row,
                               const std::vector<Value>& key) const
{
    for (std::size_t i = 0; i < key.size(); ++i) {
        const auto at = static_cast<std::size_t>(fieldPosition(index.fields[i].name));
        if (const int order = compareField(fields[at], row[at].view(), key[i].view()))
            return index.fields[i].descending ? -order : order;
    }
    return 0;
}

bool ModelTable::holdsNull(const IndexDef& index, const ModelRow& row) const
{
    return std::any_of(index.fields.begin(), index.fields.end(), [&](const IndexFieldDef& part) {
        return row[static_cast<std::size_t>(fieldPosition(part.name))].isNull();
    });
}

bool ModelTable::listed(const IndexDef& index, const ModelRow& row) const
{
    if (!index.ignoreNulls)
        return true;
    return !std::all_of(index.fields.begin(), index.fields.end(), [&](const IndexFieldDef& part) {
        return row[static_cast<std::size_t>(fieldPosition(part.name))].isNull();
    });
}

std::string ModelTable::collision(const ModelRow& row, const std::int64_t* except) const
{
    for (const IndexDef& index : indexes) {
        if (!index.unique || (format_.nullsInUnique && holdsNull(index, row)))
            continue;
        for (const auto& [name, other] : rows)
            if (!(except && name == *except) && compareKeys(index, row, other) == 0)
                return index.name;
    }
    return {};
}

bool ModelTable::hasDuplicates(const IndexDef& index) const
{
    std::vector<const ModelRow*> order;
    for (const auto& [name, row] : rows)
        if (!(format_.nullsInUnique && holdsNull(index, row)))
            order.push_back(&row);
    const auto less = [&](const ModelRow* a, const ModelRow* b) {
        return compareKeys(index, *a, *b) < 0;
    };
    std::sort(order.begin(), order.end(), less);
    return std::adjacent_find(order.begin(), order.end(),
                              [&](const ModelRow* a, const ModelRow* b) {
                                  return compareKeys(index, *a, *b) == 0;
                              }) != order.end();
}

std::string ModelTable::csv() const
{
    std::string out;
    for (std::size_t i = 0; i < fields.size(); ++i)
        out += (i ? "," : "") + fields[i].name;
    out += '\n';
    for (const auto& [name, row] : rows) {
        for (std::size_t i = 0; i < row.size(); ++i)
            out += (i ? "," : "") + plainText(row[i].view());  // letters, digits and points only
        out += '\n';
    }
    return out;
}

}  // namespace velnor::testing
