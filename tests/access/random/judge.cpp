#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "tests/access/random/random_format.h"

namespace velnor::testing {
namespace {

void writeFile(const std::filesystem::path& path, const void* data, std::size_t size)
{
    std::ofstream out(path, std::ios::binary);
    out.write(static_cast<const char*>(data), static_cast<std::streamsize>(size));
}

std::string quoted(const std::string& word)
{
    return "'" + word + "'";
}

std::string outputOf(const std::string& command, int& status)
{
    std::FILE* pipe = ::popen((command + " 2>&1").c_str(), "r");
    std::string out;
    char part[4096];
    while (const std::size_t n = std::fread(part, 1, sizeof part, pipe))
        out.append(part, n);
    status = ::pclose(pipe);
    return out;
}

}  // namespace

std::string copyOut(MemoryFileSystem& files, const std::string& folder)
{
    std::string made = (std::filesystem::temp_directory_path() / "velnor-random-XXXXXX").string();
    if (!::mkdtemp(made.data()))
        throw std::runtime_error("no scratch folder");
    for (const FileInfo& info : files.list(folder)) {
        if (info.folder)
            continue;
        const auto content = files.content(folder + "\\" + info.name);
        writeFile(std::filesystem::path(made) / info.name, content.data(), content.size());
    }
    return made;
}

std::function<std::string(MemoryFileSystem&, const std::string&)>
outsideJudge(const std::string& kind, const std::string& folder, const std::string& file,
             const std::string& table)
{
    const char* tools = std::getenv("VELNOR_TOOLS");
    const char* script = std::getenv("VELNOR_JUDGE");
    if (!tools || !script || !std::filesystem::exists(tools))
        return {};
    const char* python = std::getenv("VELNOR_PYTHON");
    const std::string command = std::string(python ? python : "python3") + " " + quoted(script) + " " + kind + " ";
    return [=](MemoryFileSystem& files, const std::string& expected) -> std::string {
        const std::string made = copyOut(files, folder);
        const std::string list = made + "/expected.csv";
        writeFile(list, expected.data(), expected.size());
        int status = 0;
        std::string said = outputOf(
            command + quoted(made + "/" + file) + " " + quoted(table) + " " + quoted(list), status);
        if (status == 0) {
            std::filesystem::remove_all(made);
            return {};
        }
        return said + "\nthe files are kept in " + made;
    };
}

}  // namespace velnor::testing
