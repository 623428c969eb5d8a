// tests/access/jet/jet_testing.h - what the tests of Access files share: the corpus, files in
// memory, canonical dumps, the outside checker.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "access/formats/driver.h"
#include "platform/memory_file_system.h"
#include "tests/access/jet/small_json.h"

namespace velnor::testing {

/// Folder of the Access files of the corpus; empty when there is no corpus.
std::string corpusFolder();
/// The corpus's list of files.
Json corpusManifest();
std::vector<std::uint8_t> readBytes(const std::string& nativePath);

/// A drive in memory with one file "C:\TEST.MDB".
inline constexpr const char* kTestFile = "C:\\TEST.MDB";
std::unique_ptr<MemoryFileSystem> memoryWith(const std::vector<std::uint8_t>& content);

OpenRequest reading(std::string_view password = {}, std::string_view codePage = {});
OpenRequest writing(std::string_view password = {});

/// All records of a table in the canonical form of the corpus's dumps.
std::string dumpTable(Store& store, std::string_view table);

/// What the outside checker says of a file: its output, and whether it found no fault.
struct Verdict {
    bool available = false;
    bool sound = false;
    std::string output;
};
Verdict outsideCheck(const std::vector<std::uint8_t>& content, const std::string& password = {});
/// Output of a shell command run on a file with this content, whose path replaces "FILE".
std::string runOn(const std::vector<std::uint8_t>& content, std::string command, int& status);

}  // namespace velnor::testing
