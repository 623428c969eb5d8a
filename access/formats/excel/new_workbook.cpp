#include "access/formats/excel/new_workbook.h"

#include <string_view>

#include "access/formats/excel/biff_text.h"

namespace velnor::excel {
namespace {

using Data = std::vector<std::uint8_t>;

constexpr std::uint16_t kGlobalsKind = 5, kSheetKind = 0x10;
constexpr int kStyleXfs = 15;
constexpr std::size_t kUserName = 112;  // bytes of WRITEACCESS in version 8
constexpr std::size_t kUserName5 = 32;

class Writer {
public:
    explicit Writer(const BiffForm& form) : eight_(form.version == 8) {}

    void record(std::uint16_t type, const Data& data)
    {
        words({type, static_cast<std::uint16_t>(data.size())}, stream_);
        stream_.insert(stream_.end(), data.begin(), data.end());
    }
    void record(std::uint16_t type, std::initializer_list<std::uint16_t> values)
    {
        Data data;
        words(values, data);
        record(type, data);
    }

    void bof(std::uint16_t kind)
    {
        if (eight_)
            record(rec::kBof, {0x0600, kind, 0x0DBB, 0x07CC, 0x0041, 0, 0x0006, 0});
        else
            record(rec::kBof, {0x0500, kind, 0x096C, 0x07C9});
    }

    void userName()
    {
        Data data;
        if (eight_)
            data = {static_cast<std::uint8_t>(kWriter.size()), 0, 0};
        else
            data = {static_cast<std::uint8_t>(kWriter.size())};
        data.insert(data.end(), kWriter.begin(), kWriter.end());
        data.resize(eight_ ? kUserName : kUserName5, ' ');
        record(rec::kWriteAccess, data);
    }

    void font()
    {
        static constexpr std::string_view kFont = "Arial";
        Data data;
        words({200, 0, 0x7FFF, 400, 0, 0, 0}, data);  // 10 points, automatic colour, not bold
        data.push_back(static_cast<std::uint8_t>(kFont.size()));
        if (eight_)
            data.push_back(0);
        data.insert(data.end(), kFont.begin(), kFont.end());
        record(rec::kFont, data);
    }

    /// Number formats of style `style`; the cell format is the one that follows it.
    void xf(bool style, std::uint16_t format)
    {
        Data data;
        words({0, format, static_cast<std::uint16_t>(style ? 0xFFF5 : 0x0001)}, data);
        if (eight_) {
            data.insert(data.end(), {0x20, 0, 0, style ? std::uint8_t{0xF4} : std::uint8_t{0}});
            data.insert(data.end(), {0, 0, 0, 0, 0, 0, 0, 0, 0xC0, 0x20});
        } else {
            data.insert(data.end(), {0x20, style ? std::uint8_t{0xF4} : std::uint8_t{0}});
            data.insert(data.end(), {0xC0, 0x20, 0, 0, 0, 0, 0, 0});
        }
        record(rec::kXf, data);
    }

    void boundSheet(std::uint32_t position)
    {
        static constexpr std::string_view kName = kFirstSheet;
        Data data(6);
        storeLE(data.data(), position);
        data.push_back(static_cast<std::uint8_t>(kName.size()));
        if (eight_)
            data.push_back(0);
        data.insert(data.end(), kName.begin(), kName.end());
        record(rec::kBoundSheet, data);
    }

    Data& stream() { return stream_; }
    bool eight() const { return eight_; }

private:
    static void words(std::initializer_list<std::uint16_t> values, Data& out)
    {
        for (const std::uint16_t value : values) {
            out.push_back(static_cast<std::uint8_t>(value & 0xFF));
            out.push_back(static_cast<std::uint8_t>(value >> 8));
        }
    }

    bool eight_;
    Data stream_;
};

/// The records in the order that workbooks have them; `position` is that of the first sheet.
Data globalsStream(const BiffForm& form, std::uint32_t position)
{
    Writer w(form);
    w.bof(kGlobalsKind);
    w.record(rec::kInterfaceHdr, w.eight() ? std::initializer_list<std::uint16_t>{0x04B0}
                                           : std::initializer_list<std::uint16_t>{});
    w.record(0x00C1, Data{0, 0});  // MMS: no menu changes
    w.record(0x00E2, Data{});      // INTERFACEEND
    w.userName();
    w.record(rec::kCodePage, {static_cast<std::uint16_t>(w.eight() ? 0x04B0 : 1252)});
    if (w.eight()) {
        w.record(0x0161, {0});  // DSF
        w.record(rec::kTabId, {1});
    }
    for (const std::uint16_t type : {0x0019, 0x0012, 0x0013})  // WINDOWPROTECT PROTECT PASSWORD
        w.record(type, {0});
    if (w.eight())
        for (const std::uint16_t type : {0x01AF, 0x01BC})  // PROT4REV PROT4REVPASS
            w.record(type, {0});
    // WINDOW1: place and size, flags, active sheet, first tab, selected tabs, width of the tabs
    w.record(rec::kWindow1, {0x01E0, 0x005A, 0x3FCF, 0x2A4E, 0x0038, 0, 0, 1, 0x0258});
    for (const std::uint16_t type : {0x0040, 0x008D})  // BACKUP HIDEOBJ
        w.record(type, {0});
    w.record(rec::kDate1904, {0});
    w.record(0x000E, {1});  // PRECISION: full
    if (w.eight())
        w.record(0x01B7, {0});  // REFRESHALL
    w.record(0x00DA, {0});      // BOOKBOOL
    for (int i = 0; i < 4; ++i)
        w.font();
    for (int i = 0; i < kStyleXfs; ++i)
        w.xf(true, 0);
    w.xf(false, 0);
    for (const std::uint16_t format : {43, 41, 44, 42, 9})  // comma, currency and percent styles
        w.xf(true, format);
    w.record(rec::kStyle, Data{0x00, 0x80, 0x00, 0xFF});
    if (w.eight())
        w.record(0x0160, {0});  // USESELFS
    w.boundSheet(position);
    w.record(0x008C, {1, 1});  // COUNTRY
    w.record(rec::kEof, Data{});
    return w.stream();
}

}  // namespace

std::vector<std::uint8_t> newSheetStream(const BiffForm& form, bool selected)
{
    Writer w(form);
    // WINDOW2: grid, headings, zeros and outline shown; perhaps selected and in front
    const auto window = static_cast<std::uint16_t>(selected ? 0x06B6 : 0x00B6);
    w.bof(kSheetKind);
    w.record(0x000D, {1});                                                   // CALCMODE: automatic
    w.record(0x000C, {100});                                                 // CALCCOUNT
    w.record(0x000F, {1});                                                   // REFMODE: A1
    w.record(0x0011, {0});                                                   // ITERATION
    w.record(0x0010, Data{0xFC, 0xA9, 0xF1, 0xD2, 0x4D, 0x62, 0x50, 0x3F});  // DELTA 0.001
    w.record(0x005F, {1});                                                   // SAVERECALC
    w.record(0x0080, {0, 0, 0, 0});                                          // GUTS
    w.record(0x0225, {0, 0x00FF});                                           // DEFAULTROWHEIGHT
    w.record(0x0081, {0x04C1});                                              // WSBOOL
    w.record(rec::kDimensions, Data(w.eight() ? 14 : 10));
    if (w.eight())
        w.record(0x023E, {window, 0, 0, 0x0040, 0, 0, 0, 0, 0});
    else
        w.record(0x023E, {window, 0, 0, 0, 0});
    w.record(rec::kEof, Data{});
    return w.stream();
}

std::vector<std::uint8_t> newWorkbookStream(const BiffForm& form)
{
    const auto position = static_cast<std::uint32_t>(globalsStream(form, 0).size());
    Data stream = globalsStream(form, position);
    const Data sheet = newSheetStream(form, true);
    stream.insert(stream.end(), sheet.begin(), sheet.end());
    if (stream.size() < 4096)
        stream.resize(4096);
    return stream;
}

bool isNewWorkbook(Bytes stream)
{
    for (const int version : {8, 5}) {
        const Data made = newWorkbookStream(biffForm(version));
        if (stream.size() >= made.size() && std::equal(made.begin(), made.end(), stream.begin()))
            return true;
    }
    return false;
}

}  // namespace velnor::excel
