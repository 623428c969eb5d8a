// access/formats/lotus/lotus_driver.h - worksheets of Lotus 1-2-3 as tables.
//
// A file is a database; each sheet is a table under its name or letter and ":" ("Orders:", "B:"),
// each named range of two rows and more a table under its name. Which cells make fields and records
// is told in access/formats/sheet/sheet_table.h; HDR=, IMEX=, TypeGuessRows= and cells= work here.
// Reads   WK3 and WK4; WKS, WK1 and 123 (97, Millennium; there without dates). The version word in
//         the file counts, not its extension.
// Writes  WK3 and WK4: records added and changed with everything else kept; new sheets; new files
//         of WK4, or of WK3 by its word. A dropped table leaves an empty sheet unless it was the
//         last one.
// Dates and amounts are told from numbers by their formats alone; there is no Boolean: 1 and 0.
// Refuses encrypted files with 3161, texts of more than 511 bytes with 3163, what is no worksheet
// with 3274. Bytes:  docs/formats/lotus.md. No other header of this folder is included from outside
// it.
#pragma once

#include "access/formats/driver.h"

namespace velnor::lotus {

class LotusDriver final : public Driver {
public:
    std::span<const std::string_view> connectWords() const override;
    const FormatTraits& traits(std::string_view connectWord) const override;
    std::unique_ptr<Store> open(FileSystem& files, const OpenRequest& request) const override;
    void create(FileSystem& files, const CreateRequest& request) const override;
};

}  // namespace velnor::lotus
