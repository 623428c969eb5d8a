#include "access/formats/xbase/inf_file.h"

#include <algorithm>

#include "access/formats/xbase/dbf_header.h"
#include "access/storage/replace_file.h"
#include "platform/paths.h"

namespace velnor::xbase {
namespace {

constexpr std::uint64_t kLongestInf = 64u << 10;

void addIfThere(FileSystem& files, std::string_view tablePath, std::string_view name,
                std::vector<std::string>& found)
{
    const std::string path = paths::join(paths::folder(tablePath), paths::fileName(name));
    const auto info = files.info(path);
    if (!info || info->folder)
        return;
    if (std::find(found.begin(), found.end(), info->name) == found.end())
        found.push_back(info->name);
}

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && static_cast<unsigned char>(text.front()) <= ' ')
        text.remove_prefix(1);
    while (!text.empty() && static_cast<unsigned char>(text.back()) <= ' ')
        text.remove_suffix(1);
    return text;
}

/// "[dBASE III]", "[FoxPro 2.6]", "[UIDX1 city#idx]", and "[dBASE]" of some writers.
bool isIndexSection(std::string_view line)
{
    const std::string folded = paths::foldName(line);
    return folded.starts_with("[DBASE") || folded.starts_with("[FOXPRO") ||
           folded.starts_with("[UIDX");
}

/// "NDX1=CUSTNO.NDX", "UNDX2=...", "MDX1=...": what stands behind the sign; empty for other lines.
std::string_view listedFile(std::string_view line)
{
    const auto sign = line.find('=');
    if (sign == line.npos)
        return {};
    std::string key = paths::foldName(trimmed(line.substr(0, sign)));
    while (!key.empty() && key.back() >= '0' && key.back() <= '9')
        key.pop_back();
    const std::string_view kind = std::string_view(key).substr(key.starts_with('U') ? 1 : 0);
    const bool known = kind == "NDX" || kind == "MDX" || kind == "IDX" || kind == "CDX";
    return known ? trimmed(line.substr(sign + 1)) : std::string_view{};
}

std::string readInf(FileSystem& files, std::string_view tablePath)
{
    const std::string path = paths::withExtension(tablePath, "INF");
    if (!files.fileExists(path))
        return {};
    const auto file = files.open(path, OpenMode::Read);
    std::string text(static_cast<std::size_t>(std::min(file->size(), kLongestInf)), '\0');
    text.resize(file->readAt(0, {reinterpret_cast<std::uint8_t*>(text.data()), text.size()}));
    return text;
}

/// Calls `use` with each line of the INF file that names an index file.
template <class Use> void forEachListed(FileSystem& files, std::string_view tablePath, Use use)
{
    const std::string inf = readInf(files, tablePath);
    bool ours = false;
    for (std::string_view rest = inf; !rest.empty();) {
        const auto end = rest.find('\n');
        const std::string_view line = trimmed(rest.substr(0, end));
        rest = end == rest.npos ? std::string_view{} : rest.substr(end + 1);
        if (line.starts_with('['))
            ours = isIndexSection(line);
        else if (const auto name = ours ? listedFile(line) : std::string_view{}; !name.empty())
            use(name);
    }
}

}  // namespace

std::vector<std::string> indexFilesOf(FileSystem& files, std::string_view tablePath,
                                      const DbfHeader& header)
{
    std::vector<std::string> found;
    if (header.saysProductionIndex())
        for (const std::string_view extension : {"MDX", "CDX"})
            addIfThere(files, tablePath, paths::withExtension(tablePath, extension), found);
    forEachListed(files, tablePath,
                  [&](std::string_view name) { addIfThere(files, tablePath, name, found); });
    return found;
}

bool infListsIndexes(FileSystem& files, std::string_view tablePath)
{
    bool lists = false;
    forEachListed(files, tablePath, [&lists](std::string_view) { lists = true; });
    return lists;
}

namespace {

std::vector<std::string> linesOf(const std::string& text)
{
    std::vector<std::string> lines;
    for (std::string_view rest = text; !rest.empty();) {
        const auto end = rest.find('\n');
        lines.emplace_back(trimmed(rest.substr(0, end)));
        rest = end == rest.npos ? std::string_view{} : rest.substr(end + 1);
    }
    while (!lines.empty() && lines.back().empty())
        lines.pop_back();
    return lines;
}

void writeInf(FileSystem& files, std::string_view tablePath, const std::vector<std::string>& lines)
{
    std::string text;
    for (const std::string& line : lines)
        text += line + "\r\n";
    FileReplacement file(files, paths::withExtension(tablePath, "INF"));
    file.file().writeAt(0, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    file.commit();
}

}  // namespace

void listInInf(FileSystem& files, std::string_view tablePath, std::string_view indexFile,
               bool unique)
{
    std::vector<std::string> lines = linesOf(readInf(files, tablePath));
    const auto section = [](const std::string& line) {
        return paths::sameName(line, "[dBASE III]");
    };
    auto at = std::find_if(lines.begin(), lines.end(), section);
    if (at == lines.end())
        at = lines.insert(lines.end(), "[dBASE III]");
    const std::string kind = unique ? "UNDX" : "NDX";
    int number = 1;
    for (++at; at != lines.end() && !at->starts_with('['); ++at)
        number += paths::foldName(*at).starts_with(kind);
    lines.insert(at, kind + std::to_string(number) + "=" + std::string(indexFile));
    writeInf(files, tablePath, lines);
}

/// The other lines of its kind are numbered anew; sections that have no line left go, too.
void unlistInInf(FileSystem& files, std::string_view tablePath, std::string_view indexFile)
{
    if (!infListsIndexes(files, tablePath))
        return;
    std::vector<std::string> kept;
    bool ours = false;
    int plain = 0, unique = 0;
    for (std::string& line : linesOf(readInf(files, tablePath))) {
        if (line.starts_with('[')) {
            if (!kept.empty() && kept.back().starts_with('['))
                kept.pop_back();
            ours = isIndexSection(line);
            plain = unique = 0;
        } else if (const auto name = ours ? listedFile(line) : std::string_view{}; !name.empty()) {
            if (paths::sameName(paths::fileName(name), indexFile))
                continue;
            const bool one = paths::foldName(line).starts_with("UNDX");
            if (one || paths::foldName(line).starts_with("NDX"))
                line = (one ? "UNDX" + std::to_string(++unique) : "NDX" + std::to_string(++plain)) +
                       "=" + std::string(name);
        }
        kept.push_back(std::move(line));
    }
    if (!kept.empty() && kept.back().starts_with('['))
        kept.pop_back();
    if (kept.empty())
        files.remove(paths::withExtension(tablePath, "INF"));
    else
        writeInf(files, tablePath, kept);
}

}  // namespace velnor::xbase
