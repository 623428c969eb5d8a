// tests/access/made_files.h - tables made and read through the engine, for tests that need real
// files.
#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>

#include "access/engine.h"

namespace velnor::testing {

inline constexpr const char* kDBase = "dBASE 5.0;";
inline constexpr const char* kFoxPro = "FoxPro 3.0;";
inline constexpr const char* kAccess = "Access 2000;";

struct MadeField {
    QString name;
    FieldType type = FieldType::Text;
    int size = 0;
    bool required = false;
};

/// A new Access file without tables; with a password when one is given.
void makeAccessFile(const QString& path, const QString& password = {});
/// A new table in a folder (dBASE, FoxPro) or in an Access file that stands; with a unique index on
/// a field, named like it.
void makeTable(const QString& database, const QString& connect, const QString& table,
               const QList<MadeField>& fields, const QString& uniqueIndexOn = {});
/// Appends records; an invalid QVariant is Null, texts are converted by the engine.
void appendRows(const QString& database, const QString& connect, const QString& table,
                const QList<QVariantList>& rows);
/// All records as texts, Null as "(Null)".
QList<QStringList> readRows(const QString& database, const QString& connect, const QString& table);

}  // namespace velnor::testing
