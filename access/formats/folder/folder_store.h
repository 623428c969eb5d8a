// access/formats/folder/folder_store.h - what stores of a folder share: finding tables, keeping
// them open, committing all of them.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "access/formats/driver.h"
#include "access/formats/folder/folder_tables.h"
#include "platform/paths.h"

namespace velnor {

/// `Table`: an open table, with commit(), rollback() and pendingBytes(). Only the tables that are
/// asked for are opened.
template <class Table> class FolderStore : public Store {
public:
    std::vector<TableEntry> catalogue() override { return tables_.catalogue(); }

    /// When the tables of one folder are committed, a failure of one takes back those that follow.
    void commit() override
    {
        for (auto at = open_.begin(); at != open_.end(); ++at)
            try {
                at->second->commit();
            } catch (...) {
                for (++at; at != open_.end(); ++at)
                    at->second->rollback();
                throw;
            }
    }

    std::size_t pendingBytes() const override
    {
        std::size_t bytes = 0;
        for (const auto& [name, table] : open_)
            bytes += table->pendingBytes();
        return bytes;
    }

protected:
    FolderStore(FileSystem& files, const OpenRequest& request, std::string_view extension)
        : files_(files), request_(request), tables_(files, request.name, extension)
    {
    }

    virtual std::shared_ptr<Table> openTable(const std::string& path) = 0;

    /// 3078 when there is no such table.
    std::shared_ptr<Table> open(std::string_view table)
    {
        std::string key = paths::foldName(table);
        if (const auto known = open_.find(key); known != open_.end())
            return known->second;
        auto opened = openTable(tables_.needPath(table));
        return open_[std::move(key)] = std::move(opened);
    }
    void close(std::string_view table) { open_.erase(paths::foldName(table)); }

    void needWritable() const
    {
        if (request_.readOnly)
            throw EngineError(EngineErrorNumber::ReadOnly,
                              request_.name + " is open for reading only.");
    }
    const FolderTables& tables() const { return tables_; }

    FileSystem& files_;
    OpenRequest request_;

private:
    FolderTables tables_;
    std::map<std::string, std::shared_ptr<Table>> open_;  // by folded name
};

}  // namespace velnor
