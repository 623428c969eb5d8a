// windows/table_source.h - where the records of a window come from: its file taken apart as the
// kind of file wants it, the table in hand, and the password, which the window keeps for itself.
#pragma once

#include <QString>
#include <QStringList>

#include "windows/data_control.h"

namespace velnor {

/// How a password stands in the connect of a Data control.
enum class ConnectForm {
    PasswordAlone,   ///< ";pwd=secret"
    PasswordBehind,  ///< "Access 2000;;pwd=secret"
};

struct TableSource {
    QString path, folder, fileName;
    QString type;        ///< extension in upper case
    QString connect;     ///< the driver's word; "FoxPro 3.0;" for a DBF that dBASE doesn't read
    QString password;    ///< of a protected Access file
    QString table;       ///< a table or sheet; in a folder the file's name
    QStringList tables;  ///< all of the file; none in a folder
    ConnectForm form = ConnectForm::PasswordAlone;

    TableSource() = default;
    TableSource(const QString& path, ConnectForm form);

    /// The folder is the database, and the file in it the table.
    bool inFolder() const { return type == QLatin1String("DBF") || type == QLatin1String("DB"); }
    /// The file holds several tables.
    bool holdsTables() const;
    /// Files of other kinds have no records to show.
    bool isKnown() const { return inFolder() || holdsTables(); }

    /// Lists the tables; the one in hand is `wanted`, or the first when that is empty. False when
    /// people cancelled the login.
    bool listTables(const QString& wanted = {});
    /// Puts fields and indexes of the table in hand into the shared arrays. What was asked for on
    /// the way is the password.
    void readStructure();
    /// Names the table in hand to a Data control and opens it: in table form, so that an index can
    /// order it. A source that has no such form opens as a set, whose end is seen once, so that it
    /// is counted.
    void open(DataControl& control);

private:
    QString connectText() const;
    void nameTo(DataControl& control) const;
};

}  // namespace velnor
