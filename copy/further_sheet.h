// copy/further_sheet.h - where records go on when a sheet has no further row: in sheets of their
// own with the same fields, NAME_2, NAME_3 ...
#pragma once

#include <string>
#include <vector>

#include "access/engine.h"

namespace velnor {

class FurtherSheets {
public:
    /// `table` is the one that is filled, its mark ("$" or ":") behind it or not.
    FurtherSheets(Database& database, std::string table);
    /// Whether the table is a whole sheet: a range of cells has no further sheets.
    bool possible() const { return mark_ != 0; }
    /// The sheet that is filled now.
    const std::string& current() const { return names_.empty() ? first_ : names_.back(); }
    /// Makes the next sheet and opens it for records.
    Recordset open();
    /// The sheets that were made.
    const std::vector<std::string>& names() const { return names_; }

private:
    std::string nextName();

    Database& database_;
    char mark_ = 0;
    std::string first_;  // without the mark
    std::vector<std::string> names_;
};

}  // namespace velnor
