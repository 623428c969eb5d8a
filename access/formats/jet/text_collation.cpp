#include "access/formats/jet/text_collation.h"

#include <algorithm>
#include <array>
#include <optional>

#include "access/formats/jet/collation_weights.h"
#include "access/formats/jet/utf16_units.h"

namespace velnor::jet {
namespace {

constexpr std::size_t kKeyCharacters = 255;
constexpr std::uint8_t kPlainSecondary = 2;
constexpr char16_t kShadda = 0x0651;  // doubles the weight in front of it, in a way not measured

/// ASCII letters that a tailored order moves or joins with their neighbours. Everything else in
/// ASCII stands as in General.
struct Tailored {
    std::uint16_t language;  // low ten bits of the LCID
    std::string_view unsafe;
};

constexpr Tailored kTailored[] = {
    {0x04, ""},           // Chinese: see `understood` for which
    {0x05, "ch"},         // Czech: ch
    {0x06, "avw"},        // Danish: aa
    {0x0A, "chl"},        // Spanish: ch, ll
    {0x0B, "vw"},         // Finnish
    {0x0C, ""},           // French: accents count from the end
    {0x0E, "cdglnstyz"},  // Hungarian: cs, dz, gy, ly, ny, sz, ty, zs
    {0x0F, ""},           // Icelandic
    {0x11, ""},           // Japanese
    {0x14, "avw"},        // Norwegian: aa
    {0x15, ""},           // Polish
    {0x18, ""},           // Romanian
    {0x1A, "ljn"},        // Croatian: lj, nj
    {0x1B, "ch"},         // Slovak: ch
    {0x1D, "vw"},         // Swedish
    {0x1E, ""},           // Thai
    {0x1F, "i"},          // Turkish: dotted and dotless i
    {0x22, ""},           // Ukrainian
    {0x24, "ljn"},        // Slovenian
    {0x25, "vwz"},        // Estonian: z after s
    {0x26, "iy"},         // Latvian: y by i
    {0x27, "iy"},         // Lithuanian: y by i
    {0x2F, ""},           // Macedonian
};

/// Languages whose keys are those of General: Arabic, Bulgarian, German, Greek, English, Hebrew,
/// Italian, Dutch, Portuguese, Russian.
constexpr std::uint16_t kGeneralLanguages[] = {0x01, 0x02, 0x07, 0x08, 0x09,
                                               0x0D, 0x10, 0x13, 0x16, 0x19};

std::uint16_t languageOf(SortOrder order)
{
    return order.lcid & 0x3FF;
}

bool understood(SortOrder order)
{
    // Chinese has an order a place; only that of the People's Republic leaves ASCII alone for sure.
    return languageOf(order) != 0x04 || order.lcid == 2052;
}

const Tailored* tailoredOrder(SortOrder order)
{
    const auto* at = std::ranges::find(kTailored, languageOf(order), &Tailored::language);
    return at != std::end(kTailored) && understood(order) ? at : nullptr;
}

std::string_view withoutTrailingBlanks(std::string_view text)
{
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

/// Every character is ASCII and none of the letters named.
bool safeText(std::string_view utf8, std::string_view unsafe)
{
    return std::ranges::all_of(utf8, [&](char c) {
        const char lower = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
        return static_cast<unsigned char>(c) < 0x80 && unsafe.find(lower) == std::string_view::npos;
    });
}

void complement(KeyBytes& key, std::size_t from)
{
    for (std::size_t i = from; i < key.size(); ++i)
        key[i] = static_cast<std::uint8_t>(~key[i]);
}

/// The primary bytes of an ASCII character that adds nothing else to a Jet 4 key; none of others.
struct PlainWeight {
    std::uint8_t bytes = 0;
    std::array<std::uint8_t, 2> primary{};
};

std::array<PlainWeight, 128> plainWeights()
{
    std::array<PlainWeight, 128> plain;
    for (std::size_t c = 0; c < plain.size(); ++c) {
        const UnitWeight weight = unitWeight(static_cast<char16_t>(c));
        const bool accents = std::ranges::any_of(
            weight.secondary, [](std::uint8_t value) { return value > kPlainSecondary; });
        if (weight.kind != UnitWeight::Kind::Weight || accents || weight.primaryBytes > 2)
            continue;
        plain[c] = {weight.primaryBytes, {weight.primary[0], weight.primary[1]}};
    }
    return plain;
}

/// The whole key of a text of such characters, as most are. False, and nothing, for another.
bool appendPlain(std::string_view text, KeyBytes& key)
{
    static const std::array<PlainWeight, 128> kPlain = plainWeights();
    const std::size_t from = key.size();
    key.resize(from + 3 + 2 * text.size());
    std::uint8_t* out = key.data() + from;
    *out++ = 0x7F;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        const PlainWeight* weight = byte < kPlain.size() ? &kPlain[byte] : nullptr;
        if (!weight || weight->bytes == 0) {
            key.resize(from);
            return false;
        }
        out[0] = weight->primary[0];
        out[1] = weight->primary[1];
        out += weight->bytes;
    }
    *out++ = 1;
    *out++ = 0;
    key.resize(static_cast<std::size_t>(out - key.data()));
    return true;
}

/// The accents of a Jet 3 key: nibbles, high one first.
class NibbleWriter {
public:
    explicit NibbleWriter(KeyBytes& key) : key_(key) {}
    void put(std::uint8_t nibble)
    {
        if (half_)
            key_.back() |= nibble;
        else
            key_.push_back(static_cast<std::uint8_t>(nibble << 4));
        half_ = !half_;
    }

private:
    KeyBytes& key_;
    bool half_ = false;
};

/// The end of a Jet 3 key: 0, the accents up to the last letter that has one, 0.
void appendAccents(std::string_view accented, KeyBytes& key)
{
    if (accented.empty()) {
        key.push_back(0);
        return;
    }
    NibbleWriter out(key);
    out.put(0);
    for (const char c : accented) {
        const ByteWeight& weight = byteWeight(static_cast<std::uint8_t>(c));
        for (std::size_t i = 0; i < weight.accents; ++i)
            out.put(weight.accent[i]);
    }
    out.put(0);
}

}  // namespace

TextCollation::TextCollation(bool jet3, SortOrder order, const CodePage* codePage)
    : jet3_(jet3), kind_(Kind::Unknown), codePage_(codePage)
{
    if (order.id != 0 || order.version != 0)
        return;
    const bool general = jet3 ? order.lcid == 1033 && codePage && codePage->number() == 1252
                              : std::ranges::find(kGeneralLanguages, languageOf(order)) !=
                                    std::end(kGeneralLanguages);
    if (general) {
        kind_ = Kind::General;
    } else if (jet3) {
        // Other orders of Jet 3 have weights of their own; Arabic, and General in another code
        // page, leave ASCII where it is.
        if (order.lcid == 1033 || order.lcid == 1025)
            kind_ = Kind::Tailored;
    } else if (const Tailored* tailored = tailoredOrder(order)) {
        kind_ = Kind::Tailored;
        unsafe_ = tailored->unsafe;
    }
}

bool TextCollation::append(std::string_view utf8, bool descending, KeyBytes& key)
{
    const std::size_t from = key.size();
    bool sure = kind_ == Kind::General || (kind_ == Kind::Tailored && safeText(utf8, unsafe_));
    if (!(jet3_ ? appendJet3(utf8, key) : appendJet4(utf8, key)))
        sure = false;
    if (descending) {
        complement(key, from);
        if (!jet3_)
            key.push_back(0);
    }
    return sure;
}

bool TextCollation::appendJet3(std::string_view utf8, KeyBytes& key)
{
    stored_.clear();
    bool sure = true;
    if (codePage_)
        sure = codePage_->encode(utf8, stored_);
    else
        stored_ = utf8;
    const std::string_view text =
        withoutTrailingBlanks(std::string_view(stored_).substr(0, kKeyCharacters));

    key.push_back(0x7F);
    std::size_t accented = 0;  // bytes up to the last one with an accent
    for (std::size_t i = 0; i < text.size(); ++i) {
        const ByteWeight& weight = byteWeight(static_cast<std::uint8_t>(text[i]));
        key.insert(key.end(), weight.primary.begin(), weight.primary.begin() + weight.primaryBytes);
        if (weight.accents == 1 && weight.accent[0] != kPlainSecondary)
            accented = i + 1;
    }
    appendAccents(text.substr(0, accented), key);
    return sure;
}

bool TextCollation::appendJet4(std::string_view utf8, KeyBytes& key)
{
    if (utf8.size() <= kKeyCharacters && appendPlain(withoutTrailingBlanks(utf8), key))
        return true;
    secondaries_.clear();
    records_.clear();
    bool sure = true;
    key.push_back(0x7F);
    std::size_t left = kKeyCharacters;
    std::size_t blanks = 0;  // held back: those at the end don't count
    forEachUnit(utf8, [&](char16_t unit) {
        if (unit == u' ') {
            ++blanks;
            return --left > 0;
        }
        for (; blanks > 0; --blanks)
            appendUnit(u' ', key);
        sure &= appendUnit(unit, key);
        return --left > 0;
    });
    key.push_back(1);
    while (!secondaries_.empty() && secondaries_.back() <= kPlainSecondary)
        secondaries_.pop_back();
    key.insert(key.end(), secondaries_.begin(), secondaries_.end());
    if (!records_.empty()) {
        key.insert(key.end(), 3, 1);
        key.insert(key.end(), records_.begin(), records_.end());
    }
    key.push_back(0);
    return sure;
}

bool TextCollation::appendUnit(char16_t unit, KeyBytes& key)
{
    const UnitWeight weight = unitWeight(unit);
    switch (weight.kind) {
    case UnitWeight::Kind::None:
        return true;
    case UnitWeight::Kind::Inline: {
        const auto place = static_cast<unsigned>(0x8000 | (7 + 4 * secondaries_.size()));
        const std::uint8_t record[] = {static_cast<std::uint8_t>(place >> 8),
                                       static_cast<std::uint8_t>(place), 6, weight.secondary[0]};
        records_.insert(records_.end(), std::begin(record), std::end(record));
        return true;
    }
    case UnitWeight::Kind::Mark: {
        if (secondaries_.empty() || unit == kShadda ||
            secondaries_.back() + weight.secondary[0] > 0xFF)
            return false;
        secondaries_.back() = static_cast<std::uint8_t>(secondaries_.back() + weight.secondary[0]);
        return true;
    }
    default:
        key.insert(key.end(), weight.primary.begin(), weight.primary.begin() + weight.primaryBytes);
        secondaries_.insert(secondaries_.end(), weight.secondary.begin(),
                            weight.secondary.begin() + weight.weights);
        return weight.kind == UnitWeight::Kind::Weight;  // kana have a part of their own: not kept
    }
}

}  // namespace velnor::jet
