#include "access/formats/text/record_splitter.h"

#include <bit>
#include <cstring>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "access/formats/text/text_form.h"

namespace velnor::text {
namespace {

bool endsLine(char c)
{
    return c == '\n' || c == '\r';
}

}  // namespace

std::string_view unquoted(const Slice& slice, char quote, std::string& scratch)
{
    if (!slice.quoted)
        return slice.raw;
    const std::string_view inside = slice.raw.substr(1);
    if (inside.find(quote) == inside.size() - 1)
        return inside.substr(0, inside.size() - 1);
    scratch.clear();
    bool within = true;
    for (std::size_t i = 0; i < inside.size(); ++i) {
        if (inside[i] != quote || !within) {
            scratch += inside[i];
        } else if (i + 1 < inside.size() && inside[i + 1] == quote) {
            scratch += inside[i++];
        } else {
            within = false;
        }
    }
    return scratch;
}

/// The delimiter or line end that closes a field, or `end`.
const char* RecordSplitter::endOfField(const char* p, const char* end) const
{
    const char delimiter = delimiter_ ? delimiter_ : '\n';
#ifdef __SSE2__
    const __m128i stop = _mm_set1_epi8(delimiter);
    const __m128i feed = _mm_set1_epi8('\n'), carriage = _mm_set1_epi8('\r');
    for (; end - p >= 16; p += 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        const __m128i hit = _mm_or_si128(
            _mm_cmpeq_epi8(bytes, stop),
            _mm_or_si128(_mm_cmpeq_epi8(bytes, feed), _mm_cmpeq_epi8(bytes, carriage)));
        if (const int mask = _mm_movemask_epi8(hit))
            return p + std::countr_zero(static_cast<unsigned>(mask));
    }
#endif
    while (p != end && *p != delimiter && !endsLine(*p))
        ++p;
    return p;
}

/// The place behind the closing quote; `from` stands on the opening one. Null when there is none.
const char* RecordSplitter::behindQuotes(const char* from, const char* end, bool final)
{
    const char* p = from + 1;
    for (;;) {
        p = p == end ? nullptr
                     : static_cast<const char*>(
                           std::memchr(p, quote_, static_cast<std::size_t>(end - p)));
        if (!p || (p + 1 == end && !final))
            return nullptr;
        if (p + 1 == end || p[1] != quote_)
            return p + 1;
        p += 2;
    }
}

const char* RecordSplitter::split(const char* p, const char* end, bool final)
{
    fields_.clear();
    count_ = 0;
    openQuote_ = false;
    for (;;) {
        const char* rest = p;
        bool quoted = false;
        if (quote_ && p != end && *p == quote_) {
            const char* closed = behindQuotes(p, end, final);
            if (!closed && !final)
                return nullptr;
            quoted = closed != nullptr;
            openQuote_ = openQuote_ || !quoted;
            rest = quoted ? closed : p;
        }
        const char* stop = endOfField(rest, end);
        if (stop == end && !final)
            return nullptr;
        if (++count_ <= kMostColumns)
            fields_.push_back({{p, static_cast<std::size_t>(stop - p)}, quoted});
        if (stop == end)
            return end;
        p = stop + 1;
        if (!endsLine(*stop))
            continue;
        if (*stop == '\n')
            return p;
        if (p == end)
            return final ? end : nullptr;
        return *p == '\n' ? p + 1 : p;
    }
}

}  // namespace velnor::text
