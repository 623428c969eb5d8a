// access/formats/sheet/sheet_options.h - what a connect string says about sheets as tables.
#pragma once

#include <string_view>

namespace velnor::sheet {

struct SheetOptions {
    bool header = true;  ///< HDR=No: the first row is a record, the fields are F1, F2, ...
    bool mixedAsText =
        false;           ///< IMEX=1: a column of several kinds is Text, numbers as people see them
    int guessRows = 8;   ///< TypeGuessRows=1..16: the records that decide a field's type; 0: all
    bool cells = false;  ///< cells=yes: every cell from A1 on, fields A, B, C, ..., all texts

    /// Such a view is for reading: what is written through it could not be told from texts.
    bool readOnly() const { return mixedAsText || cells; }
};

/// Reads the words of OpenRequest::options. 3001 for a value that a word cannot have.
SheetOptions sheetOptions(std::string_view connectOptions);

}  // namespace velnor::sheet
