#include "tests/support/sandbox.h"

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <stdexcept>

#include "platform/paths.h"

namespace velnor::testing {
namespace {

std::string makeTemporaryFolder()
{
    std::string name = (std::filesystem::temp_directory_path() / "velnor-test-XXXXXX").string();
    if (!mkdtemp(name.data()))
        throw std::runtime_error("no temporary folder can be made");
    return name;
}

HostPaths pathsOn(const std::string& root)
{
    HostPaths paths = HostPaths::empty();
    paths.mount("C:", root);
    return paths;
}

}  // namespace

LocalTime FixedClock::local(std::int64_t secondsUtc) const
{
    const std::time_t seconds = secondsUtc;
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    return {parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday,
            parts.tm_hour,        parts.tm_min,     parts.tm_sec};
}

bool RecordingDesktop::openWith(std::string_view pathOrAddress)
{
    opened.emplace_back(pathOrAddress);
    return hasPrograms;
}

bool RecordingDesktop::moveToTrash(std::string_view path)
{
    if (!hasTrash)
        return false;
    velnor::host().files->remove(path);
    trashed.emplace_back(path);
    return true;
}

Sandbox::Sandbox()
    : root_(makeTemporaryFolder()), paths_(pathsOn(root_)),
      files_(makeLinuxFileSystem(paths_)), host_{files_.get(), &clock_, &desktop_, &paths_, "C:\\"},
      before_(&velnor::host())
{
    setHost(&host_);
}

Sandbox::~Sandbox()
{
    setHost(before_);
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
}

void Sandbox::useFiles(FileSystem* files)
{
    host_.files = files ? files : files_.get();
}

void Sandbox::write(std::string_view path, std::string_view content)
{
    makeFolders(paths::folder(path));
    const auto file = files_->open(path, OpenMode::Replace);
    file->writeAt(0, {reinterpret_cast<const std::uint8_t*>(content.data()), content.size()});
}

std::string Sandbox::read(std::string_view path) const
{
    const auto file = files_->open(path, OpenMode::Read);
    std::string content(file->size(), '\0');
    file->readAt(0, {reinterpret_cast<std::uint8_t*>(content.data()), content.size()});
    return content;
}

void Sandbox::makeFolders(std::string_view path)
{
    if (!path.empty())
        std::filesystem::create_directories(paths_.toNative(path));
}

void Sandbox::copyIn(std::string_view nativeFile, std::string_view path)
{
    makeFolders(paths::folder(path));
    std::filesystem::copy_file(nativeFile, paths_.toNative(path),
                               std::filesystem::copy_options::overwrite_existing);
}

}  // namespace velnor::testing
