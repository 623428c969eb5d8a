// access/formats/excel/excel_driver.h - Excel workbooks, versions 2 to 2003 (XLS).
//
// A file is a database; its tables are the worksheets as NAME$, in the order of their tabs, then
// the names of the workbook that stand for one area. What is a record, a field and its type, and
// which words of the connect string change that: access/formats/sheet/sheet_table.h.
//
// Reads versions 2, 3, 4, 5 (95) and 8 (97 to 2003), in their container or bare; by content,
// whatever the connect word. Encrypted ones with 40-bit RC4 open by their password, or without a
// question when it is the well-known one.
//
// Writes 5 and 8: records are added and changed, tables made and dropped, everything else in the
// file kept. Makes version 8, or 5 for "Excel 5.0;".
//
// Refuses deletes with 3617, a full sheet with 3437, a range that cannot grow with 3434, a change
// of a formula with 3251, an unknown encryption with 3161, what is no workbook with 3274.
//
// Bytes: docs/formats/excel.md. No other header of this folder is included from outside it.
#pragma once

#include "access/formats/driver.h"

namespace velnor::excel {

class ExcelDriver final : public Driver {
public:
    std::span<const std::string_view>
    connectWords() const override;  // "Excel 8.0;" "Excel 5.0;" ...
    const FormatTraits& traits(std::string_view connectWord) const override;
    std::unique_ptr<Store> open(FileSystem& files, const OpenRequest& request) const override;
    void create(FileSystem& files, const CreateRequest& request) const override;
};

}  // namespace velnor::excel
