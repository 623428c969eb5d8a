// tests/access/jet/small_json.h - reads the manifest of the corpus: plain JSON, trusted content.
#pragma once

#include <cctype>
#include <cstdlib>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace velnor::testing {

struct Json {
    enum class Kind { Null, Boolean, Number, Text, List, Object } kind = Kind::Null;
    bool boolean = false;
    double number = 0;
    std::string text;
    std::vector<Json> list;
    std::map<std::string, Json> object;

    bool has(const std::string& key) const { return object.contains(key); }
    const Json& operator[](const std::string& key) const
    {
        static const Json none;
        const auto found = object.find(key);
        return found == object.end() ? none : found->second;
    }
};

class JsonReader {
public:
    explicit JsonReader(std::string_view text) : text_(text) {}

    Json value()
    {
        blanks();
        Json json;
        switch (peek()) {
        case '{':
            json.kind = Json::Kind::Object;
            each('}', [&] {
                const std::string key = string();
                blanks();
                ++at_;  // :
                json.object[key] = value();
            });
            break;
        case '[':
            json.kind = Json::Kind::List;
            each(']', [&] { json.list.push_back(value()); });
            break;
        case '"':
            json.kind = Json::Kind::Text;
            json.text = string();
            break;
        case 't':
        case 'f':
        case 'n':
            json.kind = peek() == 'n' ? Json::Kind::Null : Json::Kind::Boolean;
            json.boolean = peek() == 't';
            while (at_ < text_.size() && std::isalpha(static_cast<unsigned char>(text_[at_])))
                ++at_;
            break;
        default:
            json.kind = Json::Kind::Number;
            char* end = nullptr;
            json.number = std::strtod(text_.data() + at_, &end);
            at_ = static_cast<std::size_t>(end - text_.data());
        }
        return json;
    }

private:
    char peek() const { return at_ < text_.size() ? text_[at_] : '\0'; }
    void blanks()
    {
        while (at_ < text_.size() && std::isspace(static_cast<unsigned char>(text_[at_])))
            ++at_;
    }
    template <class Step> void each(char end, Step step)
    {
        ++at_;
        for (blanks(); peek() != end && peek() != '\0'; blanks()) {
            if (peek() == ',') {
                ++at_;
                continue;
            }
            step();
        }
        ++at_;
    }
    std::string string()
    {
        std::string out;
        for (++at_; peek() != '"' && peek() != '\0'; ++at_) {
            if (peek() != '\\') {
                out += peek();
                continue;
            }
            ++at_;
            switch (peek()) {
            case 'n':
                out += '\n';
                break;
            case 't':
                out += '\t';
                break;
            case 'u':
                codePoint(out);
                break;
            default:
                out += peek();
            }
        }
        ++at_;
        return out;
    }
    unsigned hex()
    {
        const unsigned code = static_cast<unsigned>(
            std::strtoul(std::string(text_.substr(at_ + 1, 4)).c_str(), nullptr, 16));
        at_ += 4;
        return code;
    }
    void codePoint(std::string& out)
    {
        unsigned c = hex();
        if (c >= 0xD800 && c < 0xDC00 && text_.substr(at_ + 1, 2) == "\\u") {
            at_ += 2;
            c = 0x10000 + ((c - 0xD800) << 10) + (hex() - 0xDC00);
        }
        if (c < 0x80) {
            out += static_cast<char>(c);
        } else if (c < 0x800) {
            out += static_cast<char>(0xC0 | c >> 6);
            out += static_cast<char>(0x80 | (c & 63));
        } else if (c < 0x10000) {
            out += static_cast<char>(0xE0 | c >> 12);
            out += static_cast<char>(0x80 | (c >> 6 & 63));
            out += static_cast<char>(0x80 | (c & 63));
        } else {
            out += static_cast<char>(0xF0 | c >> 18);
            out += static_cast<char>(0x80 | (c >> 12 & 63));
            out += static_cast<char>(0x80 | (c >> 6 & 63));
            out += static_cast<char>(0x80 | (c & 63));
        }
    }

    std::string_view text_;
    std::size_t at_ = 0;
};

}  // namespace velnor::testing
