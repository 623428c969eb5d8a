// organizer/store_link.h - the store opened for one piece of work.
//
// Nothing of it is held across an action of the person, so that the file can be replaced while the
// program runs.
#pragma once

#include <QString>

#include "access/engine.h"

namespace velnor {

/// The path that operations build for themselves. At a drive root it has a doubled backslash.
QString storePath();

/// One table of the store, open until this goes. Errors are EngineError.
class StoreLink {
public:
    explicit StoreLink(const char* table);

    Recordset& rows() { return rows_; }
    QString text(const char* column) const;
    qint64 number(const char* column) const;
    void set(const char* column, const QString& text);
    void set(const char* column, qint64 number);
    /// Seek "=" on one or two keys; true when a row is there.
    bool seek(const QString& first);
    bool seek(const QString& first, const QString& second);
    /// Commits, and throws when that fails.
    void close();

private:
    Workspace workspace_;
    Database store_;
    mutable Recordset rows_;
};

}  // namespace velnor
