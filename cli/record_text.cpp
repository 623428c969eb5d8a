#include "cli/record_text.h"

#include <cmath>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "access/value_text.h"
#include "cli/output.h"

namespace velnor::cli {
namespace {

constexpr std::size_t kLongestHex = 64;

bool isSpecial(char c)
{
    return c == '"' || c == ',' || c == '\n' || c == '\r';
}

void appendBytes(std::string& out, std::span<const std::uint8_t> bytes)
{
    if (bytes.size() > kLongestHex) {
        out += "[binary ";
        appendInteger(out, static_cast<std::int64_t>(bytes.size()));
        out += " bytes]";
        return;
    }
    appendHex(out, bytes);
}

}  // namespace

bool needsQuotes(std::string_view text)
{
    std::size_t i = 0;
#ifdef __SSE2__
    const __m128i quote = _mm_set1_epi8('"'), comma = _mm_set1_epi8(',');
    const __m128i feed = _mm_set1_epi8('\n'), carriage = _mm_set1_epi8('\r');
    for (; i + 16 <= text.size(); i += 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text.data() + i));
        const __m128i hit = _mm_or_si128(
            _mm_or_si128(_mm_cmpeq_epi8(bytes, quote), _mm_cmpeq_epi8(bytes, comma)),
            _mm_or_si128(_mm_cmpeq_epi8(bytes, feed), _mm_cmpeq_epi8(bytes, carriage)));
        if (_mm_movemask_epi8(hit) != 0)
            return true;
    }
#endif
    for (; i < text.size(); ++i)
        if (isSpecial(text[i]))
            return true;
    return text.empty();
}

void appendCsvText(std::string& out, std::string_view text)
{
    if (!needsQuotes(text)) {
        out += text;
        return;
    }
    out += '"';
    for (const char c : text) {
        if (c == '"')
            out += '"';
        out += c;
    }
    out += '"';
}

void appendCsv(std::string& out, ValueView v)
{
    switch (v.kind()) {
    case ValueKind::Date:
        return appendIsoDate(out, v.asDate());
    case ValueKind::Text:
        return appendCsvText(out, v.asText());
    case ValueKind::Bytes:
        return appendBytes(out, v.asBytes());
    default:
        return appendText(out, v);
    }
}

void appendJson(std::string& out, ValueView v)
{
    switch (v.kind()) {
    case ValueKind::Null:
        out += "null";
        return;
    case ValueKind::Boolean:
        out += v.asBoolean() ? "true" : "false";
        return;
    case ValueKind::Real:
        if (!std::isfinite(v.asReal())) {
            out += "null";
            return;
        }
        break;
    case ValueKind::Text:
        return appendJsonString(out, v.asText());
    case ValueKind::Date:
    case ValueKind::Bytes:
        out += '"';
        appendCsv(out, v);
        out += '"';
        return;
    default:
        break;
    }
    appendCsv(out, v);
}

}  // namespace velnor::cli
