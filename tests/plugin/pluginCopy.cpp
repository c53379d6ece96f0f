#include "tests/plugin/pluginCopy.h"

#include "tests/support/fileText.h"
#include "tests/support/libraryFolder.h"

#include <fstream>
#include <iterator>

namespace testplugin {

namespace fs = std::filesystem;

SampleMachine::SampleMachine()
    : machine_(kSampleDump, {kSampleDescriptions.string() + "/", folder_.path().string() + "/"}) {}

std::string SampleMachine::names() const {
    return testsupport::fileTextIfAny(state() / "zotavpci.ini");
}

PluginCopy::PluginCopy() {
    fs::copy_file(ZOTAVPCI_FILE, plugin());
    fs::copy_file(ZOPCIBRD_FILE, bridgeLibrary());
    testsupport::findLibrariesIn(folder_.path());
    load(library_, plugin().string());
}

fs::path PluginCopy::bridgeLibrary() const {
    return folder_.path() / fs::path(ZOPCIBRD_FILE).filename();
}

fs::path PluginCopy::plugin() const {
    return folder_.path() / fs::path(ZOTAVPCI_FILE).filename();
}

std::int64_t PluginCopy::countOrStatus() const {
    std::uint32_t count = 0;
    const std::int32_t status = getDeviceCount(&count);
    return status < 0 ? status : std::int64_t{count};
}

} // namespace testplugin
