// tests/access/jet/corpus_files.h - real Access files, where VELNOR_CORPUS names their folder.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velnor::jet {

inline std::filesystem::path corpusFolder()
{
    const char* folder = std::getenv("VELNOR_CORPUS");
    return folder && *folder ? std::filesystem::path(folder) / "jet" : std::filesystem::path();
}

/// Names of all sound files, in order; none without a corpus.
inline std::vector<std::string> corpusNames()
{
    std::vector<std::string> names;
    if (corpusFolder().empty() || !std::filesystem::exists(corpusFolder()))
        return names;
    for (const auto& entry : std::filesystem::directory_iterator(corpusFolder()))
        if (entry.path().extension() == ".mdb")
            names.push_back(entry.path().filename().string());
    std::ranges::sort(names);
    return names;
}

/// The bytes of a file; none when it is not there.
inline std::vector<std::uint8_t> corpusFile(std::string_view name)
{
    if (corpusFolder().empty())
        return {};
    std::ifstream in(corpusFolder() / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

/// The password that opens a file.
inline std::string corpusPassword(std::string_view name)
{
    constexpr std::pair<std::string_view, const char*> kPasswords[] = {
        {"own-jet3-password.mdb", "Geheim97"},
        {"own-jet3-alltypes-encoded.mdb", "secret"},
        {"andipaetzold-V2003_with-password.mdb", "password"},
        {"spannm-password.mdb", "ucanaccess"},
    };
    for (const auto& [file, password] : kPasswords)
        if (name == file)
            return password;
    return "";
}

}  // namespace velnor::jet
