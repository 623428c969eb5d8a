// access/formats/paradox/paradox_store.h - a folder of tables. Opens only the tables that are asked
// for.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "access/formats/driver.h"
#include "access/formats/paradox/db_table.h"
#include "access/formats/paradox/new_table.h"

namespace velnor::paradox {

class ParadoxStore final : public Store {
public:
    ParadoxStore(FileSystem& files, const OpenRequest& request, const NewTableForm& form);

    std::vector<TableEntry> catalogue() override;
    TableLayout layout(std::string_view table) override;
    std::int64_t recordCount(std::string_view table) override;
    std::unique_ptr<RowCursor> cursor(std::string_view table,
                                      std::optional<std::string_view> index) override;
    std::unique_ptr<RowWriter> writer(std::string_view table) override;
    void createTable(const TableLayout& layout) override;
    void dropTable(std::string_view table) override;
    void addField(std::string_view table, const FieldDef& field) override;
    void dropField(std::string_view table, std::string_view field) override;
    void addIndex(std::string_view table, const IndexDef& index) override;
    void dropIndex(std::string_view table, std::string_view index) override;
    bool acceptsPassword(std::string_view password) override;
    void commit() override;
    std::size_t pendingBytes() const override;
    void check(std::string_view table, const ProblemSink& report) override;
    std::vector<std::pair<std::string, std::string>> info(std::string_view table) override;

private:
    std::shared_ptr<DbTable> open(std::string_view table);
    /// The path of a table as spelled on the disk; nothing when there is none.
    std::optional<std::string> pathOf(std::string_view table);
    std::shared_ptr<DbTable> openToChange(std::string_view table);

    FileSystem& files_;
    OpenRequest request_;
    const NewTableForm& form_;
    std::vector<std::string> passwords_;
    std::map<std::string, std::shared_ptr<DbTable>> open_;  // by folded name
};

}  // namespace velnor::paradox
