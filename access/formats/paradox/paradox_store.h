// access/formats/paradox/paradox_store.h - a folder of tables. Opens only the tables that are asked
// for.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "access/formats/folder/folder_store.h"
#include "access/formats/index_order.h"
#include "access/formats/paradox/db_table.h"
#include "access/formats/paradox/new_table.h"

namespace velnor::paradox {

class ParadoxStore final : public FolderStore<DbTable>, public IndexOrders {
public:
    ParadoxStore(FileSystem& files, const OpenRequest& request, const NewTableForm& form);

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
    void check(std::string_view table, const ProblemSink& report) override;
    std::vector<std::pair<std::string, std::string>> info(std::string_view table) override;
    IndexOrder indexOrder(std::string_view table, const IndexDef& index) override;

private:
    std::shared_ptr<DbTable> openTable(const std::string& path) override;
    /// 3027 in a folder that is only read.
    std::shared_ptr<DbTable> openToChange(std::string_view table);

    const NewTableForm& form_;
    std::vector<std::string> passwords_;
};

}  // namespace velnor::paradox
