// access/storage/system_converter.h - the double-byte code pages, by the system's converter.
#pragma once

#include <string>
#include <string_view>

namespace velnor {

/// Writes the UTF-8 of `bytes` over `out`; what is no character becomes U+FFFD.
void systemDecode(const char* page, std::string_view bytes, std::string& out);
/// Appends the bytes of a UTF-8 text, '?' for what the page lacks; then false.
bool systemEncode(const char* page, std::string_view utf8, std::string& bytes);

}  // namespace velnor
