#include "tests/system/systemCase.h"

#include "tests/support/configuredMachine.h"
#include "tests/support/fileText.h"
#include "tests/support/program.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <utility>

namespace testsystem {

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

const fs::path kProject = TAV_SOURCE_DIR;

void write(const fs::path& path, const std::string& text) {
    std::ofstream stream(path, std::ios::binary);
    stream << text;
    stream.close();
    if (!stream)
        throw std::runtime_error("cannot write " + path.string());
}

void replaceAll(std::string& text, const std::string& from, const std::string& to) {
    for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
}

// Folders are separated as on Linux, but for the sources that error records name.
void unifyPaths(std::string& text) {
    const std::string source = "file = ";
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        if (text.substr(at, end - at).find(source) == std::string::npos)
            std::replace(text.begin() + static_cast<std::ptrdiff_t>(at),
                         text.begin() + static_cast<std::ptrdiff_t>(end), '\\', '/');
        at = end + 1;
    }
}

// Lines of the product's own source change with every edit.
void hideLineNumbers(std::string& text) {
    const std::string key = " line = ";
    for (auto at = text.find(key); at != std::string::npos; at = text.find(key, at)) {
        at += key.size();
        text.erase(at, text.find('\n', at) - at);
        text.insert(at, 1, 'N');
    }
}

// A part of the case, or the one of the project that a ".path" file names.
fs::path partOrLink(const fs::path& folder, const std::string& part, const std::string& link) {
    if (fs::exists(folder / part))
        return folder / part;
    std::string target = testsupport::fileText(folder / link);
    target.erase(target.find_last_not_of('\n') + 1);
    return kProject / target;
}

} // namespace

SystemCase::SystemCase(fs::path folder)
    : folder_(std::move(folder)), bus_(partOrLink(folder_, "bus.dump", "bus.path")),
      descriptions_(partOrLink(folder_, "descriptions", "descriptions.path")) {
    if (testsupport::fileText(part("about.txt")).empty())
        throw std::runtime_error(folder_.string() + " does not say what it is about");
}

std::vector<SystemCase> SystemCase::all() {
    std::vector<fs::path> folders;
    for (const auto& entry : fs::directory_iterator(kProject / "tests" / "system" / "cases"))
        folders.push_back(entry.path());
    if (folders.empty())
        throw std::runtime_error("there are no whole-system cases");
    std::sort(folders.begin(), folders.end());
    return {folders.begin(), folders.end()};
}

std::string SystemCase::name() const {
    std::string name = folder_.filename().string();
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

fs::path SystemCase::part(const std::string& name) const {
    return folder_ / name;
}

bool SystemCase::expectsError() const {
    return fs::exists(part("expected-error.txt"));
}

std::string SystemCase::namesBefore() const {
    const fs::path file = part("names-before.ini");
    return fs::exists(file) ? testsupport::fileText(file) : std::string();
}

void SystemCase::prepare(const fs::path& state) const {
    if (fs::exists(part("names-before.ini")))
        fs::copy_file(part("names-before.ini"), state / "zotavpci.ini");
}

CaseResult SystemCase::run(const fs::path& state, bool json, Way way) const {
    std::vector<std::string> arguments{"list"};
    arguments.emplace_back(json ? "--json" : "--debug");
    std::optional<testsupport::ConfiguredMachine> machine;
    if (way == Way::configuration)
        machine.emplace(
            bus_, testsupport::Configuration{descriptions_.string() + "/", state.string() + "/"});
    else
        arguments.insert(arguments.end(),
                         {"--dump", bus_.string(), "--descriptions", descriptions_.string() + "/",
                          "--state", state.string() + "/"});
    const auto ran = testsupport::runProgram(TAVCTL_FILE, arguments);
    CaseResult result{ran.exitStatus, ran.output, ran.error, {}};
    unifyPaths(result.error);
    hideLineNumbers(result.error);
    replaceAll(result.error, "//", "/");
    replaceAll(result.error, kProject.generic_string(), "PROJECT");
    replaceAll(result.error, state.generic_string(), "STATE");
    if (fs::exists(state / "zotavpci.ini"))
        result.names = testsupport::fileText(state / "zotavpci.ini");
    return result;
}

std::string SystemCase::expectedOutput() const {
    return Json::parse(testsupport::fileText(part("expected.json"))).dump() + "\n";
}

std::string SystemCase::expectedError() const {
    return testsupport::fileText(part("expected-error.txt"));
}

std::string SystemCase::expectedNames() const {
    return testsupport::fileText(part("expected-names.ini"));
}

void SystemCase::rewrite(const CaseResult& listing, const CaseResult& plain) const {
    fs::remove(part("expected.json"));
    fs::remove(part("expected-error.txt"));
    if (listing.exitStatus == 0)
        write(part("expected.json"), Json::parse(listing.output).dump(2) + "\n");
    else
        write(part("expected-error.txt"), errorText(plain));
    write(part("expected-names.ini"), listing.names);
}

std::string errorText(const CaseResult& result) {
    return result.error + "exit status " + std::to_string(result.exitStatus) + "\n";
}

} // namespace testsystem
