#include "fuzz/pluginMachine.h"

#include "fuzz/busText.h"
#include "fuzz/expect.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

namespace fuzz {

namespace {

constexpr std::string_view kBus = "%bus\n";
constexpr std::string_view kDump = "%dump\n";
constexpr std::string_view kDescription = "%description\n";
constexpr std::string_view kNames = "%names\n";

// Where the next part begins, or the end.
std::size_t endOfPart(std::string_view text) {
    if (text.starts_with('%'))
        return 0;
    return std::min(text.find("\n%"), text.size() - 1) + 1;
}

} // namespace

PluginInput readPluginInput(std::string_view input) {
    PluginInput result;
    while (!input.empty()) {
        std::string_view kind;
        for (const std::string_view each : {kBus, kDump, kDescription, kNames})
            if (input.starts_with(each))
                kind = each;
        input.remove_prefix(kind.empty() ? 1 : kind.size());
        const std::string_view part = input.empty() ? input : input.substr(0, endOfPart(input));
        input.remove_prefix(part.size());
        if (kind == kBus)
            result.dump = dumpOf(readBusText(part));
        else if (kind == kDump)
            result.dump = part;
        else if (kind == kDescription && result.descriptions.size() < kMostDescriptions)
            result.descriptions.push_back(part);
        else if (kind == kNames)
            result.names = part;
    }
    return result;
}

KeptFile::KeptFile(const std::string& path)
    : descriptor_(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR)) {
    expect(descriptor_ >= 0, "a file of the machine is made");
}

KeptFile::~KeptFile() {
    close(descriptor_);
}

void KeptFile::write(std::string_view content) const {
    expect(ftruncate(descriptor_, 0) == 0 && pwrite(descriptor_, content.data(), content.size(),
                                                    0) == static_cast<ssize_t>(content.size()),
           "a file of the machine is written");
}

std::string KeptFile::read() const {
    struct stat status = {};
    expect(fstat(descriptor_, &status) == 0, "a file of the machine is there");
    std::string content(static_cast<std::size_t>(status.st_size), '\0');
    expect(pread(descriptor_, content.data(), content.size(), 0) == status.st_size,
           "a file of the machine is read");
    return content;
}

PluginMachine::Side::Side(const testsupport::TemporaryFolder& folder, std::size_t count) {
    const std::string name = std::to_string(count);
    const std::string path = folder.path().string() + "/" + name + "/";
    const std::string descriptions = path + "PCI Hardware Descriptions/";
    std::filesystem::create_directories(descriptions);
    for (std::size_t i = 0; i < count; ++i)
        files.push_back(std::make_unique<KeptFile>(descriptions + std::to_string(i) + ".ini"));
    const std::string text = "[SOFTWARE\\Quorvane\\TAV Manager\\CurrentVersion]\nPath = " + path +
                             "\nConfigPath = " + folder.path().string() + "/\n";
    configuration = "TAV_MANAGER_CONF=" + folder.file(name + ".conf", text).string();
}

PluginMachine::PluginMachine()
    : dumpVariable_("TAV_PCI_DUMP=" + (folder_.path() / "bus.dump").string()),
      dump_(folder_.path() / "bus.dump"),
      names_(folder_.path() / "zotavpci.ini"), sides_{Side(folder_, 0), Side(folder_, 1),
                                                      Side(folder_, 2), Side(folder_, 3)} {
    putenv(dumpVariable_.data());
}

void PluginMachine::show(const PluginInput& input) {
    dump_.write(input.dump);
    names_.write(input.names);
    Side& side = sides_[input.descriptions.size()];
    for (std::size_t i = 0; i < side.files.size(); ++i)
        side.files[i]->write(input.descriptions[i]);
    // Unlike a copy of the text, the text itself costs no memory with each run.
    putenv(side.configuration.data());
}

} // namespace fuzz
