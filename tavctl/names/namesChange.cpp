#include "tavctl/names/namesChange.h"

#include "platform/earlyEnd.h"
#include "platform/utf8Path.h"
#include "source/terminalNumbers.h"
#include "tavctl/host/hostSession.h"
#include "tavctl/host/nameFile.h"
#include "tavctl/host/namesBefore.h"
#include "tavctl/names/nameCheck.h"
#include "tavctl/names/namedDevices.h"
#include "tavctl/words/document.h"
#include "tavctl/words/failure.h"
#include "tavctl/words/nearestName.h"
#include "tavctl/words/print.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tavctl {

namespace {

namespace fs = std::filesystem;
using nZoTavManagerPciPlugin_15_0::withoutDigits;

// Of the texts that a host can ask for.
constexpr std::size_t kLongestName = 255;

// The name file that a change is made in. It belongs to nobody else from reading to writing.
class ChangedNames {
public:
    ChangedNames(const char* operation, const HostSetup& setup)
        : operation_(operation), path_(nameFilePath(setup)),
          lock_(std::make_unique<NameLock>(path_, NameLock::Purpose::writing)), file_(path_, true) {
    }

    [[noreturn]] void refuse(const std::string& name, const std::string& reason,
                             const std::string& hint = {}) const {
        throw FailureException({operation_, name, reason, {}, {}, hint}, ExitStatus::problemFound);
    }

    // The only entry with this name; null for none.
    [[nodiscard]] const NameEntry* find(const std::string& name) const {
        const NameEntry* only = nullptr;
        for (const NameEntry& entry : file_.entries()) {
            if (entry.terminalName != name)
                continue;
            if (only != nullptr)
                refuse(name,
                       fmt::format("{} and {} both have this name", only->slotPath, entry.slotPath),
                       "tavctl names check");
            only = &entry;
        }
        return only;
    }

    [[nodiscard]] NameEntry require(const std::string& name) const {
        if (const NameEntry* const entry = find(name))
            return *entry;
        std::vector<std::string> names;
        for (const NameEntry& entry : file_.entries())
            names.push_back(entry.terminalName);
        const std::string near = nearestName(name, names);
        refuse(name,
               "no slot has this name" +
                   (near.empty() ? std::string()
                                 : fmt::format("; did you mean {}?", tavctl::inQuotes(near))));
    }

    void rename(const NameEntry& entry, const std::string& newName) {
        file_.rename(entry.slotPath, newName);
    }
    void forget(const NameEntry& entry) { file_.forget(entry.slotPath); }

    void write() const {
        const platform::EarlyEndHeldBack untilWritten;
        keepNamesBefore(path_);
        file_.write(path_);
    }

    [[nodiscard]] std::string path() const { return platform::utf8Text(path_); }

private:
    const char* operation_;
    fs::path path_;
    std::unique_ptr<const NameLock> lock_;
    NameFile file_;
};

void requireMadeOfSameBase(const ChangedNames& names, const std::string& from,
                           const std::string& to) {
    const std::string base = withoutDigits(from);
    if (!isMadeName(to) || withoutDigits(to) != base)
        names.refuse(from, fmt::format("{} is not its base {} and a number from 1 upwards, by "
                                       "which a host would know it again",
                                       tavctl::inQuotes(to), tavctl::inQuotes(base)));
    if (to.size() > kLongestName)
        names.refuse(from, fmt::format("the new name has more than {} bytes", kLongestName));
}

std::string documentOf(const char* what, Json list) {
    Json document = newDocument();
    document.add(what, std::move(list));
    return document.line();
}

Json renamedJson(const NameEntry& entry, const std::string& to) {
    return Json{{"from", entry.terminalName}, {"to", to}, {"slotPath", entry.slotPath}};
}

} // namespace

ExitStatus renameName(const NamesOptions& options) {
    const HostSetup setup(options.common);
    ChangedNames names("rename a terminal name", setup);
    const NameEntry from = names.require(options.name);
    const std::string& to = options.newName;
    Json renamed = Json::array();
    std::string sentence;
    if (to == from.terminalName) {
        complain(fmt::format("nothing to rename: {} is the name of {} already", to, from.slotPath));
    } else {
        requireMadeOfSameBase(names, from.terminalName, to);
        const NameEntry* const other = names.find(to);
        if (other != nullptr && !options.swap)
            names.refuse(from.terminalName, fmt::format("{} is the name of {}; --swap exchanges "
                                                        "the two names",
                                                        to, other->slotPath));
        if (other == nullptr && options.swap)
            names.refuse(from.terminalName,
                         fmt::format("no slot has the name {} to exchange it with; without --swap "
                                     "it is given",
                                     to));
        sentence =
            other == nullptr
                ? fmt::format("renamed {} to {}: {}\n", from.terminalName, to, names.path())
                : fmt::format("exchanged {} and {}: {}\n", from.terminalName, to, names.path());
        renamed.push_back(renamedJson(from, to));
        if (other != nullptr) {
            renamed.push_back(renamedJson(*other, from.terminalName));
            names.rename(*other, from.terminalName);
        }
        names.rename(from, to);
        names.write();
    }
    print(options.common.json ? documentOf("renamed", std::move(renamed)) : sentence);
    return ExitStatus::done;
}

ExitStatus forgetName(const NamesOptions& options) {
    const HostSetup setup(options.common);
    // The search for devices takes turns with hosts by the lock, too.
    const NamedDevices devices = options.force ? NamedDevices() : namedDevices(options, setup);
    ChangedNames names("forget a terminal name", setup);
    const NameEntry entry = names.require(options.name);
    const std::string device =
        entry.model.empty() ? entry.slotPath : fmt::format("{}, {}", entry.model, entry.slotPath);
    if (!options.force && (devices.known() == nullptr ||
                           presenceOf(entry, *devices.known()) == NamePresence::present))
        names.refuse(entry.terminalName,
                     fmt::format("{}its device ({}) would be given a new name; --force forgets it "
                                 "all the same",
                                 devices.caveat(), device));
    names.forget(entry);
    names.write();
    Json forgotten = Json::array();
    forgotten.push_back(
        Json{{"name", entry.terminalName}, {"model", entry.model}, {"slotPath", entry.slotPath}});
    print(options.common.json
              ? documentOf("forgotten", std::move(forgotten))
              : fmt::format("forgot {} ({}): {}\n", entry.terminalName, device, names.path()));
    return ExitStatus::done;
}

} // namespace tavctl
