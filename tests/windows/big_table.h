// tests/windows/big_table.h - a dBASE table of any length, written as bytes: faster than by
// records.
#pragma once

#include <cstdio>
#include <string>

namespace velnor::testing {

/// Fields ID N(8) and NAME C(10): record n (from 0) holds n and "nameN"; every tenth NAME is blank.
inline std::string bigTable(int records)
{
    const auto number = [](std::string& out, unsigned value, int bytes) {
        for (int i = 0; i < bytes; ++i, value >>= 8)
            out += static_cast<char>(value & 0xFF);
    };
    const auto field = [&](std::string& out, const char* name, char type, int width) {
        std::string entry(name);
        entry.resize(11);
        entry += type;
        entry.resize(16);
        entry += static_cast<char>(width);
        entry.resize(32);
        out += entry;
    };
    std::string out("\x03\x68\x0B\x12", 4);
    number(out, static_cast<unsigned>(records), 4);
    number(out, 32 + 2 * 32 + 1, 2);
    number(out, 1 + 8 + 10, 2);
    out.resize(32);
    field(out, "ID", 'N', 8);
    field(out, "NAME", 'C', 10);
    out += '\r';
    char row[32];
    for (int i = 0; i < records; ++i) {
        char name[16] = "";
        if (i % 10 != 9)
            std::snprintf(name, sizeof name, "name%d", i % 100000);
        std::snprintf(row, sizeof row, " %8d%-10s", i, name);
        out.append(row, 19);
    }
    return out + '\x1A';
}

}  // namespace velnor::testing
