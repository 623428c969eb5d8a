#include "cli/time_columns.h"

#include <cstdio>

#include "access/layout.h"
#include "access/value_text.h"

namespace velnor::cli {

TimeColumns::TimeColumns(Recordset& rows)
{
    for (int i = 0; i < rows.fieldCount(); ++i)
        if (rows.Fields().Item(i).Type() == static_cast<int>(FieldType::Time))
            columns_.push_back(static_cast<std::size_t>(i));
    texts_.resize(columns_.size());
}

void TimeColumns::show(std::span<ValueView> values)
{
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        ValueView& value = values[columns_[i]];
        if (value.kind() != ValueKind::Date)
            continue;
        const CivilTime time = civilTime(value.asDate());
        char text[32];
        int length =
            std::snprintf(text, sizeof text, "%02d:%02d:%02d", time.hour, time.minute, time.second);
        if (time.millisecond)
            length += std::snprintf(text + length, sizeof text - static_cast<std::size_t>(length),
                                    ".%03d", time.millisecond);
        texts_[i].assign(text, static_cast<std::size_t>(length));
        value = ValueView::text(texts_[i]);
    }
}

}  // namespace velnor::cli
