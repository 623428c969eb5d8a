// access/formats/jet/jet_check.h - the deep check of an Access file: reads everything, changes
// nothing.
//
// Each page must have one owner or be free; each map, record, long value and index entry is read.
// States that other programs leave behind and that lose nothing are reported as harmless: stale
// record counts, lost pages, long values that nobody names, wrong levels of index nodes. Memory
// stays small: 4 bytes a page, 32 bytes a long-value page.
#pragma once

#include <functional>
#include <memory>
#include <string_view>

#include "access/formats/driver.h"
#include "access/formats/jet/catalog.h"
#include "access/formats/jet/jet_file.h"

namespace velnor::jet {

/// Gives the open table of a catalog entry: its counts may be ahead of the file's.
using TableOpener = std::function<std::shared_ptr<JetTable>(const CatalogEntry&)>;

/// Checks the whole file, or with a table's name the parts of that table. 3078 when there is no
/// such table; damage is reported, not thrown.
void checkDatabase(JetFile& file, Catalog& catalog, std::string_view table, const TableOpener& open,
                   const ProblemSink& report);

}  // namespace velnor::jet
