// access/formats/xbase/xbase_store.h - a folder of tables. Opens only the tables that are asked
// for.
#pragma once

#include <memory>
#include <string>

#include "access/formats/folder/folder_store.h"
#include "access/formats/index_order.h"
#include "access/formats/xbase/dbf_format.h"
#include "access/formats/xbase/dbf_table.h"
#include "access/formats/xbase/table_rewrite.h"

namespace velnor::xbase {

class XbaseStore final : public FolderStore<DbfTable>, public IndexOrders {
public:
    XbaseStore(FileSystem& files, const OpenRequest& request, const NewTableForm& form);

    TableLayout layout(std::string_view table) override;
    std::int64_t recordCount(std::string_view table) override;
    std::unique_ptr<RowCursor> cursor(std::string_view table,
                                      std::optional<std::string_view> index) override;
    std::unique_ptr<RowWriter> writer(std::string_view table) override;
    void createTable(const TableLayout& layout) override;
    void dropTable(std::string_view table) override;
    void addField(std::string_view table, const FieldDef& field) override;
    void dropField(std::string_view table, std::string_view field) override;
    /// Makes a field longer, of the same type. 3251 when that is not what is asked for.
    void widenField(std::string_view table, std::string_view field, const FieldDef& to);
    /// Takes the deleted records out, closes the gaps of the memo file, builds the indexes anew.
    void pack(std::string_view table);
    void addIndex(std::string_view table, const IndexDef& index) override;
    void dropIndex(std::string_view table, std::string_view index) override;
    void check(std::string_view table, const ProblemSink& report) override;
    std::vector<std::pair<std::string, std::string>> info(std::string_view table) override;
    IndexOrder indexOrder(std::string_view table, const IndexDef& index) override;

private:
    std::shared_ptr<DbfTable> openTable(const std::string& path) override;
    template <class Work> void changeIndexes(std::string_view table, Work work);
    template <class Plan> void rewrite(std::string_view table, RewriteKind kind, Plan plan);

    const NewTableForm& form_;
};

}  // namespace velnor::xbase
