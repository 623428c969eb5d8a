// Compacting: a copy without what was deleted, under another name.
#include "access/formats/jet/create_database.h"
#include "access/formats/jet/fresh_file.h"
#include "access/formats/jet/jet_driver.h"
#include "access/formats/jet/rebuild.h"
#include "access/formats/jet/whole_file.h"

namespace velnor::jet {
namespace {

constexpr int kPlainOption = 4, kJet4Option = 64;

/// Alone: nobody else may write while it is read. A file that may only be read cannot be written by
/// anybody.
std::unique_ptr<JetFile> openAlone(FileSystem& files, OpenRequest request)
{
    request.readOnly = false;
    try {
        return std::make_unique<JetFile>(files, request);
    } catch (const EngineError& error) {
        if (error.code() != EngineErrorNumber::CannotOpen &&
            error.code() != EngineErrorNumber::ReadOnly)
            throw;
    }
    request.readOnly = true;
    return std::make_unique<JetFile>(files, request);
}

std::uint32_t keyFor(const JetFile& source, int options)
{
    if (options & kPlainOption)
        return 0;
    if ((options & kEncodeOption) && source.header().key == 0)
        return newEncodingKey();
    return source.header().key;
}

void refuseConversion(const JetFile& source, int options)
{
    const int wanted = options & kOlderVersionOption ? 3 : options & kJet4Option ? 4 : 0;
    if (wanted != 0 && wanted != source.format().version)
        throw EngineError(EngineErrorNumber::NotSupported,
                          "A copy has the version of its source; \"" + source.path() +
                              "\" cannot be converted.");
}

}  // namespace

void JetDriver::compact(FileSystem& files, const OpenRequest& from, const CreateRequest& to) const
{
    if (files.exists(to.name))
        throw EngineError(EngineErrorNumber::DatabaseExists,
                          "Database \"" + to.name + "\" already exists.");
    const auto source = openAlone(files, from);
    refuseConversion(*source, to.options);
    const auto password = to.keepPassword ? std::nullopt : std::optional<std::string>(to.password);
    const auto pages = freshPages(*source, keyFor(*source, to.options), password);
    makeWholeFile(files, to.name, pages, [&](const std::string& sibling) {
        OpenRequest request;
        request.name = sibling;
        request.readOnly = false;
        request.password = password.value_or(from.password);
        request.codePage = from.codePage;
        JetFile target(files, request, false);
        Rebuild(*source, target).run();
    });
}

}  // namespace velnor::jet
