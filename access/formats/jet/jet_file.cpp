#include "access/formats/jet/jet_file.h"

#include <array>
#include <cstring>

#include "access/formats/jet/lock_file.h"
#include "access/storage/byte_reader.h"

namespace velnor::jet {
namespace {

constexpr std::size_t kCacheBytes = 4u << 20;
constexpr std::size_t kMostPendingBytes = 4u << 20;
constexpr std::size_t kNameAt = 4, kVersionAt = 0x14;

[[noreturn]] void unrecognised(const std::string& path, const std::string& why)
{
    throw EngineError(EngineErrorNumber::Unrecognised,
                      "Unrecognized database format \"" + path + "\": " + why);
}

/// Errors of opening in the engine's numbers.
[[noreturn]] void cannotOpen(const RunError& error)
{
    switch (error.code()) {
    case RunErrorNumber::FileNotFound:
        throw EngineError(EngineErrorNumber::FileNotFound, error.what());
    case RunErrorNumber::PathNotFound:
    case RunErrorNumber::BadFileName:
    case RunErrorNumber::DeviceUnavailable:
        throw EngineError(EngineErrorNumber::PathInvalid, error.what());
    default:
        throw EngineError(EngineErrorNumber::CannotOpen, error.what());
    }
}

/// Tells the version by the first bytes; they are the same in every state of a file.
const JetFormat& recognise(FileSystem& files, const std::string& path)
{
    std::array<std::uint8_t, 32> head{};
    std::size_t count = 0;
    try {
        count = files.open(path, OpenMode::Read)->readAt(0, head);
    } catch (const RunError& error) {
        cannotOpen(error);
    }
    const std::string_view name(reinterpret_cast<const char*>(head.data()) + kNameAt, 15);
    if (count < head.size() || head[0] != 0 || head[1] != 1)
        unrecognised(path, "it is no Access database.");
    if (name == "Standard ACE DB" || (name == "Standard Jet DB" && head[kVersionAt] > 1))
        unrecognised(path, "it was made by Access 2007 or later (ACCDB), which cannot be read.");
    if (name != "Standard Jet DB")
        unrecognised(path, "it is no Access database.");
    return head[kVersionAt] == kJet3.header.versionByte ? kJet3 : kJet4;
}

}  // namespace

/// The map of free pages takes its own pages from the end of the file: asking itself for one would
/// never end.
class JetFile::Appender final : public PageSpace {
public:
    explicit Appender(JetFile& file) : file_(file) {}
    const JetFormat& format() const override { return file_.format(); }
    std::uint32_t pageCount() const override { return file_.pageCount(); }
    PageRef page(std::uint32_t number) override { return file_.page(number); }
    std::uint32_t allocate() override { return file_.appendTo(file_.pageCount()); }
    void release(std::uint32_t, std::uint8_t) override {}

private:
    JetFile& file_;
};

JetFile::JetFile(FileSystem& files, const OpenRequest& request, bool undone)
    : files_(files), format_(&recognise(files, request.name))
{
    if (!request.readOnly && openElsewhere(files, request.name))
        throw EngineError(request.exclusive ? EngineErrorNumber::FileInUse
                                            : EngineErrorNumber::ReadOnly,
                          "\"" + request.name +
                              "\" is open in another program, which has locked its LDB file; it "
                              "can only be read now.");
    PageFileOptions options;
    options.pageSize = format_->pageSize;
    options.cacheBytes = kCacheBytes;
    options.undone = undone;
    options.writeRank = [f = format_](std::uint32_t, const std::uint8_t* bytes) {
        return writeRank(*f, bytes);
    };
    try {
        set_ = std::make_unique<FileSet>(files, request.name, options, request.readOnly);
    } catch (const RunError& error) {
        cannotOpen(error);
    }
    file_ = &set_->main();
    if (file_->pageCount() < 3)
        unrecognised(request.name, "it is cut short.");
    committedBytes_ = file_->size();
    readHeader(request);
    appender_ = std::make_unique<Appender>(*this);
    free_ = std::make_unique<UsageMap>(*appender_, header_.globalMap, UsageMap::Kind::Free);
    try {
        released_.emplace(*this, header_.releasedMap);
        if (released_->empty())
            released_.reset();
    } catch (const EngineError&) {
        released_.reset();  // only looked at to spare its pages; a check reports it
    }
}

void JetFile::readHeader(const OpenRequest& request)
{
    const std::vector<std::uint8_t> plain = plainHeader();
    const HeaderLayout& o = format_->header;
    const std::uint8_t* p = plain.data();
    header_.globalMap = RowPointer::fromWord(loadLE<std::uint32_t>(p + o.globalMap));
    header_.releasedMap = RowPointer::fromWord(loadLE<std::uint32_t>(p + o.releasedMap));
    header_.codePage = loadLE<std::uint16_t>(p + o.codePage);
    header_.build = loadLE<std::uint16_t>(p + o.build);
    header_.order.lcid = loadLE<std::uint16_t>(p + o.lcid);
    if (o.sortId >= 0)
        header_.order.id = p[o.sortId];
    if (o.sortVersion >= 0)
        header_.order.version = p[o.sortVersion];
    if (o.columnWord >= 0)
        header_.columnWord = loadLE<std::uint16_t>(p + o.columnWord);
    if (o.created >= 0)
        header_.created = loadLE<double>(p + o.created);
    header_.key = encodingKey(plain);
    header_.hasPassword = !databasePassword(plain).empty();
    if (!passwordMatches(plain, request.password))
        throw EngineError(EngineErrorNumber::InvalidPassword, "Not a valid password.");
    if (header_.key != 0) {
        codec_ = std::make_unique<Rc4PageCodec>(header_.key);
        file_->setCodec(codec_.get());
    }

    if (!request.codePage.empty()) {
        codePage_ = CodePage::find(std::string_view(request.codePage));
        if (!codePage_)
            throw EngineError(EngineErrorNumber::InvalidArgument,
                              "The code page \"" + request.codePage + "\" is not known.");
        return;
    }
    int number = header_.codePage;
    if (number == 0)
        number = ansiCodePage(header_.order.lcid);
    codePage_ = CodePage::find(number);
    if (!codePage_)
        codePage_ = CodePage::find(1252);
}

/// Another program may have opened the file since: what it works on is not changed under it.
void JetFile::requireAlone()
{
    if (set_->pendingBytes() > 0 && openElsewhere(files_, set_->path()))
        throw EngineError(EngineErrorNumber::FileInUse,
                          "\"" + set_->path() +
                              "\" was opened by another program; the changes are not written.");
}

void JetFile::commit()
{
    requireAlone();
    set_->commit();
    committedBytes_ = file_->size();
}

void JetFile::spill()
{
    requireAlone();
    set_->spill();
}

void JetFile::breathe()
{
    if (longChanges_ == 0)
        return;
    if (look_)
        look_();
    if (set_->pendingBytes() > kMostPendingBytes)
        spill();
}

/// Its name goes at once: nothing is left behind by whatever ends the program.
std::unique_ptr<File> JetFile::scratch()
{
    const std::string name = set_->path() + "-sort";
    try {
        auto file = files_.open(name, OpenMode::Replace);
        files_.remove(name);
        return file;
    } catch (const RunError&) {
        return nullptr;
    }
}

std::uint32_t JetFile::allocate()
{
    PageNumber number = free_->next(firstFree_);
    while (number != 0 && released_ && released_->contains(number))
        number = free_->next(number + 1);
    // What the map does not reach is free, too; but a page that stands there already is left alone.
    if (number == 0)
        number = std::max(free_->reach(), pageCount());
    appendTo(number);
    free_->remove(number);
    firstFree_ = number + 1;
    PageRef page = file_->read(number);
    std::memset(page.edit(), 0, format_->pageSize);
    return number;
}

/// Lengthens the file until it has this page.
PageNumber JetFile::appendTo(PageNumber number)
{
    if (std::uint64_t{number + 1} * format_->pageSize > format_->maxFileBytes)
        throw EngineError(EngineErrorNumber::DatabaseFull,
                          "The database has reached the size that its format allows.");
    while (pageCount() <= number)
        file_->append();
    return number;
}

void JetFile::release(std::uint32_t number, std::uint8_t typeByte)
{
    if (number < kFirstOwnPage || number >= pageCount())
        return;
    {
        PageRef page = file_->read(number);
        page.edit()[0] = typeByte;
    }
    free_->add(number);
    firstFree_ = std::min(firstFree_, number);
}

bool JetFile::isFree(PageNumber page)
{
    try {
        return free_->contains(page);
    } catch (const EngineError&) {
        return false;
    }
}

void JetFile::rollback()
{
    set_->rollback();
    header_.hasPassword = !databasePassword(plainHeader()).empty();
    forgetFreePages();
}

int ansiCodePage(std::uint16_t lcid)
{
    struct Language {
        std::uint16_t primary;
        int codePage;
    };
    static constexpr Language kLanguages[] = {
        {0x01, 1256}, {0x02, 1251}, {0x05, 1250}, {0x08, 1253}, {0x0D, 1255}, {0x0E, 1250},
        {0x11, 932},  {0x12, 949},  {0x15, 1250}, {0x18, 1250}, {0x19, 1251}, {0x1B, 1250},
        {0x1C, 1250}, {0x1E, 874},  {0x1F, 1254}, {0x22, 1251}, {0x23, 1251}, {0x24, 1250},
        {0x25, 1257}, {0x26, 1257}, {0x27, 1257}, {0x29, 1256}, {0x2A, 1258}, {0x2F, 1251},
    };
    if (lcid == 0x041A || lcid == 0x081A)  // Croatian, Serbian in Latin letters
        return 1250;
    if (lcid == 0x0C1A)  // Serbian in Cyrillic letters
        return 1251;
    if ((lcid & 0x3FF) == 0x04)  // Chinese: the mainland and Singapore, else traditional
        return lcid == 0x0804 || lcid == 0x1004 ? 936 : 950;
    for (const Language& language : kLanguages)
        if (language.primary == (lcid & 0x3FF))
            return language.codePage;
    return 1252;
}

int writeRank(const JetFormat& format, const std::uint8_t* page)
{
    switch (page[0]) {
    case page_type::kData: {
        const auto owner = loadLE<std::uint32_t>(page + format.data.owner);
        if (owner == kLongValueOwner)
            return 0;
        return owner <= 1 ? 4 : 1;  // map records stand in data pages without a table
    }
    case page_type::kIndexLeaf:
        return 2;
    case page_type::kIndexNode:
        return 3;
    case page_type::kMap:
        return 4;
    case page_type::kTableDef:
        return 5;
    default:
        return 0;
    }
}

bool JetFile::acceptsPassword(std::string_view password)
{
    return passwordMatches(plainHeader(), password);
}

void JetFile::setPassword(std::string_view password)
{
    std::vector<std::uint8_t> header = plainHeader();
    setDatabasePassword(header, password);
    header_.hasPassword = !password.empty();
    maskHeader(header);
    std::memcpy(file_->read(0).edit(), header.data(), header.size());
}

std::vector<std::uint8_t> JetFile::plainHeader()
{
    const PageRef page = file_->read(0);
    std::vector<std::uint8_t> plain(page.data(), page.data() + format_->pageSize);
    maskHeader(plain);
    return plain;
}

}  // namespace velnor::jet
