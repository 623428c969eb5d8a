// access/formats/paradox/paradox_driver.h - Paradox tables of levels 3, 4, 5 and 7.
//
// A folder is a database; every *.DB in it is a table; its bare name is the table's name.
// Reads   all levels, keyed and not, all field types, MB values, secondary indexes as orders,
//         tables with a password.
// Writes  all of them: PX, kept secondary indexes, MB with its table of free space, stamps. Tables
//         without a primary key are added to, not edited. Makes level 5 ("Paradox 5.x;"), 7,
//         4, 3.5.
// Refuses with 3800 what would need the weights of a sort order that nobody knows, or would leave
// an
//         index behind; with 3274 what it cannot read; with 3031 a wrong password.
// Bytes:  docs/formats/paradox.md. No other header of this folder is included from outside it.
#pragma once

#include "access/formats/driver.h"

namespace velnor::paradox {

class ParadoxDriver final : public Driver {
public:
    std::span<const std::string_view> connectWords() const override;
    const FormatTraits& traits(std::string_view connectWord) const override;
    std::unique_ptr<Store> open(FileSystem& files, const OpenRequest& request) const override;
};

}  // namespace velnor::paradox
