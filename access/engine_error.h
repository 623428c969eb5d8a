// access/engine_error.h - what the engine throws: a number that callers test, and words for people.
#pragma once

#include <stdexcept>
#include <string>

namespace velnor {

/// The engine's numbers. Callers of the windows test several of them; each stands here once.
enum class EngineErrorNumber : int {
    TypeConversion = 3421,         ///< a value does not fit the type of its field
    InvalidFieldName = 3008,       ///< kept for names that a format cannot hold
    TableAlreadyExists = 3010,
    NameNotInCollectionAtAppend = 3012,
    IndexKeyMissing = 3015,        ///< the index of this name is not there
    InvalidIndex = 3018,           ///< an index without fields, or on a field that cannot be one
    NoCurrentIndex = 3019,         ///< Seek without Index
    UpdateWithoutEdit = 3020,      ///< Update or CancelUpdate without AddNew or Edit
    NoCurrentRecord = 3021,
    DuplicateKey = 3022,
    FileNotFound = 3024,
    DiskFull = 3026,
    ReadOnly = 3027,
    InvalidPassword = 3031,
    CannotOpen = 3051,             ///< no permission, or the system refused
    FileInUse = 3045,
    PathInvalid = 3044,
    NullKey = 3058,                ///< a primary key or required index field is Null
    SyntaxError = 3075,
    UnknownField = 3061,
    TableNotFound = 3078,
    SyntaxInFrom = 3131,
    ValueTooLong = 3163,
    InvalidTableName = 3125,
    NoDriver = 3170,               ///< no driver for the format
    SameFieldNames = 3191,         ///< two names equal in what the format keeps of them
    DatabaseExists = 3204,
    NotSupported = 3251,           ///< the format has no such operation
    ItemNotFound = 3265,           ///< not in this collection
    ItemExists = 3367,             ///< an object of this name is in the collection already
    RelatedRecords = 3200,         ///< records of another table belong to this one
    NoRelatedRecord = 3201,        ///< the other table of a relationship has no record for this one
    UnexpectedFormat = 3274,       ///< external table is not in the expected format
    FieldInIndex = 3280,           ///< an index needs the field that was to go
    IndexInRelation = 3281,        ///< a relationship needs the index that was to go
    FieldInRelation = 3303,        ///< a relationship needs the field that was to go
    FieldRequired = 3314,          ///< Null in a required field
    EmptyTextNotAllowed = 3315,
    ValidationFailed = 3316,
    ValueRefused = 3317,           ///< a field's rule has no text of its own
    Unrecognised = 3343,           ///< not a database of this kind, or damaged beyond opening
    ExclusiveUse = 3356,
    ObjectClosed = 3420,           ///< the recordset, or the database it came from, is closed
    InvalidUpdate = 3426,
    InvalidArgument = 3001,
    TooManyFields = 3190,
    RecordTooLarge = 3047,
    DatabaseFull = 3049,           ///< the file has reached the size that its format allows
    Corrupt = 3197,                ///< damage met while reading or writing a record
    TypeMismatch = 3464,
    CannotDecrypt = 3161,          ///< an encrypted file, opened without its password
    RangeCannotGrow = 3434,        ///< the row below a named range is taken
    SpreadsheetFull = 3437,        ///< the sheet has no further row
    DeletesNotSupported = 3617,    ///< the format has no deleted records
    IndexNotMaintained = 3800,     ///< an index file would go stale: refused, nothing was written
    Cancelled = 3059,
    Unexpected = 3000,
};

class EngineError : public std::runtime_error {
public:
    EngineError(EngineErrorNumber number, const std::string& description)
        : std::runtime_error(description), number_(number)
    {
    }
    int number() const noexcept { return static_cast<int>(number_); }
    EngineErrorNumber code() const noexcept { return number_; }

private:
    EngineErrorNumber number_;
};

}  // namespace velnor
