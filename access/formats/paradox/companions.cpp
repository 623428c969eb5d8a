#include "access/formats/paradox/companions.h"

#include <algorithm>

#include "platform/paths.h"

namespace velnor::paradox {
namespace {

constexpr std::string_view kHex = "0123456789ABCDEF";

bool isHex(char c)
{
    return kHex.find(c) != kHex.npos;
}

}  // namespace

std::optional<CompanionKind> companionKind(std::string_view spelled)
{
    const std::string extension = paths::foldName(spelled);
    if (extension == "PX")
        return CompanionKind::PrimaryTree;
    if (extension == "MB")
        return CompanionKind::LongValues;
    if (extension == "VAL")
        return CompanionKind::Checks;
    if (extension == "TV" || extension == "FAM" || extension == "SET")
        return CompanionKind::Settings;
    const bool numbered = extension.size() == 3 && isHex(extension[2]) &&
                          (extension[1] == 'G' || isHex(extension[1]));
    if (numbered && extension[0] == 'X')
        return CompanionKind::Index;
    if (numbered && extension[0] == 'Y')
        return CompanionKind::IndexTree;
    return std::nullopt;
}

std::vector<Companion> companionsOf(FileSystem& files, std::string_view tablePath)
{
    const std::string_view base = paths::baseName(tablePath);
    std::vector<Companion> found;
    for (const FileInfo& file : files.list(paths::folder(tablePath))) {
        if (file.folder || !paths::sameName(paths::baseName(file.name), base))
            continue;
        if (const auto kind = companionKind(paths::extension(file.name)))
            found.push_back({*kind, paths::foldName(paths::extension(file.name)),
                             paths::join(paths::folder(tablePath), file.name)});
    }
    std::sort(found.begin(), found.end(),
              [](const Companion& a, const Companion& b) { return a.extension < b.extension; });
    return found;
}

const Companion* findCompanion(const std::vector<Companion>& all, std::string_view extension)
{
    const auto found = std::find_if(all.begin(), all.end(), [&](const Companion& companion) {
        return companion.extension == extension;
    });
    return found == all.end() ? nullptr : &*found;
}

std::string singleExtension(char letter, unsigned field)
{
    return {letter, kHex[field / 16 % 16], kHex[field % 16]};
}

std::string groupExtension(char letter, unsigned number)
{
    return {letter, 'G', kHex[number % 16]};
}

}  // namespace velnor::paradox
