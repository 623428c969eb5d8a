// access/formats/excel/new_workbook.h - the streams of a new workbook and of a new sheet.
#pragma once

#include <vector>

#include "access/formats/excel/biff_record.h"

namespace velnor::excel {

/// A workbook with one empty sheet, "Sheet1": of version 8, or 5 with texts in code page 1252.
std::vector<std::uint8_t> newWorkbookStream(const BiffForm& form);
/// An empty sheet, BOF to EOF; `selected` for the one that is in front.
std::vector<std::uint8_t> newSheetStream(const BiffForm& form, bool selected = false);
/// Whether a workbook's globals are those of newWorkbookStream(): its only sheet may be taken over
/// by the first table.
bool isNewWorkbook(Bytes stream);

inline constexpr const char* kFirstSheet = "Sheet1";
/// The user's name that new workbooks carry.
inline constexpr std::string_view kWriter = "Velnor";

}  // namespace velnor::excel
