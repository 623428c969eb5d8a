// access/formats/text/text_writer.h - adds records to a text file. Records are never changed (3251)
// or removed (3617).
#pragma once

#include <memory>
#include <string>

#include "access/formats/driver.h"
#include "access/formats/text/text_table.h"

namespace velnor::text {

class TextWriter final : public RowWriter {
public:
    /// 3027 for a file that cannot be written.
    explicit TextWriter(std::shared_ptr<TextTable> table);

    RowId insert(std::span<const ValueView> values) override;
    void update(RowId row, std::span<const FieldChange> changes) override;
    void remove(RowId row) override;

private:
    std::shared_ptr<TextTable> table_;
    std::string line_;
};

}  // namespace velnor::text
