#include "access/sql/row_road.h"

#include "access/sql/text_order.h"

namespace velnor::sql {
namespace {

std::vector<ValueView> viewsOf(const std::vector<Value>& values)
{
    std::vector<ValueView> views;
    for (const Value& v : values)
        views.push_back(v.view());
    return views;
}

char capital(char c)
{
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

char small(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool below(char a, char b)
{
    return static_cast<unsigned char>(a) < static_cast<unsigned char>(b);
}

}  // namespace

bool ScanRoad::settle(bool there)
{
    for (; there; there = backwards_ ? cursor().previous() : cursor().next()) {
        context().step();
        if (passes())
            return true;
    }
    return false;
}

IndexRoad::IndexRoad(std::shared_ptr<RowCursor> cursor, std::shared_ptr<RowCursor> end,
                     Bounds bounds, Tests tests, RunContext& context, bool backwards)
    : CursorRoad(std::move(cursor), std::move(tests), context), end_(std::move(end)),
      bounds_(std::move(bounds)), backwards_(backwards)
{
}

bool IndexRoad::first()
{
    const auto& begin = backwards_ ? bounds_.high : bounds_.low;
    const auto& end = backwards_ ? bounds_.low : bounds_.high;
    // The first record outside the part is where the walk ends.
    hasEnd_ = !end.empty() &&
              end_->seek(backwards_ ? Comparison::Less : Comparison::Greater, viewsOf(end));
    if (hasEnd_)
        endRow_ = end_->row();
    if (begin.empty())
        return settle(backwards_ ? cursor().last() : cursor().first());
    return settle(cursor().seek(backwards_ ? Comparison::LessEqual : Comparison::GreaterEqual,
                                viewsOf(begin)));
}

bool IndexRoad::next()
{
    return settle(backwards_ ? cursor().previous() : cursor().next());
}

bool IndexRoad::settle(bool there)
{
    for (; there; there = backwards_ ? cursor().previous() : cursor().next()) {
        if (hasEnd_ && cursor().row() == endRow_)
            return false;
        context().step();
        if (passes())
            return true;
    }
    return false;
}

bool nextSpelling(std::string_view text, std::string_view from, std::string& spelling)
{
    // The longest front of `from` that is a spelling of the text's front.
    std::size_t same = 0;
    while (same < text.size() && same < from.size() && small(text[same]) == small(from[same]))
        ++same;
    // At the first other character the spelling must be above `from`, or an earlier capital become
    // small.
    for (std::size_t at = same + 1; at-- > 0;) {
        if (at == text.size())
            continue;
        const bool ends = at >= from.size();
        for (const char c : {capital(text[at]), small(text[at])}) {
            const bool above = ends ? at == same : below(from[at], c);
            if (!above)
                continue;
            spelling = from.substr(0, at);
            spelling += c;
            for (std::size_t rest = at + 1; rest < text.size(); ++rest)
                spelling += capital(text[rest]);
            return true;
        }
    }
    return false;
}

SpellingRoad::SpellingRoad(std::shared_ptr<RowCursor> cursor, int field, std::string text,
                           Tests tests, RunContext& context)
    : CursorRoad(std::move(cursor), std::move(tests), context), field_(field),
      text_(std::move(text))
{
}

bool SpellingRoad::first()
{
    wanted_.clear();
    for (const char c : text_)
        wanted_ += capital(c);
    const ValueView key = ValueView::text(wanted_);
    return settle(cursor().seek(Comparison::GreaterEqual, {&key, 1}));
}

bool SpellingRoad::next()
{
    return settle(cursor().next());
}

bool SpellingRoad::settle(bool there)
{
    while (there) {
        context().step();
        const ValueView here = cursor().field(field_);
        const std::string_view found = here.isNull() ? "" : here.asText();
        if (equalText(found, text_)) {
            if (passes())
                return true;
            there = cursor().next();
            continue;
        }
        std::string spelling;
        if (!nextSpelling(text_, found, spelling))
            return false;
        if (spelling <= wanted_) {  // the index is not in the order it should be: record by record
            there = cursor().next();
            continue;
        }
        wanted_ = std::move(spelling);
        const ValueView key = ValueView::text(wanted_);
        there = cursor().seek(Comparison::GreaterEqual, {&key, 1});
    }
    return false;
}

}  // namespace velnor::sql
