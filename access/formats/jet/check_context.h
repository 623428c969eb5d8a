// access/formats/jet/check_context.h - what the parts of a check share: who owns each page, which
// map records and long-value rows are in use, and where findings go.
#pragma once

#include <bitset>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "access/formats/driver.h"
#include "access/formats/jet/jet_file.h"
#include "access/formats/jet/jet_format.h"

namespace velnor::jet {

class CheckContext {
public:
    using Owner = std::uint32_t;  // 0: nobody

    CheckContext(JetFile& checked, const ProblemSink& report);

    JetFile& file;

    /// Reports a finding; of one place only the first two dozen are told.
    void problem(const std::string& where, const std::string& text, bool harmless = false);
    void note(const std::string& where, const std::string& text) { problem(where, text, true); }

    Owner addOwner(std::string name);
    const std::string& ownerName(Owner owner) const { return names_[owner]; }
    /// Says that a page is `owner`'s; false when it is another's already, or outside the file,
    /// which is reported.
    bool claim(PageNumber page, Owner owner);
    Owner ownerOf(PageNumber page) const { return page < owners_.size() ? owners_[page] : 0; }

    /// Reads a map that is used once, and claims the pages that the map itself needs. Returns the
    /// pages it names that lie in the file; what is wrong is reported.
    std::vector<PageNumber> useMap(RowPointer record, const std::string& where);
    /// Map records in use, by their place.
    bool mapRecordUsed(RowPointer record) const { return mapRecords_.contains(record.word()); }
    const std::set<PageNumber>& mapRecordPages() const { return mapPages_; }

    /// Says that a long-value row is in use; false when it was already.
    bool useLongRow(RowPointer row);
    bool longRowUsed(RowPointer row) const;

private:
    const ProblemSink& report_;
    std::map<std::string, int> told_;
    std::vector<std::string> names_;
    std::vector<Owner> owners_;
    Owner mapOwner_ = 0;
    std::map<std::uint32_t, std::string> mapRecords_;
    std::set<PageNumber> mapPages_;  // pages that hold map records
    std::unordered_map<PageNumber, std::bitset<256>> longRows_;
};

/// "page 12, row 3".
std::string placeText(RowPointer row);

}  // namespace velnor::jet
