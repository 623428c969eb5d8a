// cli/output.h - where data goes: a file or standard output, through one buffer.
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

#include "platform/file_system.h"

namespace velnor::cli {

/// Collects text and writes it in large pieces. A file appears under its name only when finish()
/// was reached: until then it is "NAME-new", so that a failed export does not destroy an older one.
class Output {
public:
    /// Standard output when `path` is empty.
    Output(FileSystem& files, const std::string& path);
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    /// The buffer to append to; call flushIfFull() between records.
    std::string& buffer() { return buffer_; }
    void flushIfFull()
    {
        if (buffer_.size() >= kFull)
            flush();
    }
    /// Writes ready text at once; for loops with a buffer of their own.
    void write(std::string_view text);
    void finish();

private:
    static constexpr std::size_t kFull = 1u << 16;
    void flush();

    FileSystem& files_;
    std::string path_;
    std::unique_ptr<File> file_;
    std::uint64_t written_ = 0;
    std::string buffer_;
    bool finished_ = false;
};

/// True after Ctrl-C; long work asks between records and stops.
bool interrupted();
void watchInterrupt();
/// Throws the engine's "cancelled" when Ctrl-C was pressed.
void stopIfInterrupted();

/// A line of progress on standard error: only on a terminal, or when `always` is set (then one line
/// each time). At most five times a second.
class Progress {
public:
    Progress(std::string_view what, bool always);
    ~Progress();
    void show(std::int64_t done, std::int64_t of = -1);
    bool wanted() const { return terminal_ || always_; }

private:
    std::string what_;
    bool always_;
    bool terminal_;
    bool shown_ = false;
    std::int64_t nextAt_ = 0;  // milliseconds of the steady clock
};

/// Appends a JSON string with its quotes. Bytes that are no UTF-8 become U+FFFD.
void appendJsonString(std::string& out, std::string_view text);

}  // namespace velnor::cli
