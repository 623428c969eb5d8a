#include "access/formats/jet/table_def.h"

#include <algorithm>
#include <numeric>

#include "access/storage/byte_reader.h"

namespace velnor::jet {
namespace {

constexpr std::uint32_t kMaxChain = 512;  // pages; 255 columns and 32 indexes need far fewer
constexpr std::uint16_t kUnusedColumn = 0xFFFF;

[[noreturn]] void damaged(const std::string& what)
{
    throw EngineError(EngineErrorNumber::UnexpectedFormat,
                      "A table definition is damaged: " + what);
}

/// Walks the logical string from block to block.
class Parser {
public:
    Parser(std::span<const std::uint8_t> bytes, const NameCoding& names)
        : in_(bytes, "table definition"), names_(names), f_(names.format)
    {
    }

    TableDef run()
    {
        header();
        statistics();
        columns();
        realIndexes();
        logicalIndexes();
        longValues();
        return std::move(table_);
    }

private:
    void header();
    void statistics();
    void columns();
    Column column(std::size_t at) const;
    void realIndexes();
    void logicalIndexes();
    void longValues();
    std::string name();

    ByteReader in_;
    const NameCoding& names_;
    const JetFormat& f_;
    TableDef table_;
    std::size_t at_ = 0;
    std::uint32_t columns_ = 0, logical_ = 0, real_ = 0;
};

void Parser::header()
{
    const TableDefLayout& o = f_.table;
    table_.recordCount = in_.u32(o.recordCount);
    table_.lastAutonumber = in_.i32(o.lastAutonumber);
    table_.kind = in_.u8(o.kind);
    table_.maxColumns = in_.u16(o.maxColumns);
    table_.variableColumns = in_.u16(o.variableColumns);
    columns_ = in_.u16(o.columns);
    logical_ = in_.u32(o.logicalIndexes);
    real_ = in_.u32(o.realIndexes);
    table_.ownedMap = RowPointer::fromWord(in_.u32(o.ownedMap));
    table_.spaceMap = RowPointer::fromWord(in_.u32(o.spaceMap));
    if (columns_ == 0 || columns_ > kMaxColumns)
        damaged("it has " + std::to_string(columns_) + " columns");
    if (logical_ > 1000 || real_ > 1000)
        damaged("it has " + std::to_string(std::max(logical_, real_)) + " indexes");
    const auto raw = in_.bytes(0, o.statistics);
    std::copy(raw.begin(), raw.end(), table_.raw.begin());
    at_ = o.statistics;
}

void Parser::statistics()
{
    table_.realIndexes.resize(real_);
    for (RealIndex& index : table_.realIndexes) {
        index.entries = in_.u32(at_);
        index.distinct = in_.u32(at_ + 4);
        at_ += f_.table.statisticBytes;
    }
}

Column Parser::column(std::size_t at) const
{
    const ColumnLayout& o = f_.column;
    Column c;
    c.type = in_.u8(at + o.type);
    c.id = in_.u16(at + o.id);
    c.variableSlot = in_.u16(at + o.variableSlot);
    c.ordinal = in_.u16(at + o.ordinal);
    c.flags = in_.u8(at + o.flags);
    c.fixedOffset = in_.u16(at + o.fixedOffset);
    c.length = in_.u16(at + o.length);
    if (o.moreFlags >= 0)
        c.moreFlags = in_.u8(at + o.moreFlags);
    if (o.columnWord >= 0)
        c.columnWord = in_.u16(at + o.columnWord);
    if (c.type == column_type::kDecimal) {
        c.precision = in_.u8(at + o.precision);
        c.scale = in_.u8(at + o.scale);
    } else {
        c.order.lcid = in_.u16(at + o.lcid);
        c.order.id = o.sortId >= 0 ? in_.u8(at + o.sortId) : 0;
        c.order.version = o.sortVersion >= 0 ? in_.u8(at + o.sortVersion) : 0;
        c.codePage = o.codePage >= 0 ? in_.u16(at + o.codePage) : 0;
    }
    const auto raw = in_.bytes(at, o.bytes);
    std::copy(raw.begin(), raw.end(), c.raw.begin());
    return c;
}

void Parser::columns()
{
    table_.columns.reserve(columns_);
    for (std::uint32_t i = 0; i < columns_; ++i, at_ += f_.column.bytes)
        table_.columns.push_back(column(at_));
    for (Column& c : table_.columns)
        c.name = name();
}

void Parser::realIndexes()
{
    const RealIndexLayout& o = f_.realIndex;
    for (RealIndex& index : table_.realIndexes) {
        for (int k = 0; k < kMaxIndexColumns; ++k) {
            const std::uint16_t id = in_.u16(at_ + o.columns + 3 * k);
            if (id != kUnusedColumn)
                index.columns.push_back({id, in_.u8(at_ + o.columns + 3 * k + 2) == 0});
        }
        index.map = RowPointer::fromWord(in_.u32(at_ + o.map));
        index.root = in_.u32(at_ + o.root);
        index.flags = in_.u8(at_ + o.flags);
        const auto raw = in_.bytes(at_, o.bytes);
        std::copy(raw.begin(), raw.end(), index.raw.begin());
        at_ += o.bytes;
    }
}

void Parser::logicalIndexes()
{
    const LogicalIndexLayout& o = f_.logicalIndex;
    table_.logicalIndexes.resize(logical_);
    for (LogicalIndex& index : table_.logicalIndexes) {
        index.number = in_.u32(at_ + o.number);
        index.realIndex = in_.u32(at_ + o.realIndex);
        index.relation = static_cast<RelationKind>(in_.u8(at_ + o.relationKind));
        index.otherIndex = in_.i32(at_ + o.otherIndex);
        index.otherTable = in_.u32(at_ + o.otherTable);
        index.updateRule = in_.u8(at_ + o.updateRule);
        index.deleteRule = in_.u8(at_ + o.deleteRule);
        index.kind = static_cast<LogicalKind>(in_.u8(at_ + o.kind));
        const auto raw = in_.bytes(at_, o.bytes);
        std::copy(raw.begin(), raw.end(), index.raw.begin());
        at_ += o.bytes;
    }
    for (LogicalIndex& index : table_.logicalIndexes)
        index.name = name();
}

void Parser::longValues()
{
    // The list may be missing in a definition whose chain was cut: memos are then unreadable only.
    while (at_ + 10 <= in_.size() && in_.u16(at_) != kUnusedColumn &&
           table_.longValues.size() < kMaxColumns) {
        table_.longValues.push_back({in_.u16(at_), RowPointer::fromWord(in_.u32(at_ + 2)),
                                     RowPointer::fromWord(in_.u32(at_ + 6))});
        at_ += 10;
    }
}

std::string Parser::name()
{
    const std::size_t counter = f_.wideText ? 2 : 1;
    const std::size_t length = f_.wideText ? in_.u16(at_) : in_.u8(at_);
    const auto bytes = in_.bytes(at_ + counter, length);
    at_ += counter + length;
    return names_.decode(bytes);
}

/// Appends blocks and numbers to the logical string.
class Builder {
public:
    Builder(const TableDef& table, const NameCoding& names)
        : table_(table), names_(names), f_(names.format)
    {
    }

    std::string run()
    {
        header();
        for (const RealIndex& index : table_.realIndexes)
            statistic(index);
        for (const Column& c : table_.columns)
            column(c);
        for (const Column& c : table_.columns)
            names_.append(out_, c.name);
        for (const RealIndex& index : table_.realIndexes)
            realIndex(index);
        for (const LogicalIndex& index : table_.logicalIndexes)
            logicalIndex(index);
        for (const LogicalIndex& index : table_.logicalIndexes)
            names_.append(out_, index.name);
        for (const LongValueMaps& maps : table_.longValues)
            longValue(maps);
        out_.append(2, '\xFF');
        finish();
        return std::move(out_);
    }

private:
    template <class Raw> std::uint8_t* block(const Raw& raw, int bytes)
    {
        const std::size_t at = out_.size();
        out_.append(reinterpret_cast<const char*>(raw.data()), bytes);
        return reinterpret_cast<std::uint8_t*>(out_.data()) + at;
    }
    void header();
    void statistic(const RealIndex& index);
    void column(const Column& c);
    void realIndex(const RealIndex& index);
    void logicalIndex(const LogicalIndex& index);
    void longValue(const LongValueMaps& maps);
    void finish();

    const TableDef& table_;
    const NameCoding& names_;
    const JetFormat& f_;
    std::string out_;
};

void Builder::header()
{
    const TableDefLayout& o = f_.table;
    std::uint8_t* p = block(table_.raw, o.statistics);
    p[0] = page_type::kTableDef;
    p[1] = 1;
    if (o.magic >= 0)
        storeLE(p + o.magic, kTableMagic);
    storeLE(p + o.recordCount, table_.recordCount);
    storeLE(p + o.lastAutonumber, table_.lastAutonumber);
    if (o.increment >= 0 && loadLE<std::uint32_t>(p + o.increment) == 0)
        storeLE(p + o.increment, std::uint32_t{1});
    p[o.kind] = table_.kind;
    storeLE(p + o.maxColumns, table_.maxColumns);
    storeLE(p + o.variableColumns, table_.variableColumns);
    storeLE(p + o.columns, static_cast<std::uint16_t>(table_.columns.size()));
    storeLE(p + o.logicalIndexes, static_cast<std::uint32_t>(table_.logicalIndexes.size()));
    storeLE(p + o.realIndexes, static_cast<std::uint32_t>(table_.realIndexes.size()));
    storeLE(p + o.ownedMap, table_.ownedMap.word());
    storeLE(p + o.spaceMap, table_.spaceMap.word());
}

void Builder::statistic(const RealIndex& index)
{
    const std::array<std::uint8_t, 12> zeros{};
    std::uint8_t* p = block(zeros, f_.table.statisticBytes);
    storeLE(p, index.entries);
    storeLE(p + 4, index.distinct);
}

void Builder::column(const Column& c)
{
    const ColumnLayout& o = f_.column;
    std::uint8_t* p = block(c.raw, o.bytes);
    p[o.type] = c.type;
    if (o.magic >= 0)
        storeLE(p + o.magic, kTableMagic);
    storeLE(p + o.id, c.id);
    storeLE(p + o.variableSlot, c.variableSlot);
    storeLE(p + o.ordinal, c.ordinal);
    if (o.columnWord >= 0)
        storeLE(p + o.columnWord, c.columnWord);
    if (c.type == column_type::kDecimal) {
        p[o.precision] = c.precision;
        p[o.scale] = c.scale;
    } else {
        storeLE(p + o.lcid, c.order.lcid);
        if (o.sortId >= 0)
            p[o.sortId] = c.order.id;
        if (o.sortVersion >= 0)
            p[o.sortVersion] = c.order.version;
        if (o.codePage >= 0)
            storeLE(p + o.codePage, c.codePage);
    }
    p[o.flags] = c.flags;
    if (o.moreFlags >= 0)
        p[o.moreFlags] = c.moreFlags;
    storeLE(p + o.fixedOffset, c.fixedOffset);
    storeLE(p + o.length, c.length);
}

void Builder::realIndex(const RealIndex& index)
{
    const RealIndexLayout& o = f_.realIndex;
    std::uint8_t* p = block(index.raw, o.bytes);
    if (o.magic >= 0)
        storeLE(p + o.magic, kIndexMagic);
    for (int k = 0; k < kMaxIndexColumns; ++k) {
        const bool used = k < static_cast<int>(index.columns.size());
        storeLE(p + o.columns + 3 * k, used ? index.columns[k].id : kUnusedColumn);
        p[o.columns + 3 * k + 2] = used && !index.columns[k].descending;
    }
    storeLE(p + o.map, index.map.word());
    storeLE(p + o.root, index.root);
    p[o.flags] = index.flags;
}

void Builder::logicalIndex(const LogicalIndex& index)
{
    const LogicalIndexLayout& o = f_.logicalIndex;
    std::uint8_t* p = block(index.raw, o.bytes);
    if (o.magic >= 0)
        storeLE(p + o.magic, kTableMagic);
    storeLE(p + o.number, index.number);
    storeLE(p + o.realIndex, index.realIndex);
    p[o.relationKind] = static_cast<std::uint8_t>(index.relation);
    storeLE(p + o.otherIndex, index.otherIndex);
    storeLE(p + o.otherTable, index.otherTable);
    p[o.updateRule] = index.updateRule;
    p[o.deleteRule] = index.deleteRule;
    p[o.kind] = static_cast<std::uint8_t>(index.kind);
}

void Builder::longValue(const LongValueMaps& maps)
{
    const std::array<std::uint8_t, 10> zeros{};
    std::uint8_t* p = block(zeros, 10);
    storeLE(p, maps.column);
    storeLE(p + 2, maps.owned.word());
    storeLE(p + 6, maps.space.word());
}

void Builder::finish()
{
    const TableDefLayout& o = f_.table;
    auto* p = reinterpret_cast<std::uint8_t*>(out_.data());
    const auto length = static_cast<std::uint32_t>(out_.size());
    storeLE(p + o.length, length);
    if (!f_.wideText) {
        p[o.pageFree] = 'V';
        p[o.pageFree + 1] = 'C';
    } else {
        const std::uint32_t used = length + o.chainHeader;
        storeLE(p + o.pageFree,
                static_cast<std::uint16_t>(used < f_.pageSize ? f_.pageSize - used : 0));
    }
}

}  // namespace

const Column* TableDef::columnById(std::uint16_t id) const
{
    const auto found =
        std::find_if(columns.begin(), columns.end(), [id](const Column& c) { return c.id == id; });
    return found == columns.end() ? nullptr : &*found;
}

const LongValueMaps* TableDef::mapsOf(std::uint16_t columnId) const
{
    const auto found = std::find_if(longValues.begin(), longValues.end(),
                                    [columnId](const auto& m) { return m.column == columnId; });
    return found == longValues.end() ? nullptr : &*found;
}

std::vector<int> TableDef::fieldOrder() const
{
    std::vector<int> order(columns.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(),
                     [this](int a, int b) { return columns[a].ordinal < columns[b].ordinal; });
    return order;
}

std::string NameCoding::decode(std::span<const std::uint8_t> bytes) const
{
    std::string scratch;
    if (format.wideText)
        return std::string(utf16leToUtf8(bytes, scratch));
    return std::string(
        codePage.decode({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, scratch));
}

void NameCoding::append(std::string& out, std::string_view name) const
{
    std::string bytes;
    if (format.wideText) {
        utf8ToUtf16le(name, bytes);
        out.push_back(static_cast<char>(bytes.size() & 0xFF));
        out.push_back(static_cast<char>(bytes.size() >> 8));
    } else {
        if (!codePage.encode(name, bytes))
            throw EngineError(EngineErrorNumber::InvalidFieldName,
                              "The name \"" + std::string(name) +
                                  "\" has letters that the file's code page cannot hold.");
        out.push_back(static_cast<char>(bytes.size()));
    }
    out += bytes;
}

TableDef parseTableDef(std::span<const std::uint8_t> bytes, const NameCoding& names)
{
    return Parser(bytes, names).run();
}

std::string buildTableDef(const TableDef& table, const NameCoding& names)
{
    return Builder(table, names).run();
}

std::vector<std::uint8_t> readTableChain(PageSpace& space, PageNumber first,
                                         std::vector<PageNumber>& chain)
{
    const JetFormat& f = space.format();
    std::vector<std::uint8_t> bytes;
    chain.clear();
    for (PageNumber number = first; number != 0;) {
        if (chain.size() >= kMaxChain ||
            std::find(chain.begin(), chain.end(), number) != chain.end())
            damaged("its pages form a loop");
        const PageRef page = space.page(number);
        const std::uint8_t* p = page.data();
        if (p[0] != page_type::kTableDef)
            damaged("page " + std::to_string(number) + " is no part of one");
        bytes.insert(bytes.end(), p + (chain.empty() ? 0 : f.table.chainHeader), p + f.pageSize);
        chain.push_back(number);
        number = loadLE<std::uint32_t>(p + f.table.nextPage);
    }
    if (chain.empty())
        damaged("it has no page");
    return bytes;
}

void writeTableChain(PageSpace& space, std::string_view bytes, std::vector<PageNumber>& chain)
{
    const JetFormat& f = space.format();
    const std::size_t later = f.pageSize - f.table.chainHeader;
    // Eight bytes more than the string are kept free in the chain, as in every file known.
    const std::size_t needed = bytes.size() + f.table.chainHeader;
    const std::size_t pages =
        needed <= f.pageSize ? 1 : 1 + (needed - f.pageSize + later - 1) / later;
    while (chain.size() < pages)
        chain.push_back(space.allocate());
    while (chain.size() > pages) {
        space.release(chain.back(), page_type::kFreedTableDef);
        chain.pop_back();
    }
    std::size_t done = 0;
    for (std::size_t i = 0; i < chain.size(); ++i) {
        PageRef page = space.page(chain[i]);
        std::uint8_t* p = page.edit();
        const std::size_t from = i == 0 ? 0 : f.table.chainHeader;
        const std::size_t count = std::min(bytes.size() - done, f.pageSize - from);
        std::copy_n(reinterpret_cast<const std::uint8_t*>(bytes.data()) + done, count, p + from);
        std::fill(p + from + count, p + f.pageSize, std::uint8_t{0});
        done += count;
        if (i > 0) {
            p[0] = page_type::kTableDef;
            p[1] = 1;
            // Jet 3: "VC" again; Jet 4: what is free in this page behind the eight kept bytes.
            const std::size_t used = from + count + f.table.chainHeader;
            const auto room = static_cast<std::uint16_t>(used < f.pageSize ? f.pageSize - used : 0);
            storeLE(p + f.table.pageFree, f.wideText ? room : std::uint16_t{0x4356});
        }
        storeLE(p + f.table.nextPage, i + 1 < chain.size() ? chain[i + 1] : PageNumber{0});
    }
}

}  // namespace velnor::jet
