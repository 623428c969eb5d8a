// platform/run_error.h - errors that are not the engine's: files, folders, texts, array bounds.
#pragma once

#include <stdexcept>
#include <string>

namespace velnor {

/// Numbers of run-time errors, as people see them behind "Error - ".
enum class RunErrorNumber : int {
    InvalidCall = 5,      ///< a negative length, a bad argument
    Overflow = 6,         ///< a number does not fit its type
    OutOfMemory = 7,
    OutOfRange = 9,       ///< an index outside the bounds of an array or a list
    TypeMismatch = 13,
    BadFileName = 52,
    FileNotFound = 53,
    FileAlreadyOpen = 55,
    DeviceIo = 57,
    FileExists = 58,
    DiskFull = 61,
    ReadPastEnd = 62,
    DeviceUnavailable = 68,
    PermissionDenied = 70,
    PathFileAccess = 75,
    PathNotFound = 76,
    InvalidUseOfNull = 94,
};

class RunError : public std::runtime_error {
public:
    RunError(RunErrorNumber number, const std::string& description)
        : std::runtime_error(description), number_(number)
    {
    }
    int number() const noexcept { return static_cast<int>(number_); }
    RunErrorNumber code() const noexcept { return number_; }

private:
    RunErrorNumber number_;
};

}  // namespace velnor
