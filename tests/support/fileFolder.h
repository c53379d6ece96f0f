// A temporary folder whose files a test reads and writes as texts, by their names.
#pragma once

#include "platform/utf8Path.h"
#include "tests/support/fileText.h"
#include "tests/support/temporaryFolder.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace testsupport {

class FileFolder {
public:
    // The path that a file of this name has or would have.
    [[nodiscard]] std::string file(const std::string& name) const {
        return platform::utf8Text(folder_.path() / platform::utf8Path(name));
    }

    // Answers the path.
    std::string write(const std::string& name, const std::string& content) const {
        return platform::utf8Text(folder_.file(name, content));
    }

    [[nodiscard]] std::string read(const std::string& name) const {
        return has(name) ? fileText(platform::utf8Path(file(name))) : "(no such file)";
    }

    [[nodiscard]] bool has(const std::string& name) const {
        return std::filesystem::exists(platform::utf8Path(file(name)));
    }

    [[nodiscard]] std::size_t fileCount() const {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator(folder_.path()), {}));
    }

private:
    TemporaryFolder folder_;
};

} // namespace testsupport
