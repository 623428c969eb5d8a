// copy/field_list.h - the fields of one side of a copy: its lines, and the arrays beside them.
#pragma once

#include <QString>
#include <QStringList>

#include "access/engine.h"
#include "core/bounded_array.h"

namespace velnor {

/// Lines count from 0, the arrays from 1: the field of line k lies in element k + 1, and element 0
/// stays cleared (type 0, size 0). Matching and the type check read the arrays with the number of
/// the line and so see the line above: required, it decides which fields pair up.
struct FieldList {
    static constexpr int kElements = 302;

    QStringList lines;
    BoundedArray<QString, kElements> names;
    BoundedArray<short, kElements> types;
    BoundedArray<int, kElements> sizes;
    short count = 0;

    /// Adds a field and its line. Error 9 at the 302nd: the arrays hold 301.
    void add(const QString& name, short type, int size);
    /// Clears elements 0 to `count` and the lines. The count stays: required, the next load resets
    /// it.
    void close();
};

FieldList fieldListOf(Recordset& records);
FieldList fieldListOf(TableDef& table);

}  // namespace velnor
