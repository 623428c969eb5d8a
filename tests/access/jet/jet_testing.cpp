#include "tests/access/jet/jet_testing.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <unistd.h>

#include "access/value_text.h"

namespace velnor::testing {
namespace {

std::string environment(const char* name)
{
    const char* value = std::getenv(name);
    return value ? value : "";
}

void appendQuoted(std::string& out, std::string_view text)
{
    if (text.empty()) {
        out += "\"\"";
        return;
    }
    if (text.front() != ' ' && text.back() != ' ' &&
        text.find_first_of(",\"\n\r") == std::string_view::npos) {
        out += text;
        return;
    }
    out += '"';
    for (const char c : text) {
        if (c == '"')
            out += '"';
        out += c;
    }
    out += '"';
}

void appendBytes(std::string& out, std::span<const std::uint8_t> bytes)
{
    if (bytes.empty()) {
        out += "\"\"";
    } else if (bytes.size() > 64) {
        out += "[binary " + std::to_string(bytes.size()) + " bytes]";
    } else {
        char hex[3];
        for (const std::uint8_t byte : bytes) {
            std::snprintf(hex, sizeof hex, "%02x", byte);
            out += hex;
        }
    }
}

void appendCanonical(std::string& out, ValueView v)
{
    switch (v.kind()) {
    case ValueKind::Date:
        if (std::fabs(v.asDate()) > 3000000)
            return appendReal(out, v.asDate());
        return appendIsoDate(out, v.asDate());
    case ValueKind::Text:
        return appendQuoted(out, v.asText());
    case ValueKind::Bytes:
        return appendBytes(out, v.asBytes());
    default:
        return appendText(out, v);
    }
}

}  // namespace

std::string corpusFolder()
{
    const std::string folder = environment("VELNOR_CORPUS");
    if (folder.empty() || !std::filesystem::exists(folder + "/jet/manifest.json"))
        return {};
    return folder + "/jet/";
}

Json corpusManifest()
{
    const auto bytes = readBytes(corpusFolder() + "manifest.json");
    return JsonReader({reinterpret_cast<const char*>(bytes.data()), bytes.size()}).value();
}

std::vector<std::uint8_t> readBytes(const std::string& nativePath)
{
    std::ifstream in(nativePath, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::unique_ptr<MemoryFileSystem> memoryWith(const std::vector<std::uint8_t>& content)
{
    auto files = std::make_unique<MemoryFileSystem>();
    files->put(kTestFile, content);
    return files;
}

OpenRequest reading(std::string_view password, std::string_view codePage)
{
    OpenRequest request;
    request.name = kTestFile;
    request.password = password;
    request.codePage = codePage;
    return request;
}

OpenRequest writing(std::string_view password)
{
    OpenRequest request = reading(password);
    request.readOnly = false;
    return request;
}

std::string dumpTable(Store& store, std::string_view table)
{
    const TableLayout layout = store.layout(table);
    std::string out;
    for (std::size_t i = 0; i < layout.fields.size(); ++i) {
        if (i)
            out += ',';
        appendQuoted(out, layout.fields[i].name);
    }
    out += '\n';
    const auto cursor = store.cursor(table, std::nullopt);
    for (bool on = cursor->first(); on; on = cursor->next()) {
        for (int i = 0; i < static_cast<int>(layout.fields.size()); ++i) {
            if (i)
                out += ',';
            appendCanonical(out, cursor->field(i));
        }
        out += '\n';
    }
    return out;
}

std::string runOn(const std::vector<std::uint8_t>& content, std::string command, int& status)
{
    const auto path = std::filesystem::temp_directory_path() /
                      ("velnor-jet-" + std::to_string(getpid()) + ".mdb");
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(content.data()),
               static_cast<std::streamsize>(content.size()));
    for (std::size_t at; (at = command.find("FILE")) != std::string::npos;)
        command.replace(at, 4, path.string());
    std::string output;
    FILE* pipe = popen((command + " 2>&1").c_str(), "r");
    char buffer[4096];
    for (std::size_t n; pipe && (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;)
        output.append(buffer, n);
    status = pipe ? pclose(pipe) : -1;
    std::filesystem::remove(path);
    return output;
}

Verdict outsideCheck(const std::vector<std::uint8_t>& content, const std::string& password)
{
    Verdict verdict;
    const std::string tool = environment("VELNOR_TOOLS") + "/jet_check.py";
    if (!std::filesystem::exists(tool))
        return verdict;
    verdict.available = true;
    const std::string python = environment("VELNOR_PYTHON");
    int status = 0;
    verdict.output = runOn(content,
                           (python.empty() ? "python3" : python) + " " + tool + " check FILE" +
                               (password.empty() ? "" : " --password '" + password + "'"),
                           status);
    verdict.sound = status == 0;
    return verdict;
}

}  // namespace velnor::testing
