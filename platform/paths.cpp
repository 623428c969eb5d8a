#include "platform/paths.h"

#include <algorithm>

#include "platform/letter_case.h"

namespace velnor::paths {
namespace {

/// The next character in capitals; a byte that is no UTF-8 stands for itself, above all characters.
char32_t nextFolded(std::string_view text, std::size_t& at)
{
    const char32_t character = nextCharacter(text, at);
    if (character != kNoCharacter)
        return capitalOf(character);
    return 0x80000000u | static_cast<unsigned char>(text[at++]);
}

bool isPlain(char c)
{
    return static_cast<unsigned char>(c) < 0x80;
}

bool isLower(char c)
{
    return c >= 'a' && c <= 'z';
}

bool isUpper(char c)
{
    return c >= 'A' && c <= 'Z';
}

char plainCapital(char c)
{
    return isLower(c) ? static_cast<char>(c - 32) : c;
}

}  // namespace

std::string_view folder(std::string_view path)
{
    const auto slash = path.rfind('\\');
    return slash == std::string_view::npos ? std::string_view{} : path.substr(0, slash);
}

std::string_view fileName(std::string_view path)
{
    const auto slash = path.rfind('\\');
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

std::string_view extension(std::string_view path)
{
    const std::string_view name = fileName(path);
    const auto dot = name.rfind('.');
    return dot == std::string_view::npos ? std::string_view{} : name.substr(dot + 1);
}

std::string_view baseName(std::string_view path)
{
    const std::string_view name = fileName(path);
    return name.substr(0, name.rfind('.'));
}

std::string join(std::string_view folder, std::string_view name)
{
    std::string path(folder);
    if (!path.empty() && path.back() != '\\')
        path += '\\';
    path += name;
    return path;
}

std::string withExtension(std::string_view path, std::string_view newExtension)
{
    const std::string_view old = extension(path);
    std::string added(newExtension);
    if (std::ranges::any_of(old, isLower) && std::ranges::none_of(old, isUpper))
        std::ranges::transform(added, added.begin(),
                               [](char c) { return isUpper(c) ? static_cast<char>(c + 32) : c; });
    std::string result(folder(path));
    if (path.size() != fileName(path).size())
        result += '\\';
    result.append(baseName(path)).append(".").append(added);
    return result;
}

bool sameName(std::string_view a, std::string_view b)
{
    std::size_t i = 0;
    std::size_t j = 0;
    while (i < a.size() && j < b.size()) {
        if (isPlain(a[i]) && isPlain(b[j])) {
            if (plainCapital(a[i++]) != plainCapital(b[j++]))
                return false;
        } else if (nextFolded(a, i) != nextFolded(b, j)) {
            return false;
        }
    }
    return i == a.size() && j == b.size();
}

std::string foldName(std::string_view name)
{
    std::string folded;
    folded.reserve(name.size());
    for (std::size_t at = 0; at < name.size();) {
        if (const auto byte = static_cast<unsigned char>(name[at]); byte < 0x80) {
            folded += static_cast<char>(isLower(name[at]) ? byte - 32 : byte);
            ++at;
            continue;
        }
        const char32_t character = nextCharacter(name, at);
        if (character == kNoCharacter)
            folded += name[at++];
        else
            appendCharacter(folded, capitalOf(character));
    }
    return folded;
}

bool matches(std::string_view name, std::string_view pattern)
{
    if (pattern == "*.*" || pattern == "*")
        return true;
    constexpr auto kNone = std::string_view::npos;
    std::size_t n = 0;
    std::size_t p = 0;
    std::size_t star =
        kNone;  // behind the last "*": where to go on after taking one more character
    std::size_t taken = 0;
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = ++p;
            taken = n;
            continue;
        }
        std::size_t nextN = n;
        std::size_t nextP = p;
        const char32_t character = nextFolded(name, nextN);
        if (p < pattern.size()) {
            const bool any = pattern[p] == '?';
            if (nextFolded(pattern, nextP) == character || any) {
                n = nextN;
                p = nextP;
                continue;
            }
        }
        if (star == kNone)
            return false;
        nextFolded(name, taken);
        n = taken;
        p = star;
    }
    while (p < pattern.size() && pattern[p] == '*')
        ++p;
    return p == pattern.size();
}

}  // namespace velnor::paths
