#include "access/model/open_stores.h"

#include "platform/paths.h"

namespace velnor::model {
namespace {

constexpr std::size_t kMostPendingBytes = 8u << 20;
constexpr unsigned kRecordsBetweenLooks = 16;

struct Entry {
    const FileSystem* files;
    std::string place;  // folded path
    std::string key;    // what else makes a Store of its own
    std::weak_ptr<OpenStore> store;
};

std::vector<Entry>& entries()
{
    static std::vector<Entry> all;
    std::erase_if(all, [](const Entry& e) { return e.store.expired(); });
    return all;
}

/// One form for all spellings of a path: doubled and closing backslashes gone, case folded.
std::string foldedPlace(std::string_view path)
{
    std::string plain;
    for (const char c : path)
        if (c != '\\' || plain.size() < 2 || plain.back() != '\\')
            plain += c;
    while (plain.size() > 1 && plain.back() == '\\')
        plain.pop_back();
    return paths::foldName(plain);
}

std::string keyOf(const OpenRequest& request, const FormatTraits& traits)
{
    std::string key = paths::foldName(request.codePage) + '|' + paths::foldName(request.options);
    if (traits.folder)
        key += '|' + paths::foldName(request.connectWord);
    return key;
}

[[noreturn]] void inUse(const std::string& name)
{
    throw EngineError(EngineErrorNumber::FileInUse, "The file is in use: " + name + ".");
}

bool mayOnlyBeRead(const RunError& e)
{
    return e.code() == RunErrorNumber::PermissionDenied ||
           e.code() == RunErrorNumber::PathFileAccess;
}

bool mayOnlyBeRead(const EngineError& e)
{
    return e.code() == EngineErrorNumber::CannotOpen || e.code() == EngineErrorNumber::ReadOnly;
}

}  // namespace

OpenStore::OpenStore(FileSystem& files, const Driver& driver, const OpenRequest& request)
    : files_(files), driver_(driver), request_(request), traits_(driver.traits(request.connectWord))
{
    openOrReadOnly();
}

OpenStore::~OpenStore() = default;

Store& OpenStore::store()
{
    if (!store_)  // a change to writing failed, and so did the way back
        throw EngineError(EngineErrorNumber::CannotOpen, "Cannot open: " + request_.name + ".");
    return *store_;
}

void OpenStore::openOrReadOnly()
{
    bool readOnly = request_.readOnly;
    if (!readOnly) {
        try {
            store_ = driver_.open(files_, request_);
            return;
        } catch (const RunError& e) {
            if (!mayOnlyBeRead(e))
                throw;
        } catch (const EngineError& e) {
            if (!mayOnlyBeRead(e))
                throw;
        }
    }
    OpenRequest reading = request_;
    reading.readOnly = true;
    store_ = driver_.open(files_, reading);
    request_.readOnly = true;
}

void OpenStore::makeWriteable()
{
    if (writeable())
        return;
    for (StoreClient* client : clients_)
        client->releaseStore();
    store_.reset();  // its lock would refuse the new one
    request_.readOnly = false;
    try {
        openOrReadOnly();
    } catch (const std::exception&) {  // goes on below, once the readers have their Store back
        request_.readOnly = true;
        openOrReadOnly();
        for (StoreClient* client : clients_)
            client->restoreStore();
        throw;
    }
    for (StoreClient* client : clients_)
        client->restoreStore();
}

void OpenStore::checkPassword(std::string_view password)
{
    if (password != request_.password && !store().acceptsPassword(password))
        throw EngineError(EngineErrorNumber::InvalidPassword,
                          "Not a valid password: " + request_.name + ".");
}

void OpenStore::changePassword(std::string_view old, std::string_view now)
{
    if (!store().acceptsPassword(old))
        throw EngineError(EngineErrorNumber::InvalidPassword,
                          "Not a valid password: " + request_.name + ".");
    store().changePassword(now);
    request_.password = now;
}

void OpenStore::requireUnused(std::string_view table) const
{
    for (const StoreClient* client : clients_)
        if (paths::sameName(client->tableName(), table))
            throw EngineError(EngineErrorNumber::FileInUse,
                              "The table is in use: " + std::string(table) + ".");
}

void OpenStore::recordWritten()
{
    if (++written_ % kRecordsBetweenLooks == 0)
        store().breathe(kMostPendingBytes);
}

void OpenStore::commit()
{
    if (writeable())
        store().commit();
}

std::shared_ptr<OpenStore> openStore(FileSystem& files, const Driver& driver,
                                     const OpenRequest& request)
{
    const std::string place = foldedPlace(request.name);
    const std::string key = keyOf(request, driver.traits(request.connectWord));
    std::shared_ptr<OpenStore> found;
    for (const Entry& e : entries()) {
        const auto store = e.store.lock();
        if (e.files != &files || e.place != place)
            continue;
        if (request.exclusive || store->exclusive())
            inUse(request.name);
        if (e.key == key)
            found = store;
    }
    if (!found) {
        found = std::make_shared<OpenStore>(files, driver, request);
        entries().push_back({&files, place, key, found});
        return found;
    }
    found->checkPassword(request.password);
    if (!request.readOnly)
        found->makeWriteable();
    return found;
}

bool isOpen(FileSystem& files, std::string_view name)
{
    const std::string place = foldedPlace(name);
    for (const Entry& e : entries())
        if (e.files == &files && e.place == place)
            return true;
    return false;
}

}  // namespace velnor::model
