// windows/data_control.h - the Data control: a source named by three texts, and the live cursor on
// it.
//
// Nothing is opened before Refresh; every failure of opening comes from there, and leaves the
// control closed. Between two calls of Refresh the control holds its file. No widget: DataStrip is
// its face.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "access/engine.h"

namespace velnor {

class DataControl {
public:
    explicit DataControl(Workspace& workspace) : workspace_(workspace) {}
    ~DataControl();
    DataControl(const DataControl&) = delete;
    DataControl& operator=(const DataControl&) = delete;

    std::string Connect;
    std::string DatabaseName;
    std::string RecordSource;
    bool Exclusive = false;
    bool ReadOnly = false;
    RecordsetType Type = RecordsetType::Dynaset;
    std::string Caption;

    /// Called after the current record has become another one.
    std::function<void()> onReposition;

    /// Closes what is open, opens anew with the texts above, and stands on the first record.
    void Refresh();
    /// What was written through the cursor is safe on the disk when this returns.
    void commit();
    /// Lets go of the file; the texts stay.
    void close();
    bool isOpen() const { return records_.has_value(); }

    /// The live cursor. 91 when nothing is open.
    velnor::Recordset& Recordset();
    /// A second cursor on the same source in the same order, for a grid to read ahead with.
    velnor::Recordset anotherCursor();

    void MoveFirst();
    void MovePrevious();
    void MoveNext();
    void MoveLast();
    /// Relative to the current record; stays on the first or last one where it would pass it.
    void Move(std::int64_t rows);
    /// Orders the records by an index, and stands on the first one. 3015 when there is no such
    /// index.
    void SetIndex(const std::string& name);

private:
    velnor::Recordset open();
    void reposition();

    Workspace& workspace_;
    std::optional<Database> database_;
    std::optional<velnor::Recordset> records_;
};

}  // namespace velnor
