#include "access/formats/xbase/table_info.h"

#include <cstdio>

namespace velnor::xbase {
namespace {

std::string hexByte(std::uint8_t byte)
{
    char text[8];
    std::snprintf(text, sizeof text, "0x%02X", byte);
    return text;
}

std::string dateWords(const DbfHeader& header)
{
    if (!header.year)
        return "not a date";
    char text[40];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d", header.year, header.month, header.day);
    return text;
}

std::string pageWords(const DbfHeader& header)
{
    std::string text = std::to_string(header.codePage->number());
    if (!header.format->two) {
        text += " (mark ";
        text += hexByte(header.languageMark);
        if (!header.languageName.empty())
            text += ", " + header.languageName;
        text += ")";
    }
    return text;
}

std::string memoText(DbfTable& table)
{
    if (!table.header().hasMemoField())
        return "none";
    const MemoFile* memo = table.memo();
    if (!memo)
        return "missing";
    std::string text(memoWords(memo->form()));
    text += ", blocks of ";
    text += std::to_string(memo->blockSize());
    text += " bytes";
    return text;
}

/// Facts must be there at once: the flags of a long table are not read for them.
std::string deletedWords(DbfTable& table)
{
    constexpr std::uint64_t kQuicklyRead = 8u << 20;
    if (table.fileBytes() > kQuicklyRead)
        return "not counted";
    return std::to_string(table.count() - table.recordCount());
}

}  // namespace

std::string_view memoWords(MemoForm form)
{
    switch (form) {
    case MemoForm::DbtIII:
        return "DBT of dBASE III";
    case MemoForm::DbtIV:
        return "DBT of dBASE IV";
    case MemoForm::Fpt:
        return "FPT of FoxPro";
    default:
        return "none";
    }
}

std::vector<std::pair<std::string, std::string>> tableInfo(DbfTable& table)
{
    const DbfHeader& header = table.header();
    std::vector<std::pair<std::string, std::string>> facts{
        {"Format", std::string(header.format->words)},
        {"Version byte", hexByte(header.version)},
        {"Records with deleted ones", std::to_string(table.count())},
        {"Deleted records", deletedWords(table)},
        {"Header length", std::to_string(header.headerLength)},
        {"Record length", std::to_string(header.recordLength)},
        {"Code page", pageWords(header)},
        {"Memo file", memoText(table)},
        {"Last update", dateWords(header)},
    };
    for (const std::string& name : table.indexFiles())
        facts.emplace_back("Index file", name);
    return facts;
}

}  // namespace velnor::xbase
