// access/data_control.h - the Data control: a source named by three texts, and the live cursor on
// it. No widget: a window draws its face and binds its fields.
//
// Nothing is opened before Refresh; every failure of opening comes from there, and leaves the
// control closed. Between two calls of Refresh the control holds its file.
//
// The order of events, for every step that leaves a record or changes one:
// 1. Validate, with what is about to happen and whether bound fields were changed. The handler may
//    call it off, or say that the changes are not to be saved.
// 2. The changes are saved: Edit (unless a new record is being added), the bound fields, Update.
// They
//    are safe on the disk then. A new record that nobody typed into is dropped.
// 3. The step itself.
// 4. The bound fields show the record that is current now, then Reposition.
// When 2 or 3 fail, the record stays current and what was typed stays in the fields; Error tells it
// when there is a handler, else it is thrown.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "access/engine.h"

namespace velnor {

/// What a Data control is about to do; the numbers are those of its Validate event.
enum class DataAction {
    Cancel = 0,  ///< set by the handler: nothing happens
    MoveFirst = 1,
    MovePrevious = 2,
    MoveNext = 3,
    MoveLast = 4,
    AddNew = 5,
    Update = 6,
    Delete = 7,
    Find = 8,  ///< a move by rows, or to a place
    Bookmark = 9,
    Close = 10,
    Unload = 11,
};

/// What a step past an end of the records does.
enum class EndAction {
    Stay,  ///< the record at that end is the current one
    Pass,  ///< there is no current record, and Reposition tells it
};

/// A field of a window that shows a field of the record.
class DataBinding {
public:
    virtual ~DataBinding() = default;
    virtual bool changed() const = 0;
    /// Puts what was typed into the edit buffer.
    virtual void save(Recordset& records) = 0;
    /// Shows the current record, and counts as unchanged.
    virtual void show(const Recordset& records) = 0;
    /// There is no record to show.
    virtual void clear() = 0;
};

class DataControl {
public:
    explicit DataControl(Workspace& workspace) : workspace_(workspace) {}
    ~DataControl();
    DataControl(const DataControl&) = delete;
    DataControl& operator=(const DataControl&) = delete;

    std::string Connect;
    std::string DatabaseName;
    std::string RecordSource;  ///< a table, or a SELECT statement
    bool Exclusive = false;
    bool ReadOnly = false;
    RecordsetType Type = RecordsetType::Dynaset;
    std::string Caption;
    EndAction BOFAction = EndAction::Stay;
    EndAction EOFAction = EndAction::Stay;

    /// After another record has become the current one.
    std::function<void()> onReposition;
    /// Before a record is left or changed.
    std::function<void(DataAction& action, bool& save)> onValidate;
    /// The engine's number and words of a step that failed. Without it the error is thrown.
    std::function<void(int number, const std::string& description)> onError;

    /// Closes what is open, opens anew with the texts above, and stands on the first record.
    void Refresh();
    /// What was written through the cursor is safe on the disk when this returns.
    void commit();
    /// Lets go of the file; the texts stay.
    void close();
    bool isOpen() const { return records_.has_value(); }

    /// The live cursor. 91 when nothing is open. Its own calls make no events.
    velnor::Recordset& Recordset();
    /// A second cursor on the same source in the same order, for a grid to read ahead with.
    velnor::Recordset anotherCursor();

    void bind(DataBinding& binding) { bindings_.push_back(&binding); }
    void unbind(DataBinding& binding) { std::erase(bindings_, &binding); }
    bool anyChanged() const;
    bool adding() const { return adding_; }

    // With events. What the moves do at the ends is up to BOFAction and EOFAction.
    void MoveFirst();
    void MovePrevious();
    void MoveNext();
    void MoveLast();
    /// Relative to the current record.
    void Move(std::int64_t rows);
    /// Orders the records by an index, and stands on the first one. 3015 when there is no such
    /// index.
    void SetIndex(const std::string& name);
    void moveToBookmark(velnor::Recordset::Bookmark bookmark);
    void AddNew();
    /// Saves the bound fields, with Validate; a new record is the current one then.
    void Update();
    /// Saves the bound fields without Validate.
    void UpdateRecord();
    /// The bound fields show what the record holds; a new record is dropped.
    void UpdateControls();
    /// Removes the current record. It stays current, without values, until a move.
    void Delete();

private:
    velnor::Recordset open();
    void stayInside(velnor::Recordset& records) const;
    void act(DataAction action, const std::function<void(velnor::Recordset&)>& step);
    bool validate(DataAction action, bool& save);
    void save();
    void show();
    void reposition();

    Workspace& workspace_;
    std::optional<Database> database_;
    std::optional<velnor::Recordset> records_;
    std::vector<DataBinding*> bindings_;
    bool adding_ = false;
};

}  // namespace velnor
