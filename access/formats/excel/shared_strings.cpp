#include "access/formats/excel/shared_strings.h"

#include <algorithm>

#include "access/formats/excel/biff_text.h"

namespace velnor::excel {
namespace {

constexpr std::size_t kCounts = 8;  // bytes in front of the texts
constexpr std::size_t kLongest = 8224;

/// Writes texts into records, going on in CONTINUE where one is full.
class StringPacker {
public:
    explicit StringPacker(std::vector<RecordList::Entry>& records) : records_(records) {}

    void add(std::string_view utf8)
    {
        unitsOf(utf8, units_);
        const std::size_t width = units_.narrow ? 1 : 2;
        const std::size_t count = units_.count();
        if (room() < 3 + (count ? width : 0))
            next();
        data().push_back(static_cast<std::uint8_t>(count & 0xFF));
        data().push_back(static_cast<std::uint8_t>(count >> 8));
        data().push_back(units_.narrow ? 0 : 1);
        for (std::size_t done = 0; done < count;) {
            if (room() < width) {
                next();
                data().push_back(units_.narrow ? 0 : 1);
            }
            const std::size_t fits = std::min(count - done, room() / width);
            units_.append(data(), done, fits);
            done += fits;
        }
    }

private:
    std::vector<std::uint8_t>& data() { return records_.back().own; }
    std::size_t room() { return kLongest - std::min(kLongest, data().size()); }
    void next() { records_.push_back(RecordList::made(rec::kContinue, {})); }

    std::vector<RecordList::Entry>& records_;
    Units units_;
};

}  // namespace

SharedStrings readSharedStrings(const std::vector<Bytes>& parts, sheet::TextPool& texts)
{
    SharedStrings found;
    if (parts.empty())
        return found;
    UnicodeReader reader(parts, std::min(kCounts, parts.front().size()));
    std::string_view text;
    while (reader.next(text)) {
        texts.add(text);
        found.rich.push_back(reader.rich());
        ++found.count;
    }
    found.cutOff = reader.cutOff();
    return found;
}

std::vector<RecordList::Entry> extendSharedStrings(const std::vector<Bytes>& parts,
                                                   std::uint32_t count, std::uint32_t references,
                                                   std::span<const std::string_view> added)
{
    std::vector<RecordList::Entry> records;
    for (const Bytes part : parts)
        records.push_back({records.empty() ? rec::kSst : rec::kContinue, part, {}, false, 0});
    if (records.empty())
        records.push_back(RecordList::made(rec::kSst, {}));
    std::vector<std::uint8_t>& first = records.front().edit();
    first.resize(std::max(first.size(), kCounts));
    records.back().edit();
    StringPacker packer(records);
    for (const std::string_view text : added)
        packer.add(text);
    std::vector<std::uint8_t>& head = records.front().own;
    storeLE(head.data(), references);
    storeLE(head.data() + 4, static_cast<std::uint32_t>(count + added.size()));
    return records;
}

}  // namespace velnor::excel
