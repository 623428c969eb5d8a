// access/model/workspace.cpp - Workspace of engine.h, and what is done to whole files.

#include "access/model/connect_string.h"
#include "access/model/database_state.h"
#include "access/model/open_stores.h"
#include "platform/paths.h"

namespace velnor {
namespace {

const Driver& driverFor(const std::string& word)
{
    const Driver* driver = findDriver(word);
    if (!driver)
        throw EngineError(EngineErrorNumber::NoDriver, "There is no driver for \"" + word + "\".");
    return *driver;
}

std::optional<FileInfo> infoOf(FileSystem& files, std::string_view path)
{
    try {
        return files.info(path);
    } catch (const RunError&) {
        return std::nullopt;  // a drive that is not there, a text that is no path
    }
}

/// 3044 when the folder is not there, 3024 when the file is not.
void requirePlace(FileSystem& files, const std::string& name, bool folder)
{
    const auto found = infoOf(files, name);
    if (found && found->folder == folder)
        return;
    const auto parent = infoOf(files, paths::folder(name));
    if (folder || !parent || !parent->folder)
        throw EngineError(EngineErrorNumber::PathInvalid, "Not a valid path: " + name + ".");
    throw EngineError(EngineErrorNumber::FileNotFound, "Could not find the file: " + name + ".");
}

EngineErrorNumber engineNumber(RunErrorNumber number)
{
    switch (number) {
    case RunErrorNumber::FileNotFound:
        return EngineErrorNumber::FileNotFound;
    case RunErrorNumber::PathNotFound:
    case RunErrorNumber::DeviceUnavailable:
    case RunErrorNumber::BadFileName:
        return EngineErrorNumber::PathInvalid;
    case RunErrorNumber::DiskFull:
        return EngineErrorNumber::DiskFull;
    default:
        return EngineErrorNumber::CannotOpen;
    }
}

/// Opening fails with the engine's numbers, also where a file does.
template <class Step> auto withEngineNumbers(Step step)
{
    try {
        return step();
    } catch (const RunError& e) {
        throw EngineError(engineNumber(e.code()), e.what());
    }
}

OpenRequest requestFor(std::string_view name, const model::ConnectString& connect)
{
    OpenRequest request;
    request.name = name;
    request.connectWord = connect.word;
    request.password = connect.password;
    request.codePage = connect.codePage;
    request.options = connect.options;
    return request;
}

void requireFree(FileSystem& files, std::string_view name)
{
    if (model::isOpen(files, name))
        throw EngineError(EngineErrorNumber::ExclusiveUse,
                          "The file is in use: " + std::string(name) + ".");
}

void requireNone(FileSystem& files, std::string_view name)
{
    if (infoOf(files, name))
        throw EngineError(EngineErrorNumber::DatabaseExists,
                          "The database exists already: " + std::string(name) + ".");
}

/// What opens a file that is to be repaired: by its extension.
std::string wordOfFile(std::string_view name)
{
    return paths::sameName(paths::extension(name), "DBF") ? "FoxPro 3.0;" : "";
}

/// A step on a whole file: where another program holds it, the answer is 3356.
template <class Step> void onWholeFile(Step step)
{
    try {
        withEngineNumbers(step);
    } catch (const EngineError& e) {
        if (e.code() != EngineErrorNumber::FileInUse)
            throw;
        throw EngineError(EngineErrorNumber::ExclusiveUse, e.what());
    }
}

}  // namespace

const char* const kGeneralLocale = ";LANGID=0x0409;CP=1252;COUNTRY=0";

Workspace::Workspace(FileSystem& files) : files_(files) {}
Workspace::~Workspace() = default;

Database Workspace::OpenDatabase(std::string_view name, bool exclusive, bool readOnly,
                                 std::string_view connect)
{
    const model::ConnectString parts = model::parseConnect(connect);
    const Driver& driver = driverFor(parts.word);
    OpenRequest request = requestFor(name, parts);
    request.exclusive = exclusive;
    request.readOnly = readOnly;
    requirePlace(files_, request.name, driver.traits(parts.word).folder);
    auto store = withEngineNumbers([&] { return model::openStore(files_, driver, request); });
    return Database(std::make_shared<model::DatabaseState>(std::string(name), std::string(connect),
                                                           readOnly, std::move(store)));
}

Database Workspace::CreateDatabase(std::string_view name, std::string_view locale, int options)
{
    const model::ConnectString parts = model::parseCreation(locale);
    const Driver& driver = driverFor(parts.word);
    requireNone(files_, name);
    CreateRequest request;
    request.name = name;
    request.connectWord = parts.word;
    request.locale = locale.empty() ? kGeneralLocale : locale;
    request.options = options;
    request.password = parts.password;
    withEngineNumbers([&] { driver.create(files_, request); });
    return OpenDatabase(name, false, false,
                        parts.word + (parts.password.empty() ? "" : ";pwd=" + parts.password));
}

void CompactDatabase(FileSystem& files, std::string_view source, std::string_view destination,
                     std::string_view locale, int options, std::string_view connect)
{
    const model::ConnectString parts = model::parseConnect(connect);
    const Driver& driver = driverFor(parts.word);
    requirePlace(files, std::string(source), false);
    if (driver.traits(parts.word).folder) {
        requireFree(files, paths::folder(source));
    } else {
        requireFree(files, source);
        requireNone(files, destination);
    }
    OpenRequest from = requestFor(source, parts);
    from.exclusive = true;
    const model::ConnectString wanted = model::parseConnect(locale);
    CreateRequest to;
    to.name = destination;
    to.locale = locale;
    to.options = options;
    to.keepPassword = !wanted.hasPassword;
    to.password = to.keepPassword ? parts.password : wanted.password;
    onWholeFile([&] { driver.compact(files, from, to); });
}

void RepairDatabase(FileSystem& files, std::string_view name,
                    const std::function<void(const Database::Finding&)>& report)
{
    const std::string word = wordOfFile(name);
    const Driver& driver = driverFor(word);
    requirePlace(files, std::string(name), false);
    requireFree(files, driver.traits(word).folder ? paths::folder(name) : name);
    OpenRequest request;
    request.name = name;
    request.connectWord = word;
    request.readOnly = false;
    request.exclusive = true;
    const ProblemSink tell = [&report](const Problem& problem) {
        if (report)
            report({problem.where, problem.text, problem.harmless});
    };
    onWholeFile([&] { driver.repair(files, request, tell); });
}

}  // namespace velnor
