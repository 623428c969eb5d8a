// access/formats/lotus/wk_survey.h - a first look at a file that is to be written anew: which
// changed cells are there, and where new records belong.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <vector>

#include "access/formats/lotus/wk_write.h"

namespace velnor::lotus {

struct WkSurvey {
    std::vector<CellPlace> changed;  ///< in order
    std::vector<bool> exists;        ///< of each: the file has a record for it
    bool anyCell = false;
    bool anyFormula = false;
    bool rangesOnDropped = false;  ///< a range, named or of a graph, lies on the dropped sheet
    std::uint8_t lastSheet = 0;    ///< the highest sheet that has records

    // Places in the file behind which new records go; 0: there is no such record.
    std::uint64_t body = 0;  ///< the first FORMAT or cell, or EOF: in front of it
    std::uint64_t lastCell = 0;
    std::uint64_t calcSet = 0, sheetCells = 0, sheetLayouts = 0, sheetNames = 0, defaults = 0;
    std::uint64_t lastBounds = 0;
    std::map<std::uint8_t, std::uint64_t> lastFormat;        ///< of each sheet
    std::set<std::pair<std::uint8_t, std::uint8_t>> bounds;  ///< sheet and column

    /// Sheets that have these records: a sheet may be there, empty and without a name.
    std::set<std::uint8_t> withCell, withLayout, withDefault;

    std::size_t find(CellPlace place) const;  ///< changed.size() when it is not changed
};

/// Reads the file once; the plan takes in its FORMAT records.
WkSurvey surveyBook(File& file, WkBook& book, const WkChanges& changes, FormatPlan& plan);
/// The changed cells of all sheets, in order.
std::vector<CellPlace> changedCells(WkBook& book);

}  // namespace velnor::lotus
