// access/formats/xbase/xbase_driver.h - dBASE II to level 7 and FoxPro tables.
//
// A folder is a database; every *.DBF in it is a table; its bare name is the table's name.
// Reads   version bytes 02 03 04 05 30 31 32 83 8B 8C CB F5 FB, memo files DBT and FPT.
// Writes  all of them but 02; makes 03 83 8B 30 31 F5, DBT and FPT.
// The dBASE words refuse FoxPro kinds with 3274; the FoxPro words open everything.
// Indexes CDX, compact IDX, MDX and NDX (by NAME.INF) are walked, searched and kept right; made are
// CDX by the FoxPro words, MDX by dBASE IV and 5.0, NDX by dBASE III. The old IDX is only read.
// Refuses with 3191 two names equal in ten characters, with 3800 to write a table with an index
// that cannot be kept right. Bytes:  docs/formats/xbase.md. No other header of this folder is
// included from outside it.
#pragma once

#include "access/formats/driver.h"

namespace velnor::xbase {

class XbaseDriver final : public Driver {
public:
    std::span<const std::string_view> connectWords() const override;
    const FormatTraits& traits(std::string_view connectWord) const override;
    std::unique_ptr<Store> open(FileSystem& files, const OpenRequest& request) const override;
    /// Packs the table of the file `from.name`, in its place: `to.name` is the same. 3251 for
    /// another.
    void compact(FileSystem& files, const OpenRequest& from,
                 const CreateRequest& to) const override;
    /// `request.name`: the file of a table.
    void repair(FileSystem& files, const OpenRequest& request,
                const ProblemSink& report) const override;
};

}  // namespace velnor::xbase
