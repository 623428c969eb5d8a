// access/storage/code_page.h - bytes of a code page to UTF-8 and back.
//
// Single-byte pages come from our own tables; a byte that a page leaves undefined is the control
// character of the same number, both ways (81 8D 8F 90 9D of 1252); from A0 on, where that number
// is a letter, U+F800 and the byte. The double-byte pages 932, 936, 949, 950 and 54936 go through
// the system's converter; half a character at the end of a field becomes U+FFFD.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace velnor {

struct CodePageReverse;

class CodePage {
public:
    /// By number (437, 1252, ... 10000 is Mac Roman, 895 Kamenicky, 620 Mazovia, 65001 UTF-8); null
    /// when it is not known. The object lives as long as the program.
    static const CodePage* find(int number);
    /// By what people write: "1252", "cp866", "windows-1251", "latin1", "koi8-r", "gbk", "utf-8".
    static const CodePage* find(std::string_view name);

    int number() const { return number_; }
    bool singleByte() const { return toUnicode_ != nullptr; }

    /// UTF-8 of the bytes. Plain ASCII comes back as a view of the bytes themselves; everything
    /// else is written into `scratch`, and the view is of that.
    std::string_view decode(std::string_view bytes, std::string& scratch) const;
    /// Appends the bytes of a UTF-8 text. False when a character is not in the page; then '?'
    /// stands for it.
    bool encode(std::string_view utf8, std::string& bytes) const;

    constexpr CodePage(int number, const char16_t* toUnicode, const CodePageReverse* fromUnicode,
                       const char* systemName)
        : number_(number), toUnicode_(toUnicode), fromUnicode_(fromUnicode), systemName_(systemName)
    {
    }

private:
    bool encodeSingleByte(std::string_view utf8, std::string& bytes) const;

    int number_;
    const char16_t* toUnicode_;           // the bytes 80 to FF, or null
    const CodePageReverse* fromUnicode_;  // the way back, or null
    const char* systemName_;              // for the system's converter, or null
};

/// UTF-16LE bytes to UTF-8 and back; a lone surrogate becomes U+FFFD.
std::string_view utf16leToUtf8(std::span<const std::uint8_t> bytes, std::string& scratch);
void utf8ToUtf16le(std::string_view utf8, std::string& bytes);

}  // namespace velnor
