#include "platform/path_parts.h"

#include "platform/paths.h"

namespace velnor {
namespace {

bool isSlash(char c)
{
    return c == '\\' || c == '/';
}

bool isLetter(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

/// Takes the text up to the next slash off `rest`; empty when there is none left.
std::string_view nextPart(std::string_view& rest)
{
    std::size_t start = 0;
    while (start < rest.size() && isSlash(rest[start]))
        ++start;
    std::size_t end = start;
    while (end < rest.size() && !isSlash(rest[end]))
        ++end;
    const std::string_view part = rest.substr(start, end - start);
    rest.remove_prefix(end);
    return part;
}

std::string takeRoot(std::string_view path, std::string_view& rest)
{
    rest = path;
    if (path.size() >= 2 && isLetter(path[0]) && path[1] == ':') {
        rest.remove_prefix(2);
        return std::string(path.substr(0, 2));
    }
    if (path.size() >= 2 && isSlash(path[0]) && isSlash(path[1])) {
        const std::string_view server = nextPart(rest);
        const std::string_view share = nextPart(rest);
        if (!server.empty() && !share.empty())
            return "\\\\" + std::string(server) + "\\" + std::string(share);
    }
    throw pathError(RunErrorNumber::BadFileName, path);
}

const char* words(RunErrorNumber number)
{
    switch (number) {
    case RunErrorNumber::InvalidCall:
        return "Invalid procedure call or argument";
    case RunErrorNumber::OutOfMemory:
        return "Out of memory";
    case RunErrorNumber::BadFileName:
        return "Bad file name or number";
    case RunErrorNumber::FileNotFound:
        return "File not found";
    case RunErrorNumber::FileAlreadyOpen:
        return "File already open";
    case RunErrorNumber::DeviceIo:
        return "Device I/O error";
    case RunErrorNumber::FileExists:
        return "File already exists";
    case RunErrorNumber::DiskFull:
        return "Disk full";
    case RunErrorNumber::ReadPastEnd:
        return "Input past end of file";
    case RunErrorNumber::DeviceUnavailable:
        return "Device unavailable";
    case RunErrorNumber::PermissionDenied:
        return "Permission denied";
    case RunErrorNumber::PathNotFound:
        return "Path not found";
    default:
        return "Path/File access error";
    }
}

}  // namespace

std::string PathParts::text() const
{
    std::string out = root;
    for (const std::string_view part : parts) {
        out += '\\';
        out += part;
    }
    return out;
}

PathParts cutPath(std::string_view path)
{
    if (path.find('\0') != std::string_view::npos)
        throw pathError(RunErrorNumber::BadFileName, path.substr(0, path.find('\0')));
    PathParts cut;
    std::string_view rest;
    cut.root = takeRoot(path, rest);
    for (std::string_view part = nextPart(rest); !part.empty(); part = nextPart(rest)) {
        if (part == ".")
            continue;
        if (part != "..")
            cut.parts.push_back(part);
        else if (!cut.parts.empty())
            cut.parts.pop_back();
    }
    return cut;
}

bool startsWith(const PathParts& path, const PathParts& front)
{
    if (path.parts.size() < front.parts.size() || !paths::sameName(path.root, front.root))
        return false;
    for (std::size_t i = 0; i < front.parts.size(); ++i)
        if (!paths::sameName(path.parts[i], front.parts[i]))
            return false;
    return true;
}

RunError pathError(RunErrorNumber number, std::string_view path)
{
    std::string description = words(number);
    if (!path.empty())
        description.append(" - ").append(path);
    return RunError(number, description);
}

}  // namespace velnor
