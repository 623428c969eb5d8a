#include "cli/output.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <unistd.h>

#include "access/engine_error.h"

namespace velnor::cli {
namespace {

std::atomic<bool> interruptFlag{false};

void onInterrupt(int)
{
    interruptFlag = true;
    std::signal(SIGINT, SIG_DFL);  // a second Ctrl-C ends at once
}

std::int64_t milliseconds()
{
    using namespace std::chrono;
    return duration_cast<std::chrono::milliseconds>(steady_clock::now().time_since_epoch()).count();
}

}  // namespace

Output::Output(FileSystem& files, const std::string& path) : files_(files), path_(path)
{
    buffer_.reserve(kFull + (kFull >> 2));
    if (!path_.empty())
        file_ = files_.open(path_ + "-new", OpenMode::Replace);
}

Output::~Output()
{
    if (!file_ || finished_)
        return;
    file_.reset();
    try {
        files_.remove(path_ + "-new");
    } catch (const RunError&) {  // it stays behind, harmless
    }
}

void Output::flush()
{
    write(buffer_);
    buffer_.clear();
}

void Output::write(std::string_view text)
{
    if (text.empty())
        return;
    if (file_) {
        file_->writeAt(written_, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
        written_ += text.size();
    } else if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) {
        throw RunError(RunErrorNumber::DeviceIo, "Standard output was closed.");
    }
}

void Output::finish()
{
    flush();
    if (file_) {
        file_.reset();
        files_.rename(path_ + "-new", path_);
    } else if (std::fflush(stdout) != 0) {
        throw RunError(RunErrorNumber::DeviceIo, "Standard output was closed.");
    }
    finished_ = true;
}

bool interrupted()
{
    return interruptFlag;
}
void watchInterrupt()
{
    std::signal(SIGINT, onInterrupt);
}

void stopIfInterrupted()
{
    if (interruptFlag)
        throw EngineError(EngineErrorNumber::Cancelled, "Stopped by the user.");
}

Progress::Progress(std::string_view what, bool always)
    : what_(what), always_(always), terminal_(isatty(STDERR_FILENO) == 1),
      nextAt_(milliseconds() + (always ? 0 : 300))
{
}

Progress::~Progress()
{
    if (shown_ && terminal_ && !always_)
        std::fputs("\r\x1b[K", stderr);
}

void Progress::show(std::int64_t done, std::int64_t of)
{
    if (!wanted())
        return;
    const std::int64_t now = milliseconds();
    if (now < nextAt_)
        return;
    nextAt_ = always_ ? now : now + 200;
    shown_ = true;
    std::string line = what_ + " " + std::to_string(done);
    if (of >= 0)
        line += " of " + std::to_string(of);
    std::fputs(always_ ? (line + "\n").c_str() : ("\r" + line + " ").c_str(), stderr);
    std::fflush(stderr);
}

namespace {

/// Length of the well-formed UTF-8 sequence at `p`, 0 when it is none.
std::size_t sequenceLength(const unsigned char* p, std::size_t left)
{
    const unsigned char c = p[0];
    const std::size_t n = c < 0x80   ? 1
                          : c < 0xC2 ? 0
                          : c < 0xE0 ? 2
                          : c < 0xF0 ? 3
                          : c < 0xF5 ? 4
                                     : 0;
    if (n == 0 || n > left)
        return 0;
    for (std::size_t i = 1; i < n; ++i)
        if ((p[i] & 0xC0) != 0x80)
            return 0;
    const bool bad = (c == 0xE0 && p[1] < 0xA0) || (c == 0xED && p[1] > 0x9F) ||
                     (c == 0xF0 && p[1] < 0x90) || (c == 0xF4 && p[1] > 0x8F);
    return bad ? 0 : n;
}

}  // namespace

void appendJsonString(std::string& out, std::string_view text)
{
    static constexpr char kHex[] = "0123456789abcdef";
    out += '"';
    for (std::size_t i = 0; i < text.size();) {
        const auto* p = reinterpret_cast<const unsigned char*>(text.data()) + i;
        const unsigned char c = *p;
        if (c == '"' || c == '\\') {
            out += '\\';
            out += static_cast<char>(c);
            ++i;
        } else if (c == '\n' || c == '\r' || c == '\t') {
            out += '\\';
            out += c == '\n' ? 'n' : c == '\r' ? 'r' : 't';
            ++i;
        } else if (c < 0x20 || c == 0x7F) {
            out += "\\u00";
            out += kHex[c >> 4];
            out += kHex[c & 15];
            ++i;
        } else if (const std::size_t n = sequenceLength(p, text.size() - i)) {
            out.append(text, i, n);
            i += n;
        } else {
            out += "\xEF\xBF\xBD";
            ++i;
        }
    }
    out += '"';
}

}  // namespace velnor::cli
