// access/formats/jet/create_database.h - the pages of an empty database.
//
// The skeleton has the header, the maps, the definitions of the system tables and the roots of
// their indexes; the records of the catalog are then added to it like any others.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "access/formats/driver.h"
#include "access/formats/jet/jet_format.h"

namespace velnor::jet {

inline constexpr int kOlderVersionOption = 32;
inline constexpr int kEncodeOption = 2;

/// 3001 for a password that the header cannot hold.
std::vector<std::uint8_t> databaseSkeleton(const JetFormat& format, std::string_view password);

/// The counters of commits in page 0, as in a new file.
void layCommitCounters(const JetFormat& format, std::uint8_t* page0);
/// Page 1: the map of free pages, which has every page from `firstFree` on, and an empty one.
void layGlobalMaps(const JetFormat& format, std::uint8_t* page, PageNumber firstFree);

/// Adds the objects and rights of an empty database to an open skeleton.
void fillCatalog(FileSystem& files, const OpenRequest& skeleton);

}  // namespace velnor::jet
