#include "access/storage/row_store.h"

#include <algorithm>
#include <cstring>

#include "platform/temporary_file.h"

namespace velnor {
namespace {

constexpr std::size_t kStretchBytes = 256u << 10;

/// A value in a record: its text or bytes stand behind the cells of the stretch's records.
struct Cell {
    std::uint64_t word;  // number, or offset in the stretch
    std::uint32_t more;  // length, or the high part of a decimal
    ValueKind kind;
    std::uint8_t scale;
    bool negative;
};

std::string_view bytesOf(ValueView v)
{
    if (v.kind() == ValueKind::Text)
        return v.asText();
    if (v.kind() != ValueKind::Bytes)
        return {};
    return {reinterpret_cast<const char*>(v.asBytes().data()), v.asBytes().size()};
}

Cell cellOf(ValueView v, std::size_t offset)
{
    Cell cell{0, 0, v.kind(), 0, false};
    switch (v.kind()) {
    case ValueKind::Text:
    case ValueKind::Bytes:
        cell.word = offset;
        cell.more = static_cast<std::uint32_t>(bytesOf(v).size());
        break;
    case ValueKind::Decimal:
        cell.word = v.decimalLow();
        cell.more = v.decimalHigh();
        cell.scale = v.decimalScale();
        cell.negative = v.decimalNegative();
        break;
    case ValueKind::Boolean:
        cell.word = v.asBoolean();
        break;
    case ValueKind::Integer:
    case ValueKind::Currency:
        cell.word = static_cast<std::uint64_t>(v.asInteger());
        break;
    case ValueKind::Real:
    case ValueKind::Date: {
        const double d = v.asReal();
        std::memcpy(&cell.word, &d, sizeof d);
        break;
    }
    case ValueKind::Null:
        break;
    }
    return cell;
}

ValueView valueOf(const Cell& cell, const char* texts)
{
    double d = 0;
    switch (cell.kind) {
    case ValueKind::Text:
        return ValueView::text({texts + cell.word, cell.more});
    case ValueKind::Bytes:
        return ValueView::bytes(
            {reinterpret_cast<const std::uint8_t*>(texts + cell.word), cell.more});
    case ValueKind::Decimal:
        return ValueView::decimal(cell.negative, cell.more, cell.word, cell.scale);
    case ValueKind::Boolean:
        return ValueView::boolean(cell.word != 0);
    case ValueKind::Integer:
        return ValueView::integer(static_cast<std::int64_t>(cell.word));
    case ValueKind::Currency:
        return ValueView::currency(static_cast<std::int64_t>(cell.word));
    case ValueKind::Real:
        std::memcpy(&d, &cell.word, sizeof d);
        return ValueView::real(d);
    case ValueKind::Date:
        std::memcpy(&d, &cell.word, sizeof d);
        return ValueView::date(d);
    case ValueKind::Null:
        break;
    }
    return {};
}

}  // namespace

struct RowStore::Stretch {
    std::int64_t first = 0;
    std::size_t cellCount = 0, textBytes = 0;
    std::vector<Cell> cells;
    std::vector<char> texts;
    std::uint64_t place = 0;  // in the file
    bool written = false, loaded = true;
    std::uint64_t lastUse = 0;

    std::size_t bytes() const { return cellCount * sizeof(Cell) + textBytes; }
};

RowStore::RowStore(std::size_t fields, std::size_t memory) : fields_(fields), memory_(memory) {}
RowStore::~RowStore() = default;

void RowStore::append(std::span<const ValueView> values)
{
    if (stretches_.empty() || stretches_.back()->bytes() >= kStretchBytes) {
        if (!stretches_.empty())
            close(*stretches_.back());
        stretches_.push_back(std::make_unique<Stretch>());
        stretches_.back()->first = size_;
    }
    Stretch& s = *stretches_.back();
    for (const ValueView v : values) {
        const std::string_view bytes = bytesOf(v);
        s.cells.push_back(cellOf(v, s.texts.size()));
        s.texts.insert(s.texts.end(), bytes.begin(), bytes.end());
    }
    s.cellCount = s.cells.size();
    s.textBytes = s.texts.size();
    ++size_;
}

/// The stretch is full: it counts now, and older ones may have to go.
void RowStore::close(Stretch& stretch)
{
    stretch.cells.shrink_to_fit();
    stretch.texts.shrink_to_fit();
    stretch.lastUse = ++uses_;
    kept_ += stretch.bytes();
    dropOldest();
}

void RowStore::dropOldest()
{
    while (kept_ > memory_) {
        Stretch* oldest = nullptr;
        std::size_t loaded = 0;
        for (const auto& s : stretches_) {
            loaded += s->loaded;
            if (s->loaded && s.get() != stretches_.back().get() &&
                (!oldest || s->lastUse < oldest->lastUse))
                oldest = s.get();
        }
        if (!oldest || loaded <= 2)
            return;
        if (!oldest->written) {
            if (!file_)
                file_ = openTemporaryFile();
            const std::size_t cells = oldest->cellCount * sizeof(Cell);
            oldest->place = fileEnd_;
            file_->writeAt(fileEnd_,
                           {reinterpret_cast<const std::uint8_t*>(oldest->cells.data()), cells});
            file_->writeAt(
                fileEnd_ + cells,
                {reinterpret_cast<const std::uint8_t*>(oldest->texts.data()), oldest->textBytes});
            fileEnd_ += oldest->bytes();
            oldest->written = true;
        }
        oldest->cells = {};
        oldest->texts = {};
        oldest->loaded = false;
        kept_ -= oldest->bytes();
        if (last_ == oldest)
            last_ = nullptr;
    }
}

void RowStore::load(Stretch& s)
{
    s.cells.resize(s.cellCount);
    s.texts.resize(s.textBytes);
    const std::size_t cells = s.cellCount * sizeof(Cell);
    const std::size_t read =
        file_->readAt(s.place, {reinterpret_cast<std::uint8_t*>(s.cells.data()), cells}) +
        file_->readAt(s.place + cells,
                      {reinterpret_cast<std::uint8_t*>(s.texts.data()), s.textBytes});
    if (read != s.bytes())
        throw RunError(RunErrorNumber::DeviceIo, "A temporary file cannot be read.");
    s.loaded = true;
    s.lastUse = ++uses_;
    kept_ += s.bytes();
    dropOldest();
}

RowStore::Stretch& RowStore::stretchOf(std::int64_t n)
{
    const auto rows = [&](const Stretch& s) {
        return static_cast<std::int64_t>(s.cellCount / std::max<std::size_t>(fields_, 1));
    };
    if (last_ && n >= last_->first && n - last_->first < rows(*last_))
        return *last_;
    const auto behind =
        std::upper_bound(stretches_.begin(), stretches_.end(), n,
                         [](std::int64_t row, const auto& s) { return row < s->first; });
    Stretch& s = **(behind - 1);
    if (!s.loaded)
        load(s);
    s.lastUse = ++uses_;
    last_ = &s;
    return s;
}

ValueView RowStore::value(std::int64_t n, std::size_t field)
{
    const Stretch& s = stretchOf(n);
    return valueOf(s.cells[static_cast<std::size_t>(n - s.first) * fields_ + field],
                   s.texts.data());
}

}  // namespace velnor
