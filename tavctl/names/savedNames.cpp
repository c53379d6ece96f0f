#include "tavctl/names/savedNames.h"

#include "platform/earlyEnd.h"
#include "platform/entryType.h"
#include "platform/utf8Path.h"
#include "tavctl/host/hostSession.h"
#include "tavctl/host/nameFile.h"
#include "tavctl/host/namesBefore.h"
#include "tavctl/names/nameLoss.h"
#include "tavctl/names/nameReport.h"
#include "tavctl/names/namedDevices.h"
#include "tavctl/words/document.h"
#include "tavctl/words/failure.h"
#include "tavctl/words/print.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

namespace tavctl {

namespace {

namespace fs = std::filesystem;

void report(const NamesOptions& options, const char* what, std::size_t count,
            const std::string& where) {
    if (options.common.json) {
        Json whole = newDocument();
        whole.add(what, count);
        print(whole.line());
    } else
        print(fmt::format("{} {}: {}\n", what, counted(count, "name"), where));
}

[[noreturn]] void refuseToRestore(const NamesOptions& options, const std::string& reason) {
    throw FailureException({"restore terminal names", options.file, reason, {}, {}},
                           ExitStatus::problemFound);
}

void requireNames(const NamesOptions& options, const NameFile& source) {
    const auto problems = checkNames(source, nullptr);
    complainInLines(problemsAsText(problems, options.file));
    if (!problems.empty())
        refuseToRestore(options, "these are not names as they are stored; --force takes them");
    if (source.entries().empty())
        refuseToRestore(options, "it has no names; --force restores it and forgets all of them");
}

// The stored names, for comparing; a file that holds none that can be read has none to lose.
NameFile storedIfReadable(const fs::path& path) {
    try {
        return {path, true};
    } catch (const FailureException& exception) {
        complain(exception.what());
        return {};
    }
}

void requireNoLoss(const NamesOptions& options, const NamedDevices& devices, const fs::path& path,
                   const NameFile& source) {
    const auto losses = lostNames(storedIfReadable(path), devices.known(), source);
    if (losses.empty())
        return;
    refuseToRestore(options,
                    devices.caveat() + lossesAsText(losses) + "; --force restores it all the same");
}

} // namespace

ExitStatus backUpNames(const NamesOptions& options) {
    const HostSetup setup(options.common);
    const fs::path path = nameFilePath(setup);
    if (!options.force && fs::exists(fs::file_status(platform::typeOfEntry(options.file))))
        throw FailureException({"back up terminal names",
                                options.file,
                                "the file exists; --force replaces it",
                                {},
                                {}});
    const NameLock lock(path, NameLock::Purpose::reading);
    const NameFile file(path, false);
    file.write(platform::utf8Path(options.file));
    report(options, "saved", file.entries().size(), options.file);
    return ExitStatus::done;
}

ExitStatus restoreNames(const NamesOptions& options) {
    const HostSetup setup(options.common);
    const fs::path path = nameFilePath(setup);
    const NameFile source(platform::utf8Path(options.file), false);
    if (!options.force)
        requireNames(options, source);
    // The search for devices takes turns with hosts by the lock, too.
    const NamedDevices devices = options.force ? NamedDevices() : namedDevices(options, setup);
    const NameLock lock(path, NameLock::Purpose::writing);
    if (source.isContentOf(path)) {
        complain(fmt::format("nothing to restore: {} holds these names already",
                             platform::utf8Text(path)));
        report(options, "restored", 0, platform::utf8Text(path));
        return ExitStatus::done;
    }
    if (!options.force)
        requireNoLoss(options, devices, path, source);
    {
        const platform::EarlyEndHeldBack untilWritten;
        keepNamesBefore(path);
        source.write(path);
    }
    report(options, "restored", source.entries().size(), platform::utf8Text(path));
    return ExitStatus::done;
}

ExitStatus undoLastChange(const NamesOptions& options) {
    const HostSetup setup(options.common);
    const fs::path path = nameFilePath(setup);
    const NameLock lock(path, NameLock::Purpose::writing);
    {
        const platform::EarlyEndHeldBack untilWritten;
        undoNames(path);
    }
    report(options, "restored", storedIfReadable(path).entries().size(), platform::utf8Text(path));
    return ExitStatus::done;
}

} // namespace tavctl
