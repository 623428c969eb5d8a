#include "access/formats/jet/check_context.h"

#include "access/formats/jet/data_page.h"
#include "access/formats/jet/usage_map.h"

namespace velnor::jet {
namespace {

constexpr int kMostFindings = 24;  // of one place

}  // namespace

std::string placeText(RowPointer row)
{
    return "page " + std::to_string(row.page) + ", row " + std::to_string(row.slot);
}

CheckContext::CheckContext(JetFile& checked, const ProblemSink& report)
    : file(checked), report_(report), names_{"nobody"}, owners_(checked.pageCount(), 0)
{
    mapOwner_ = addOwner("map records");
}

void CheckContext::problem(const std::string& where, const std::string& text, bool harmless)
{
    const int told = ++told_[where];
    if (told <= kMostFindings)
        report_({where, text, harmless});
    else if (told == kMostFindings + 1)
        report_({where, "There is more, which is not shown.", true});
}

CheckContext::Owner CheckContext::addOwner(std::string name)
{
    names_.push_back(std::move(name));
    return static_cast<Owner>(names_.size() - 1);
}

bool CheckContext::claim(PageNumber page, Owner owner)
{
    if (page >= owners_.size()) {
        problem(names_[owner], "Page " + std::to_string(page) + " lies outside the file.");
        return false;
    }
    if (owners_[page] != 0) {
        problem(names_[owner], "Page " + std::to_string(page) + " belongs to " +
                                   names_[owners_[page]] + " as well.");
        return false;
    }
    owners_[page] = owner;
    return true;
}

std::vector<PageNumber> CheckContext::useMap(RowPointer record, const std::string& where)
{
    std::vector<PageNumber> pages;
    const auto [at, fresh] = mapRecords_.emplace(record.word(), where);
    if (!fresh)
        problem(where,
                "The page map at " + placeText(record) + " serves " + at->second + " as well.");
    try {
        if (record.page >= 2) {
            const PageRef page = file.page(record.page);
            const DataPage data(file.format(), page.data());
            if (mapPages_.insert(record.page).second && data.isData() && data.owner() == 0)
                claim(record.page, mapOwner_);
        }
        UsageMap map(file, record);
        for (const PageNumber page : map.mapPages())
            claim(page, addOwner("the page map of " + where));
        PageNumber page = map.next(1);
        for (; page != 0 && page < file.pageCount(); page = map.next(page + 1))
            pages.push_back(page);
        if (page != 0)
            problem(where, "Its page map names pages outside the file.");
    } catch (const EngineError& error) {
        problem(where, std::string("Its page map cannot be read: ") + error.what());
    }
    return pages;
}

bool CheckContext::useLongRow(RowPointer row)
{
    auto& rows = longRows_[row.page];
    if (rows.test(row.slot))
        return false;
    rows.set(row.slot);
    return true;
}

bool CheckContext::longRowUsed(RowPointer row) const
{
    const auto found = longRows_.find(row.page);
    return found != longRows_.end() && found->second.test(row.slot);
}

}  // namespace velnor::jet
