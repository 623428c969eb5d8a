#include "access/formats/excel/globals.h"

#include <algorithm>
#include <set>

#include "access/formats/excel/biff_text.h"

namespace velnor::excel {
namespace {

// Kinds of substreams.
constexpr std::uint16_t kGlobals = 5, kModule = 6, kChart = 0x20, kMacroSheet = 0x40,
                        kWorkspace = 0x100;
constexpr std::uint16_t kNotAnArea = 0x2F;  // flags of a name: hidden, function, macro, built-in
constexpr std::size_t kMostFaults = 100;

std::uint16_t u16(Bytes data, std::size_t at)
{
    return at + 2 <= data.size() ? loadLE<std::uint16_t>(data.data() + at) : 0;
}
std::uint32_t u32(Bytes data, std::size_t at)
{
    return at + 4 <= data.size() ? loadLE<std::uint32_t>(data.data() + at) : 0;
}

class GlobalsReader {
public:
    GlobalsReader(Bytes stream, std::string_view streamName, std::string_view baseName,
                  const CodePage* page)
        : stream_(stream), streamName_(streamName), baseName_(baseName), given_(page)
    {
    }

    Globals read()
    {
        readVersion();
        RecordReader reader(stream_);
        Record record;
        int depth = 0;
        while (reader.next(record)) {
            depth += isBof(record.type) ? 1 : 0;
            depth -= record.type == rec::kEof ? 1 : 0;
            take(record, reader);
            if (depth == 0 && g_.form->version >= 5)
                break;
            if (depth == 0 && !workspace_)
                break;
        }
        if (depth != 0)
            fault("the globals have no end");
        g_.end = g_.form->version >= 5 ? reader.at() : 0;
        settleVersion();
        settlePage();
        settleFormats();
        settleSheets();
        settleNames();
        return std::move(g_);
    }

private:
    void fault(std::string text)
    {
        if (g_.faults.size() < kMostFaults)
            g_.faults.push_back(std::move(text));
    }

    void readVersion()
    {
        Record bof;
        RecordReader reader(stream_);
        if (!reader.next(bof) || !isBof(bof.type) || bof.data.size() < 4)
            throw EngineError(EngineErrorNumber::UnexpectedFormat,
                              "Not a workbook: the stream has no beginning that is known.");
        const std::uint16_t said = u16(bof.data, 0);
        int version = 0;
        switch (bof.type) {
        case rec::kBof2:
            version = 2;
            break;
        case rec::kBof3:
            version = 3;
            break;
        case rec::kBof4:
            version = 4;
            break;
        default:
            version = said == 0x0600 ? 8 : said == 0x0500 ? 5 : streamName_ == "WORKBOOK" ? 8 : 5;
        }
        workspace_ = version < 5 && u16(bof.data, 2) == kWorkspace;
        g_.form = &biffForm(version);
    }

    /// Some writers give a wrong version: the formats of cells have a size that tells it.
    void settleVersion()
    {
        if (g_.form->version < 5 || g_.xfs.empty())
            return;
        const bool eight = g_.xfs.front().size() == 20, five = g_.xfs.front().size() == 16;
        if (g_.form->version == 8 ? five && g_.sst.empty() : eight)
            g_.form = &biffForm(eight ? 8 : 5);
    }

    void settlePage()
    {
        g_.page = given_ ? given_ : &codePageOfRecord(g_.codePage ? g_.codePage : 1252);
    }

    void take(const Record& record, RecordReader& reader)
    {
        const Bytes data = record.data;
        switch (record.type) {
        case rec::kCodePage:
            if (g_.codePage == 0)
                g_.codePage = u16(data, 0);
            return;
        case rec::kDate1904:
            g_.date1904 = u16(data, 0) == 1;
            return;
        case rec::kFilePass:
            g_.encrypted = true;
            g_.filePass = data;
            return;
        case rec::kFormat:
        case rec::kFormat2:
            formatRecords_.push_back(record);
            return;
        case rec::kXf:
        case rec::kXf2:
        case rec::kXf3:
        case rec::kXf4:
            g_.xfs.push_back(data);
            return;
        case rec::kBoundSheet:
            if (g_.form->version >= 5)
                boundSheets_.push_back(record);
            return;
        case rec::kBundleHeader:
            if (workspace_)
                boundSheets_.push_back(record);
            return;
        case rec::kSupBook:
            supBooks_.push_back(data);
            return;
        case rec::kExternSheet:
            externSheets_.push_back(data);
            return;
        case rec::kName:
            if (g_.form->version >= 5)
                names_.push_back(record);
            return;
        case rec::kSst:
            if (!g_.sst.empty())
                return;
            g_.sst.push_back(data);
            for (Record more; reader.peek() == rec::kContinue && reader.next(more);)
                g_.sst.push_back(more.data);
            return;
        default:
            return;
        }
    }

    // Formats

    void settleFormats()
    {
        int order = 0;
        for (const Record& record : formatRecords_) {
            const int version = g_.form->version;
            std::size_t at = version >= 5 || record.type == rec::kFormat ? 2 : 0;
            const int index = version >= 5 ? u16(record.data, 0) : order++;
            std::string text = textAt(record.data, at, version == 8 ? 2 : 1, *g_.form, *g_.page);
            g_.formats[index] = classOfFormat(text);
            g_.formatTexts[index] = std::move(text);
        }
        for (const Bytes xf : g_.xfs)
            g_.xfClasses.push_back(classOfXf(xf));
    }

    FormatClass classOfXf(Bytes xf) const
    {
        const int version = g_.form->version;
        int format = 0;
        if (version >= 5)
            format = u16(xf, 2);
        else if (version == 2)
            format = xf.size() > 2 ? xf[2] & 0x3F : 0;
        else
            format = xf.size() > 1 ? xf[1] : 0;
        if (const auto found = g_.formats.find(format); found != g_.formats.end())
            return found->second;
        return version >= 5 ? classOfBuiltInFormat(format) : FormatClass{};
    }

    // Sheets

    std::size_t bofFrom(std::size_t at) const
    {
        Record record;
        RecordReader reader(stream_, at);
        while (reader.next(record))
            if (isBof(record.type))
                return record.at;
        return stream_.size();
    }

    bool isBofAt(std::size_t at) const
    {
        Record record;
        RecordReader reader(stream_, at);
        return reader.next(record) && isBof(record.type) && record.data.size() >= 4 &&
               record.data.size() <= 16;
    }

    /// Where the substreams behind the globals begin.
    std::vector<std::size_t> substreams() const
    {
        std::vector<std::size_t> found;
        Record record;
        RecordReader reader(stream_, g_.end);
        int depth = 0;
        while (reader.next(record)) {
            if (isBof(record.type) && depth++ == 0)
                found.push_back(record.at);
            depth -= record.type == rec::kEof && depth > 0;
        }
        return found;
    }

    void settleSheets()
    {
        if (g_.form->version < 5 && !workspace_) {
            SheetInfo only;
            only.name = baseName_;
            g_.sheets.push_back(std::move(only));
            return;
        }
        std::vector<std::size_t> inOrder;
        std::set<std::size_t> taken;
        for (std::size_t i = 0; i < boundSheets_.size(); ++i) {
            const Record& record = boundSheets_[i];
            SheetInfo info;
            info.recordAt = record.at;
            std::size_t at = workspace_ ? 4 : 6;
            info.name = textAt(record.data, at, 1, *g_.form, *g_.page);
            std::size_t position = workspace_ ? bofFrom(record.end()) : u32(record.data, 0);
            info.visibility = !workspace_ && record.data.size() > 4 ? record.data[4] & 3 : 0;
            if (position == 0 || !isBofAt(position)) {
                info.sound = false;
                fault("sheet " + info.name + " is not where the workbook says");
                if (inOrder.empty())
                    inOrder = substreams();
                position = i < inOrder.size() ? inOrder[i] : stream_.size();
            }
            // Thousands of sheets at one place would be as many times its cells in memory.
            if (position < stream_.size() && !taken.insert(position).second) {
                info.sound = false;
                fault("sheet " + info.name + " is where another sheet is");
                position = stream_.size();
            }
            info.position = static_cast<std::uint32_t>(position);
            const std::uint8_t kind =
                !workspace_ && record.data.size() > 5 ? record.data[5] : std::uint8_t{0};
            info.worksheet = kind == 0 && isWorksheetAt(position);
            g_.sheets.push_back(std::move(info));
        }
    }

    bool isWorksheetAt(std::size_t at) const
    {
        Record bof;
        RecordReader reader(stream_, at);
        if (!reader.next(bof))
            return true;  // a sheet that was cut off: a table without fields
        const std::uint16_t kind = u16(bof.data, 2);
        return kind != kChart && kind != kMacroSheet && kind != kModule && kind != kGlobals;
    }

    // Names

    void settleNames()
    {
        for (const Record& record : names_)
            if (auto name = g_.form->version == 8 ? name8(record) : name5(record))
                if (g_.hasWorksheet(name->sheet) && name->area.lastRow > name->area.firstRow &&
                    name->area.lastColumn >= name->area.firstColumn)
                    g_.names.push_back(std::move(*name));
    }

    static bool isAreaToken(std::uint8_t token)
    {
        return token == 0x3B || token == 0x5B || token == 0x7B;
    }

    /// The sheet of a pair in EXTERNSHEET, when it is one of this workbook; else -1.
    int sheetOfPair(std::size_t pair) const
    {
        if (externSheets_.empty())
            return -1;
        const Bytes data = externSheets_.front();
        const std::size_t at = 2 + 6 * pair;
        if (at + 6 > data.size())
            return -1;
        const std::size_t book = u16(data, at);
        const std::uint16_t first = u16(data, at + 2), last = u16(data, at + 4);
        const bool own = book < supBooks_.size() && u16(supBooks_[book], 2) == 0x0401;
        return own && first == last && first < 0x8000 ? first : -1;
    }

    std::optional<NameInfo> name8(const Record& record) const
    {
        const Bytes data = record.data;
        if (data.size() < 15 || (u16(data, 0) & kNotAnArea) != 0 || u16(data, 8) != 0)
            return std::nullopt;
        const bool wide = data[14] & 1;
        const std::size_t length = data[3];
        const std::size_t token = 15 + (wide ? 2 * length : length);
        if (u16(data, 4) != 11 || token + 11 > data.size() || !isAreaToken(data[token]))
            return std::nullopt;
        NameInfo name;
        std::string scratch;
        const Bytes characters = data.subspan(15, token - 15);
        if (wide) {
            name.name = utf16leToUtf8(characters, scratch);
        } else {
            for (const std::uint8_t c : characters) {
                const std::uint8_t unit[2] = {c, 0};
                name.name += utf16leToUtf8(unit, scratch);
            }
        }
        name.sheet = sheetOfPair(u16(data, token + 1));
        name.area = {u16(data, token + 3), u16(data, token + 5),
                     static_cast<std::uint16_t>(u16(data, token + 7) & 0xFF),
                     static_cast<std::uint16_t>(u16(data, token + 9) & 0xFF)};
        name.lastRowAt = record.at + 4 + token + 5;
        return name;
    }

    std::optional<NameInfo> name5(const Record& record) const
    {
        const Bytes data = record.data;
        if (data.size() < 15 || (u16(data, 0) & kNotAnArea) != 0 || u16(data, 8) != 0)
            return std::nullopt;
        const std::size_t token = 14 + std::size_t{data[3]};
        if (u16(data, 4) != 21 || token + 21 > data.size() || !isAreaToken(data[token]))
            return std::nullopt;
        const std::uint16_t first = u16(data, token + 11), last = u16(data, token + 13);
        if (first != last || first == 0xFFFF || u16(data, token + 1) < 0x8000)
            return std::nullopt;
        NameInfo name;
        std::string scratch;
        const Bytes characters = data.subspan(14, token - 14);
        name.name = g_.page->decode(
            {reinterpret_cast<const char*>(characters.data()), characters.size()}, scratch);
        name.sheet = first;
        name.area = {u16(data, token + 15) & 0x3FFFu, u16(data, token + 17) & 0x3FFFu,
                     data[token + 19], data[token + 20]};
        name.lastRowAt = record.at + 4 + token + 17;
        return name;
    }

    Bytes stream_;
    std::string streamName_, baseName_;
    const CodePage* given_;
    bool workspace_ = false;
    Globals g_;
    std::vector<Record> formatRecords_, boundSheets_, names_;
    std::vector<Bytes> supBooks_, externSheets_;
};

}  // namespace

Globals readGlobals(Bytes stream, std::string_view streamName, std::string_view baseName,
                    const CodePage* page)
{
    return GlobalsReader(stream, streamName, baseName, page).read();
}

}  // namespace velnor::excel
