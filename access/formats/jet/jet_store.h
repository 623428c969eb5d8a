// access/formats/jet/jet_store.h - an open Access database.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "access/formats/driver.h"
#include "access/formats/index_order.h"
#include "access/formats/jet/catalog.h"
#include "access/formats/jet/jet_file.h"
#include "access/formats/jet/jet_table.h"
#include "access/formats/jet/relations.h"

namespace velnor::jet {

class JetStore final : public Store, public IndexOrders {
public:
    JetStore(FileSystem& files, const OpenRequest& request);

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
    bool acceptsPassword(std::string_view password) override
    {
        return file_.acceptsPassword(password);
    }
    void changePassword(std::string_view password) override;
    void commit() override;
    std::size_t pendingBytes() const override { return file_.pendingBytes(); }
    /// In a long append to indexes only when the file has doubled by a commit: each one costs a
    /// walk through the indexes. Else the pages are written before it.
    void breathe(std::size_t mostBytes) override;
    void check(std::string_view table, const ProblemSink& report) override;
    std::vector<std::pair<std::string, std::string>> info(std::string_view table) override;
    IndexOrder indexOrder(std::string_view table, const IndexDef& index) override;

    JetFile& file() { return file_; }
    Catalog& catalog() { return catalog_; }
    /// The open table of a name; 3078 when there is none, 3274 when it cannot be read.
    std::shared_ptr<JetTable> openTable(std::string_view name);

private:
    const CatalogEntry& entryOf(std::string_view table);
    void needWriteable();
    void forgetChanges();
    TableByPage tablesByPage();
    template <class Change> void changeStructure(Change change);
    template <class Change> void changeTable(std::string_view table, Change change);
    void forgetTable(PageNumber page);
    void rewriteRecords(std::string_view table);

    JetFile file_;
    Catalog catalog_;
    std::map<PageNumber, std::shared_ptr<JetTable>> tables_;  // by definition page
};

}  // namespace velnor::jet
