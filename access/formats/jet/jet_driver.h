// access/formats/jet/jet_driver.h - Access databases: Jet 4 (Access 2000 to 2003) and Jet 3 (95,
// 97).
//
// A file is a database of many tables. Reads and writes both versions, with a database password and
// with encoded pages. Refuses with 3343 what is no such file, ACCDB files included, and with 3031 a
// wrong password.
// Writing is refused with clear words (3251) where the file would not stay right: an index whose
// sort order is not known for sure. Relationships are kept (3200, 3201), and carry changes on.
// A file that another program has open, by its LDB file, is only read (3027).
// Bytes:  docs/formats/jet.md. No other header of this folder is included from outside it.
#pragma once

#include "access/formats/driver.h"

namespace velnor::jet {

class JetDriver final : public Driver {
public:
    std::span<const std::string_view> connectWords() const override;  // "Access 2000;" "" ";" ...
    const FormatTraits& traits(std::string_view connectWord) const override;
    std::unique_ptr<Store> open(FileSystem& files, const OpenRequest& request) const override;
    /// Option 32 makes the older version, Jet 3; option 2 encodes the pages.
    void create(FileSystem& files, const CreateRequest& request) const override;
    /// All objects, in the same order and with the same password; 3197 when the file is damaged.
    void compact(FileSystem& files, const OpenRequest& from,
                 const CreateRequest& to) const override;
    /// 3343 for a file of which not even the header is left.
    void repair(FileSystem& files, const OpenRequest& request,
                const ProblemSink& report) const override;
};

}  // namespace velnor::jet
