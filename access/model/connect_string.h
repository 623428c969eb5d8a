// access/model/connect_string.h - a connect string taken apart: "dBASE 5.0;codepage=866".
#pragma once

#include <string>
#include <string_view>

namespace velnor::model {

struct ConnectString {
    std::string word;          ///< picks the driver, with its ";": "dBASE 5.0;"; empty for Access
    std::string password;      ///< of "pwd=", as written
    bool hasPassword = false;  ///< also of an empty "pwd="
    std::string codePage;      ///< of "codepage="
    std::string options;       ///< the other "key=value" parts, for the driver: "HDR=No;IMEX=1"
};

/// The first part is the driver's word unless it has a "="; other parts are known by their key,
/// blind to case, and what is not known is left to the driver, as written.
ConnectString parseConnect(std::string_view connect);

/// The text that CreateDatabase takes: a locale, a connect string, or a connect string right behind
/// a locale, as in ";LANGID=0x0409;CP=1252;COUNTRY=0Excel 8.0;".
ConnectString parseCreation(std::string_view text);

}  // namespace velnor::model
