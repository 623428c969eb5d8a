#include "access/formats/lotus/lmbcs.h"

#include "access/storage/code_page.h"
#include "access/storage/utf8.h"

namespace velnor::lotus {
namespace {

constexpr unsigned kControlLead = 0x0F, kUnicodeLead = 0x14, kZeroLow = 0xF6, kDelete = 0x7F;
constexpr unsigned kControlShift = 0x20;

/// The code page of a group; null for a byte that leads none.
const CodePage* pageOfGroup(unsigned group)
{
    switch (group) {
    case 0x01:
        return CodePage::find(850);
    case 0x02:
        return CodePage::find(869);
    case 0x03:
        return CodePage::find(1255);
    case 0x04:
        return CodePage::find(1256);
    case 0x05:
        return CodePage::find(1251);
    case 0x06:
        return CodePage::find(852);
    case 0x08:
        return CodePage::find(1254);
    case 0x0B:
        return CodePage::find(874);
    case 0x10:
        return CodePage::find(932);
    case 0x11:
        return CodePage::find(949);
    case 0x12:
        return CodePage::find(950);
    case 0x13:
        return CodePage::find(936);
    default:
        return nullptr;
    }
}

void appendCharacter(std::string& out, char32_t c)
{
    char buffer[4];
    out.append(buffer, utf8::put(buffer, c));
}

class Decoder {
public:
    Decoder(std::string_view bytes, std::uint8_t group, std::string& out)
        : bytes_(bytes), own_(pageOfGroup(group)), out_(out)
    {
        if (!own_)
            own_ = pageOfGroup(kPlainGroup);
    }
    void run()
    {
        while (at_ < bytes_.size() && bytes_[at_] != 0)
            character();
    }

private:
    unsigned byte(std::size_t offset) const
    {
        return at_ + offset < bytes_.size() ? static_cast<unsigned char>(bytes_[at_ + offset]) : 0;
    }
    void fromPage(const CodePage& page, std::size_t offset, std::size_t count)
    {
        out_ += page.decode(bytes_.substr(at_ + offset, count), scratch_);
    }

    void character()
    {
        const unsigned lead = byte(0);
        if (lead >= 0x80) {
            fromPage(*own_, 0, 1);
            ++at_;
        } else if (lead >= 0x20 || lead == '\t' || lead == '\n' || lead == '\r') {
            out_ += static_cast<char>(lead);
            ++at_;
        } else if (at_ + 1 >= bytes_.size()) {
            at_ = bytes_.size();  // a lead byte and nothing behind it
        } else {
            led(lead);
        }
    }

    void led(unsigned lead)
    {
        if (lead == kControlLead) {
            if (const unsigned shifted = byte(1); shifted >= kControlShift)
                appendCharacter(out_, shifted == 0x40 ? kDelete : shifted - kControlShift);
            at_ += 2;
        } else if (lead == kUnicodeLead) {
            unit();
        } else if (lead >= 0x10 && lead <= 0x13) {
            fromPage(*pageOfGroup(lead), 1, 2);
            at_ += 3;
        } else if (const CodePage* page = pageOfGroup(lead)) {
            ofGroup(lead, *page);
            at_ += 2;
        } else {
            at_ += lead >= 0x15 && lead <= 0x17 ? 3 : 2;  // forms that nothing defines
        }
    }

    void ofGroup(unsigned lead, const CodePage& page)
    {
        const unsigned code = byte(1);
        if (code >= 0x80)
            fromPage(page, 1, 1);
        else if (lead == kPlainGroup && (code == '\n' || code == '\r'))
            out_ += static_cast<char>(code);
        else
            appendCharacter(out_, utf8::kReplacement);
    }

    unsigned unitAt(std::size_t offset) const
    {
        const unsigned high = byte(offset), low = byte(offset + 1);
        return high == kZeroLow ? low << 8 : high << 8 | low;
    }

    void unit()
    {
        char32_t c = unitAt(1);
        at_ += 3;
        const bool first = c >= 0xD800 && c < 0xDC00;
        const unsigned second = first && byte(0) == kUnicodeLead ? unitAt(1) : 0;
        if (second >= 0xDC00 && second < 0xE000) {
            c = 0x10000 + ((c & 0x3FF) << 10) + (second & 0x3FF);
            at_ += 3;
        } else if (c >= 0xD800 && c < 0xE000) {
            c = utf8::kReplacement;
        }
        if (c != 0)
            appendCharacter(out_, c);
    }

    std::string_view bytes_;
    const CodePage* own_;
    std::string& out_;
    std::size_t at_ = 0;
    std::string scratch_;
};

void appendUnit(std::string& out, unsigned unit)
{
    out += static_cast<char>(kUnicodeLead);
    out += static_cast<char>((unit & 0xFF) == 0 ? kZeroLow : unit >> 8);
    out += static_cast<char>((unit & 0xFF) == 0 ? unit >> 8 : unit & 0xFF);
}

/// A character beyond ASCII: of the file's group, of another one, or as UTF-16.
void appendForeign(std::string& out, std::string_view character, char32_t c, unsigned group)
{
    static constexpr unsigned kOthers[] = {0x01, 0x06, 0x02, 0x05};
    std::string byte;
    if (pageOfGroup(group)->encode(character, byte)) {
        out += byte;
        return;
    }
    for (const unsigned other : kOthers) {
        byte.clear();
        const CodePage* page = pageOfGroup(other);
        if (other != group && page && page->encode(character, byte) &&
            static_cast<unsigned char>(byte[0]) >= 0x80) {
            out += static_cast<char>(other);
            out += byte;
            return;
        }
    }
    if (c >= 0x10000) {
        appendUnit(out, 0xD800 + static_cast<unsigned>((c - 0x10000) >> 10));
        c = 0xDC00 + (c & 0x3FF);
    }
    appendUnit(out, static_cast<unsigned>(c));
}

}  // namespace

std::string_view decodeLmbcs(std::string_view bytes, std::uint8_t group, std::string& scratch)
{
    const std::size_t end = bytes.find('\0');
    const std::string_view plain = bytes.substr(0, end);
    bool ascii = true;
    for (const char c : plain)
        ascii = ascii && c >= 0x20;
    if (ascii)
        return plain;
    scratch.clear();
    Decoder(bytes, group, scratch).run();
    return scratch;
}

void encodeLmbcs(std::string_view text, std::uint8_t group, std::string& out)
{
    const unsigned own = pageOfGroup(group) ? group : kPlainGroup;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t start = at;
        char32_t c = utf8::next(text, at);
        if (c >= 0x20 && c < kDelete) {
            out += static_cast<char>(c);
        } else if (c <= kDelete) {
            out += static_cast<char>(kControlLead);
            out += static_cast<char>(c == kDelete ? 0x40 : c + kControlShift);
        } else if (c == utf8::kInvalid) {
            appendUnit(out, utf8::kReplacement);
        } else {
            appendForeign(out, text.substr(start, at - start), c, own);
        }
    }
}

}  // namespace velnor::lotus
