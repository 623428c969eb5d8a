// access/formats/lotus/lotus_store.h - an open worksheet file: its sheets and named ranges as
// tables.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "access/formats/driver.h"
#include "access/formats/lotus/wk_book.h"
#include "access/formats/lotus/wk_write.h"
#include "access/formats/sheet/sheet_table.h"
#include "access/formats/sheet/sheet_writer.h"

namespace velnor::lotus {

class LotusStore final : public Store, private sheet::SheetRules {
public:
    LotusStore(FileSystem& files, const OpenRequest& request);

    std::vector<TableEntry> catalogue() override;
    TableLayout layout(std::string_view table) override;
    std::int64_t recordCount(std::string_view table) override;
    std::unique_ptr<RowCursor> cursor(std::string_view table,
                                      std::optional<std::string_view> index) override;
    std::unique_ptr<RowWriter> writer(std::string_view table) override;
    void createTable(const TableLayout& layout) override;
    void dropTable(std::string_view table) override;
    void commit() override;
    std::size_t pendingBytes() const override;
    void check(std::string_view table, const ProblemSink& report) override;
    std::vector<std::pair<std::string, std::string>> info(std::string_view table) override;

private:
    /// Where a table lies.
    struct Origin {
        std::uint8_t sheet = 0;
        const WkRange* range = nullptr;  ///< null: the whole sheet
        std::string name;
    };
    std::vector<Origin> origins() const;
    Origin originOf(std::string_view table) const;
    std::shared_ptr<sheet::SheetTable> open(std::string_view table);
    std::unique_ptr<sheet::SheetTable> makeTable(const Origin& origin);
    void describe(sheet::SheetTable& table) const;

    void openFile();
    File& file() const;
    /// Takes in what the file holds. Tables in use are made anew in their places, so that cursors
    /// and writers show it, too.
    void load();
    std::string whyNotUpdatable() const;
    void needWriteable() const;
    std::uint8_t placeForTable(const std::string& name) const;
    void putHeader(std::uint8_t sheet, const std::vector<FieldDef>& fields);
    WkChanges gathered();
    bool changed() const;
    void write(const WkChanges& changes);

    // sheet::SheetRules
    std::uint32_t rows() const override { return book_->rows(); }
    std::size_t longestText() const override;
    void requireWriteable(const sheet::SheetTable& table) override;
    void checkText(std::string_view text) const override;
    sheet::CellKind booleanKind() const override { return sheet::CellKind::Number; }

    FileSystem& files_;
    OpenRequest request_;
    sheet::SheetOptions options_;
    std::unique_ptr<File> file_;
    std::unique_ptr<WkBook> book_;
    std::map<std::string, std::shared_ptr<sheet::SheetTable>> open_;  // by folded name
};

}  // namespace velnor::lotus
