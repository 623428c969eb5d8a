#include "platform/host_paths.h"

#include <algorithm>
#include <dirent.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/path_parts.h"
#include "platform/paths.h"

namespace velnor {
namespace {

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};

bool stands(const std::string& native)
{
    struct stat status;
    return lstat(native.c_str(), &status) == 0;
}

bool isAscii(std::string_view text)
{
    return std::ranges::none_of(text, [](char c) { return (c & 0x80) != 0; });
}

/// sameName with the quick no first: most names of a folder differ in length or at once. A name of
/// plain letters equals only names of plain letters, which are as long.
bool sameEntry(std::string_view candidate, std::string_view name, bool plain)
{
    if (plain && candidate.size() != name.size())
        return false;
    const char a = candidate.front();
    const char b = name.front();
    if (plain && a != b && (a | 0x20) != (b | 0x20))
        return false;
    return paths::sameName(candidate, name);
}

/// The name in a folder that differs from `name` in case only. The folder gives its names in no
/// order: the smallest by bytes is taken, so that the same file is found each time.
std::string otherCase(const std::string& folder, std::string_view name)
{
    std::string found;
    const std::unique_ptr<DIR, CloseFolder> names(opendir(folder.empty() ? "/" : folder.c_str()));
    if (!names)
        return found;
    const bool plain = isAscii(name);
    while (const dirent* entry = readdir(names.get())) {
        const std::string_view candidate = entry->d_name;
        if (sameEntry(candidate, name, plain) && (found.empty() || candidate < found))
            found = candidate;
    }
    return found;
}

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view kBlanks = " \t\r\n";
    const auto first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/// An absolute native path without ".", "..", doubled and closing slashes; the root is "".
std::string cleaned(std::string_view native)
{
    std::string absolute;
    if (native.empty() || native.front() != '/') {
        const std::unique_ptr<char, decltype(&free)> current(getcwd(nullptr, 0), &free);
        absolute = current ? current.get() : "";
        absolute += '/';
    }
    absolute += native;
    std::string out;
    for (std::size_t at = 0; at < absolute.size();) {
        const std::size_t end = std::min(absolute.find('/', at), absolute.size());
        const std::string_view part = std::string_view(absolute).substr(at, end - at);
        if (part == "..")
            out.resize(out.empty() ? 0 : out.rfind('/'));
        else if (!part.empty() && part != ".")
            out.append("/").append(part);
        at = end + 1;
    }
    return out;
}

int hexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    c = static_cast<char>(c | 0x20);
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

std::string percentDecoded(std::string_view text)
{
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool coded = text[i] == '%' && i + 2 < text.size();
        const int high = coded ? hexValue(text[i + 1]) : -1;
        const int low = coded ? hexValue(text[i + 2]) : -1;
        if (high < 0 || low < 0) {
            out += text[i];
        } else {
            out += static_cast<char>(high * 16 + low);
            i += 2;
        }
    }
    return out;
}

bool hasRoot(std::string_view text)
{
    const bool drive = text.size() >= 2 && text[1] == ':' &&
                       ((text[0] >= 'A' && text[0] <= 'Z') || (text[0] >= 'a' && text[0] <= 'z'));
    return drive || text.starts_with("\\\\");
}

bool holds(std::string_view nativeFolder, std::string_view native)
{
    return native.starts_with(nativeFolder) &&
           (native.size() == nativeFolder.size() || native[nativeFolder.size()] == '/');
}

/// The native path of an address file://..., percent signs resolved; "C:/..." when that is what it
/// holds.
std::string fromAddress(std::string_view address)
{
    std::string_view rest = address.substr(7);
    if (rest.starts_with("localhost/"))
        rest.remove_prefix(9);
    std::string path = percentDecoded(rest);
    const bool drive = path.size() > 2 && path[0] == '/' && hasRoot(path.substr(1));
    return drive ? path.substr(1) : path;
}

}  // namespace

HostPaths::HostPaths()
{
    mount("C:", "/");
}

HostPaths HostPaths::empty()
{
    HostPaths none;
    none.mounts_.clear();
    return none;
}

void HostPaths::mount(std::string_view prefix, std::string_view native)
{
    Mount added{cutPath(prefix).text(), cleaned(native)};
    std::erase_if(mounts_, [&](const Mount& m) { return paths::sameName(m.prefix, added.prefix); });
    const auto shorter = std::ranges::find_if(
        mounts_, [&](const Mount& m) { return m.prefix.size() < added.prefix.size(); });
    mounts_.insert(shorter, std::move(added));
}

void HostPaths::readMap(std::string_view text)
{
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = trimmed(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        const auto equals = line.find('=');
        if (line.starts_with('#') || equals == std::string_view::npos)
            continue;
        const std::string_view prefix = trimmed(line.substr(0, equals));
        const std::string_view native = trimmed(line.substr(equals + 1));
        if (hasRoot(prefix) && native.starts_with('/'))
            mount(prefix, native);
    }
}

std::string HostPaths::toNative(std::string_view path) const
{
    const PathParts cut = cutPath(path);
    const Mount* held = nullptr;
    std::size_t used = 0;
    for (const Mount& candidate : mounts_) {
        const PathParts front = cutPath(candidate.prefix);
        if (startsWith(cut, front)) {
            held = &candidate;
            used = front.parts.size();
            break;
        }
    }
    if (!held)
        throw pathError(cut.root.starts_with('\\') ? RunErrorNumber::PathNotFound
                                                   : RunErrorNumber::DeviceUnavailable,
                        path);

    std::string native = held->native;
    for (std::size_t i = used; i < cut.parts.size(); ++i)
        native.append("/").append(cut.parts[i]);
    if (native.empty())
        return "/";
    if (used == cut.parts.size() || stands(native))
        return native;

    native = held->native;
    bool known = true;  // the folder so far exists
    for (std::size_t i = used; i < cut.parts.size(); ++i) {
        const std::string folder = native;
        native.append("/").append(cut.parts[i]);
        if (!known || stands(native))
            continue;
        const std::string name = otherCase(folder, cut.parts[i]);
        known = !name.empty();
        if (known)
            native = folder + "/" + name;
    }
    return native;
}

std::string HostPaths::toProgram(std::string_view nativePath) const
{
    const std::string native = cleaned(nativePath);
    const Mount* held = nullptr;
    for (const Mount& candidate : mounts_) {
        const bool better = !held || candidate.native.size() > held->native.size();
        if (better && holds(candidate.native, native))
            held = &candidate;
    }
    if (!held)
        throw pathError(RunErrorNumber::PathNotFound, nativePath);
    std::string rest = native.substr(held->native.size());
    if (rest.find('\\') != std::string::npos)
        throw pathError(RunErrorNumber::BadFileName, nativePath);
    std::ranges::replace(rest, '/', '\\');
    const bool drive = held->prefix.size() == 2;
    return held->prefix + (rest.empty() && drive ? "\\" : rest);
}

std::string HostPaths::fromPerson(std::string_view text) const
{
    if (text.starts_with("file://")) {
        std::string path = fromAddress(text);
        if (hasRoot(path)) {
            std::ranges::replace(path, '/', '\\');
            return path;
        }
        return toProgram(path);
    }
    if (hasRoot(text))
        return std::string(text);
    std::string native(text);
    if (!native.starts_with('/') && !stands(native))
        std::ranges::replace(native, '\\', '/');
    return toProgram(native);
}

std::vector<std::string> HostPaths::mountsBelow(std::string_view folder) const
{
    const PathParts cut = cutPath(folder);
    std::vector<std::string> names;
    for (const Mount& candidate : mounts_) {
        const PathParts way = cutPath(candidate.prefix);
        if (way.parts.size() <= cut.parts.size() || !startsWith(way, cut))
            continue;
        const std::string_view name = way.parts[cut.parts.size()];
        const auto same = [&](const std::string& n) { return paths::sameName(n, name); };
        if (std::ranges::none_of(names, same))
            names.emplace_back(name);
    }
    return names;
}

}  // namespace velnor
