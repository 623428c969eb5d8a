// access/formats/jet/catalog_repair.h - what a rebuilt file's catalog must have, and a damaged one
// may have lost: the containers, the system tables, found tables, and rights to all of them.
#pragma once

#include <string>
#include <vector>

#include "access/formats/driver.h"
#include "access/formats/jet/jet_file.h"

namespace velnor::jet {

/// A table that stands in the file, but not in its catalog.
struct UnlistedTable {
    std::string name;
    PageNumber page = 0;
};

/// Adds what is missing, and reports it.
void completeCatalog(JetFile& file, const std::vector<UnlistedTable>& unlisted,
                     const ProblemSink& report);

}  // namespace velnor::jet
