#include "tests/source/support/folderFilesystem.h"

#include <gtest/gtest.h>

#include <fstream>
#include <stdexcept>
#include <utility>

namespace testsupport {

namespace fs = std::filesystem;

FolderFilesystem::~FolderFilesystem() {
    if (locked_)
        ADD_FAILURE() << "the lock is still held";
}

fs::path FolderFilesystem::nameFile() const {
    return folder() / "zotavpci.ini";
}

fs::path FolderFilesystem::lockFile() const {
    return folder() / "zotavpci.loc";
}

std::vector<std::string> FolderFilesystem::names() const {
    std::ifstream stream(nameFile(), std::ios::binary);
    if (!stream)
        throw std::logic_error("there is no name file");
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
        if (line.ends_with('\r'))
            line.pop_back();
        if (!line.empty())
            lines.push_back(line);
    }
    return lines;
}

void FolderFilesystem::setNames(const std::string& text) const {
    if (locked_)
        throw std::logic_error("the names are in use");
    static_cast<void>(folder_.file("zotavpci.ini", text));
}

void FolderFilesystem::note(std::string call) {
    calls_.push_back(std::move(call));
    if (onCall)
        onCall(calls_.back());
}

// Nothing outside the folder is touched; the name begins right behind the folder's text.
std::string FolderFilesystem::nameInFolder(const std::string& path) const {
    const std::string prefix = folder().generic_string() + "/";
    const std::string whole = fs::path(path).generic_string();
    if (!whole.starts_with(prefix)) {
        ADD_FAILURE() << "outside the folder: " << path;
        return path;
    }
    return whole.substr(prefix.size());
}

std::string FolderFilesystem::GetDescriptionFilePattern() {
    ADD_FAILURE() << "models come from a table here";
    return {};
}

std::string FolderFilesystem::GetConfigPath() {
    note("GetConfigPath");
    return folder().string() + "/";
}

int FolderFilesystem::EnsureFileExists(const std::string& path) {
    note("EnsureFileExists " + nameInFolder(path));
    const std::ofstream stream(path, std::ios::binary | std::ios::app);
    return stream ? 0 : 1;
}

void FolderFilesystem::LockFile(const std::string& path) {
    if (locked_)
        ADD_FAILURE() << "the lock is held already";
    note("LockFile " + nameInFolder(path));
    if (!fs::exists(path))
        ADD_FAILURE() << "only a file that exists can be locked: " << path;
    locked_ = true;
}

void FolderFilesystem::UnlockFile() {
    if (!locked_)
        ADD_FAILURE() << "the lock is not held";
    locked_ = false;
    note("UnlockFile");
}

void FolderFilesystem::ListFiles(const std::string&, std::vector<std::string>&) {
    ADD_FAILURE() << "models come from a table here";
}

} // namespace testsupport
