// access/model/open_stores.h - one Store for each file or folder that is open in this process.
//
// Every Database of a file gets the same Store. A file that is open to read only is opened again,
// writeable, when somebody wants to write; its cursors are taken away before and put back after. It
// then stays writeable until its last Database is closed. An exclusive open stands alone: whoever
// comes second, on either side, gets 3045. A folder opened under two connect words, or a
// file with two code pages or other options, is two Stores: their answers differ.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "access/formats/driver.h"

namespace velnor::model {

/// Something that holds cursors or writers of a Store.
class StoreClient {
public:
    virtual ~StoreClient() = default;
    virtual const std::string& tableName() const = 0;
    /// Lets go of everything that belongs to the Store; the place is remembered.
    virtual void releaseStore() = 0;
    /// Takes up the remembered place in the Store as it is now.
    virtual void restoreStore() = 0;
    /// A record is about to be added, changed or removed by somebody.
    virtual void storeWillChange() {}
};

class OpenStore {
public:
    /// Opens; a file that may only be read is opened so, although a writeable Store was asked for.
    OpenStore(FileSystem& files, const Driver& driver, const OpenRequest& request);
    ~OpenStore();
    OpenStore(const OpenStore&) = delete;
    OpenStore& operator=(const OpenStore&) = delete;

    Store& store();
    bool writeable() const { return !request_.readOnly; }
    bool exclusive() const { return request_.exclusive; }
    const FormatTraits& traits() const { return traits_; }
    /// Does nothing when it is so already; a file that may only be read stays as it is.
    void makeWriteable();
    /// 3031 when a further Database brings the wrong password.
    void checkPassword(std::string_view password);
    /// 3031 when `old` is wrong.
    void changePassword(std::string_view old, std::string_view now);

    void add(StoreClient& client) { clients_.push_back(&client); }
    void remove(StoreClient& client) { std::erase(clients_, &client); }
    /// 3045 when a recordset of the table is open: its structure must not change below it.
    void requireUnused(std::string_view table) const;

    /// Tells everybody, before a record is written.
    void willChange()
    {
        for (StoreClient* client : clients_)
            client->storeWillChange();
    }
    /// Counts a written record, and commits when much has gathered.
    void recordWritten();
    void commit();

private:
    void openOrReadOnly();

    FileSystem& files_;
    const Driver& driver_;
    OpenRequest request_;
    const FormatTraits& traits_;
    std::unique_ptr<Store> store_;
    std::vector<StoreClient*> clients_;
    unsigned written_ = 0;
};

/// The Store for a request: the one in use, or a new one.
std::shared_ptr<OpenStore> openStore(FileSystem& files, const Driver& driver,
                                     const OpenRequest& request);
/// True when any Database of this file or folder is open in this process.
bool isOpen(FileSystem& files, std::string_view name);

}  // namespace velnor::model
