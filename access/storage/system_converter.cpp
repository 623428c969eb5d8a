#include "access/storage/system_converter.h"

#include <iconv.h>

#include <cerrno>
#include <cstring>
#include <map>

#include "access/storage/utf8.h"

namespace velnor {

namespace {

class Converter {
public:
    Converter(const char* to, const char* from) : handle_(iconv_open(to, from)) {}
    ~Converter()
    {
        if (works())
            iconv_close(handle_);
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    bool works() const { return handle_ != reinterpret_cast<iconv_t>(-1); }
    /// Converts as far as it goes; `in` moves. False when it stopped at a character.
    bool convert(std::string_view& in, std::string& out)
    {
        char buffer[256];
        while (!in.empty()) {
            char* from = const_cast<char*>(in.data());
            std::size_t left = in.size();
            char* to = buffer;
            std::size_t room = sizeof buffer;
            const std::size_t result = iconv(handle_, &from, &left, &to, &room);
            out.append(buffer, static_cast<std::size_t>(to - buffer));
            in.remove_prefix(in.size() - left);
            if (result == static_cast<std::size_t>(-1) && errno != E2BIG)
                return false;
        }
        return true;
    }

private:
    iconv_t handle_;
};

/// Opening a converter is slow, so each thread keeps its own.
Converter& converter(const char* page, bool decode)
{
    thread_local std::map<std::pair<std::string_view, bool>, Converter> open;
    const auto found = open.find({page, decode});
    if (found != open.end())
        return found->second;
    const char* to = decode ? "UTF-8" : page;
    const char* from = decode ? page : "UTF-8";
    return open
        .emplace(std::piecewise_construct, std::forward_as_tuple(page, decode),
                 std::forward_as_tuple(to, from))
        .first->second;
}

}  // namespace

void systemDecode(const char* page, std::string_view bytes, std::string& out)
{
    Converter& to = converter(page, true);
    out.clear();
    while (!bytes.empty()) {
        const std::size_t ascii = utf8::asciiLength(bytes.data(), bytes.size());
        out.append(bytes.substr(0, ascii));
        bytes.remove_prefix(ascii);
        if (to.works() && to.convert(bytes, out))
            return;
        if (!bytes.empty()) {
            out += "\xEF\xBF\xBD";
            bytes.remove_prefix(1);
        }
    }
}

bool systemEncode(const char* page, std::string_view text, std::string& bytes)
{
    Converter& to = converter(page, false);
    bool complete = true;
    while (!text.empty()) {
        const std::size_t ascii = utf8::asciiLength(text.data(), text.size());
        bytes.append(text.substr(0, ascii));
        text.remove_prefix(ascii);
        if (text.empty() || (to.works() && to.convert(text, bytes)))
            return complete;
        std::size_t behind = 0;
        utf8::next(text, behind);
        text.remove_prefix(behind);
        bytes += '?';
        complete = false;
    }
    return complete;
}

}  // namespace velnor
