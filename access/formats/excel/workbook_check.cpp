#include "access/formats/excel/workbook_check.h"

#include <algorithm>
#include <set>

#include "access/formats/excel/biff_text.h"
#include "platform/paths.h"

namespace velnor::excel {
namespace {

std::uint16_t u16(Bytes data, std::size_t at)
{
    return at + 2 <= data.size() ? loadLE<std::uint16_t>(data.data() + at) : 0;
}

class Checker {
public:
    Checker(Workbook& workbook, const ProblemSink& report)
        : workbook_(workbook), g_(workbook.globals()), report_(report)
    {
    }

    void run()
    {
        for (const std::string& text : workbook_.containerFaults())
            tell("container", text);
        for (const std::string& text : g_.faults)
            tell("globals", text);
        if (workbook_.sharedTextsCutOff())
            tell("texts", "the last shared text is cut off");
        checkNames();
        for (std::size_t i = 0; i < g_.sheets.size(); ++i)
            if (g_.sheets[i].worksheet)
                checkSheet(static_cast<int>(i));
    }

private:
    void tell(const std::string& where, const std::string& text, bool harmless = false)
    {
        report_({where, text, harmless});
    }

    void checkNames()
    {
        std::set<std::string> seen;
        bool visible = false;
        for (const SheetInfo& sheet : g_.sheets) {
            visible = visible || sheet.visibility == 0;
            if (!seen.insert(paths::foldName(sheet.name)).second)
                tell("sheet " + sheet.name, "another sheet has the same name");
        }
        if (!visible)
            tell("globals", "no sheet can be seen", true);
    }

    void checkSheet(int number)
    {
        const OpenSheet& open = workbook_.sheet(number);
        const SheetInfo& info = g_.sheets[static_cast<std::size_t>(number)];
        const std::string where = "sheet " + info.name;
        for (const std::string& text : open.faults)
            tell(where, text);
        checkRecords(where, info.position);
    }

    /// Cells within the sheet's dimensions and limits, with formats and texts that exist.
    void checkRecords(const std::string& where, std::size_t position)
    {
        Record record;
        RecordReader reader(workbook_.stream(), position);
        int depth = 0;
        std::uint32_t endRow = 0xFFFFFFFF, endColumn = 0xFFFFFFFF;
        std::size_t outside = 0, noFormat = 0, noText = 0;
        while (reader.next(record)) {
            depth += isBof(record.type) ? 1 : 0;
            depth -= record.type == rec::kEof ? 1 : 0;
            if (depth <= 0)
                break;
            if (depth > 1)
                continue;
            const Bytes data = record.data;
            if (record.type == rec::kDimensions && data.size() >= 12 && g_.form->version == 8) {
                endRow = loadLE<std::uint32_t>(data.data() + 4);
                endColumn = u16(data, 10);
            }
            switch (record.type) {
            case rec::kLabelSst:
                noText += data.size() >= 10 &&
                          loadLE<std::uint32_t>(data.data() + 6) >= workbook_.texts().size();
                [[fallthrough]];
            case rec::kNumber:
            case rec::kRk:
            case rec::kLabel:
            case rec::kBoolErr:
                outside +=
                    data.size() >= 4 && (u16(data, 0) >= endRow || u16(data, 2) >= endColumn);
                noFormat += g_.form->version >= 5 && data.size() >= 6 && !g_.xfs.empty() &&
                            u16(data, 4) >= g_.xfs.size();
                break;
            default:
                break;
            }
        }
        if (outside > 0)
            tell(where, std::to_string(outside) + " cells lie outside its dimensions", true);
        if (noFormat > 0)
            tell(where, std::to_string(noFormat) + " cells have a format that does not exist");
        if (noText > 0)
            tell(where, std::to_string(noText) + " cells have a text that does not exist");
    }

    Workbook& workbook_;
    const Globals& g_;
    const ProblemSink& report_;
};

std::string versionText(int version)
{
    switch (version) {
    case 8:
        return "8 (97 to 2003)";
    case 5:
        return "5 (5.0 and 95)";
    default:
        return std::to_string(version);
    }
}

}  // namespace

void checkWorkbook(Workbook& workbook, const ProblemSink& report)
{
    Checker(workbook, report).run();
}

std::vector<std::pair<std::string, std::string>> workbookInfo(Workbook& workbook)
{
    const Globals& g = workbook.globals();
    std::size_t worksheets = 0;
    for (const SheetInfo& sheet : g.sheets)
        worksheets += sheet.worksheet;
    const std::string page = g.form->version == 8 ? "Unicode" : std::to_string(g.page->number());
    return {
        {"Format", "Excel workbook"},
        {"Version", versionText(g.form->version)},
        {"Container", workbook.hasContainer() ? "yes" : "no"},
        {"Texts", page},
        {"Date system", g.date1904 ? "1904" : "1900"},
        {"Encrypted", g.encrypted ? "yes" : "no"},
        {"Sheets", std::to_string(g.sheets.size())},
        {"Worksheets", std::to_string(worksheets)},
        {"Named ranges", std::to_string(g.names.size())},
        {"Bytes", std::to_string(workbook.fileSize())},
    };
}

}  // namespace velnor::excel
