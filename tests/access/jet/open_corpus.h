// tests/access/jet/open_corpus.h - real files, opened with all their tables.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "access/formats/jet/catalog.h"
#include "access/formats/jet/jet_file.h"
#include "access/formats/jet/jet_table.h"
#include "platform/memory_file_system.h"
#include "tests/access/jet/corpus_files.h"

namespace velnor::jet {

/// A file of the corpus in memory, opened to be read.
class OpenCorpusFile {
public:
    explicit OpenCorpusFile(const std::string& name)
        : OpenCorpusFile(corpusFile(name), corpusPassword(name))
    {
        for (const CatalogEntry& entry : catalog_->objects())
            if (entry.table())
                tables_.push_back(std::make_shared<JetTable>(
                    *file_, static_cast<PageNumber>(entry.id), entry.name));
    }
    /// Bytes that may be damaged: without the tables.
    OpenCorpusFile(const std::vector<std::uint8_t>& bytes, const std::string& password)
    {
        files_.put("C:\\file.mdb", bytes);
        OpenRequest request;
        request.name = "C:\\file.mdb";
        request.password = password;
        file_ = std::make_unique<JetFile>(files_, request);
        catalog_ = std::make_unique<Catalog>(*file_);
    }
    JetFile& file() { return *file_; }
    Catalog& catalog() { return *catalog_; }
    const std::vector<std::shared_ptr<JetTable>>& tables() { return tables_; }

private:
    MemoryFileSystem files_;
    std::unique_ptr<JetFile> file_;
    std::unique_ptr<Catalog> catalog_;
    std::vector<std::shared_ptr<JetTable>> tables_;
};

}  // namespace velnor::jet
