// access/formats/excel/globals.h - what a workbook stream says about all its sheets: version, code
// page, date system, number formats, sheets, names.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "access/formats/excel/biff_record.h"
#include "access/formats/excel/number_format.h"
#include "access/formats/sheet/cell.h"
#include "access/storage/code_page.h"

namespace velnor::excel {

struct SheetInfo {
    std::string name;
    std::uint32_t position = 0;  ///< of its BOF in the stream, as found
    std::uint8_t visibility = 0;
    bool worksheet = true;     ///< not a chart, a macro sheet, a module
    std::size_t recordAt = 0;  ///< of its BOUNDSHEET record
    bool sound = true;         ///< the position in the file is right
};

/// A name of the workbook that stands for one area on one sheet.
struct NameInfo {
    std::string name;
    int sheet = 0;  ///< number of the sheet, from 0
    sheet::Area area;
    std::size_t lastRowAt = 0;  ///< of the area's last row in the stream
};

struct Globals {
    const BiffForm* form = nullptr;
    const CodePage* page = nullptr;
    int codePage = 0;  ///< as the file says; 0 when it does not
    bool date1904 = false;
    bool encrypted = false;
    Bytes filePass;  ///< of an encrypted workbook
    std::vector<Bytes> xfs;
    std::vector<FormatClass> xfClasses;
    std::map<int, FormatClass> formats;
    std::map<int, std::string> formatTexts;
    std::vector<SheetInfo> sheets;
    std::vector<NameInfo> names;
    std::vector<Bytes> sst;  ///< the SST record and its CONTINUEs
    std::size_t end = 0;     ///< behind the EOF of the globals; 0 before version 5
    std::vector<std::string> faults;

    /// General for an XF that is not there.
    FormatClass classOf(std::size_t xf) const
    {
        return xf < xfClasses.size() ? xfClasses[xf] : FormatClass{};
    }
    bool hasWorksheet(int sheet) const
    {
        return sheet >= 0 && static_cast<std::size_t>(sheet) < sheets.size() &&
               sheets[static_cast<std::size_t>(sheet)].worksheet;
    }
};

/// Reads them. `streamName` ("WORKBOOK", "BOOK", or empty for a file without a container) and
/// `baseName` (names the sheet of a file without sheet names) help where the stream does not tell;
/// `page` overrides the file's code page. 3274 for what is no workbook. The views are into
/// `stream`.
Globals readGlobals(Bytes stream, std::string_view streamName, std::string_view baseName,
                    const CodePage* page);

}  // namespace velnor::excel
