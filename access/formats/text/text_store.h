// access/formats/text/text_store.h - a folder of text files. Opens only those that are asked for.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "access/formats/driver.h"
#include "access/formats/text/text_table.h"

namespace velnor::text {

class TextStore final : public Store {
public:
    TextStore(FileSystem& files, const OpenRequest& request);

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
    std::shared_ptr<TextTable> open(std::string_view table);
    /// The name of a table's file as spelled on the disk; nothing when there is none.
    std::optional<std::string> fileOf(std::string_view table);
    void needWritable() const;

    FileSystem& files_;
    OpenRequest request_;
    std::map<std::string, std::shared_ptr<TextTable>> open_;  // by folded file name
};

}  // namespace velnor::text
