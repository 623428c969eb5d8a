// access/formats/excel/excel_store.h - an open workbook as tables.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "access/formats/driver.h"
#include "access/formats/excel/workbook.h"
#include "access/formats/sheet/sheet_writer.h"

namespace velnor::excel {

class ExcelStore final : public Store, private sheet::SheetRules {
public:
    ExcelStore(FileSystem& files, const OpenRequest& request);

    std::vector<TableEntry> catalogue() override;
    TableLayout layout(std::string_view table) override;
    std::int64_t recordCount(std::string_view table) override;
    std::unique_ptr<RowCursor> cursor(std::string_view table,
                                      std::optional<std::string_view> index) override;
    std::unique_ptr<RowWriter> writer(std::string_view table) override;
    void createTable(const TableLayout& layout) override;
    void dropTable(std::string_view table) override;
    void commit() override;
    std::size_t pendingBytes() const override { return workbook_.pendingBytes(); }
    void check(std::string_view table, const ProblemSink& report) override;
    std::vector<std::pair<std::string, std::string>> info(std::string_view table) override;

private:
    /// Where a table's name leads: a sheet, perhaps an area on it, perhaps a name of the workbook.
    struct Found {
        std::string name;  ///< as the catalogue has it
        int sheet = 0;
        std::optional<sheet::Area> area;
        bool named = false;
    };
    std::optional<Found> find(std::string_view table);
    std::optional<Found> findArea(std::string_view table);
    int sheetNamed(std::string_view name);
    std::shared_ptr<sheet::SheetTable> open(std::string_view table);
    void putHeader(int sheet, const TableLayout& layout);
    void forgetTables() { tables_.clear(); }

    // What the writers ask.
    std::uint32_t rows() const override { return workbook_.form().rows; }
    std::size_t longestText() const override { return workbook_.form().longestText; }
    void requireWriteable(const sheet::SheetTable& table) override;
    void checkText(std::string_view utf8) const override { workbook_.checkText(utf8); }

    Workbook workbook_;
    sheet::SheetOptions options_;
    std::map<std::string, std::shared_ptr<sheet::SheetTable>> tables_;  // by folded name
};

}  // namespace velnor::excel
