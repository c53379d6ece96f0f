// A library in the place of libudev's, for the programs that a test starts, that tells what the
// test says.
#pragma once

#include "tests/support/environmentValue.h"
#include "tests/support/fileText.h"
#include "tests/support/temporaryFolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>
#include <string>

namespace testplatform {

class FakeUdevPipe {
public:
    FakeUdevPipe() {
        // To be opened for writing it needs nobody who reads.
        if (mkfifo(pipe().c_str(), S_IRUSR | S_IWUSR) != 0 ||
            (end_ = open(pipe().c_str(), O_RDWR | O_CLOEXEC)) < 0)
            throw std::runtime_error("no pipe");
    }
    ~FakeUdevPipe() { close(end_); }
    FakeUdevPipe(const FakeUdevPipe&) = delete;
    FakeUdevPipe& operator=(const FakeUdevPipe&) = delete;

    // A letter for each message: "d" for a device, "l" for messages that were lost.
    void tell(const std::string& letters) const {
        if (write(end_, letters.data(), letters.size()) != static_cast<ssize_t>(letters.size()))
            throw std::runtime_error("the pipe does not take it");
    }

    void endService() {
        close(end_);
        end_ = -1;
    }

    // What was asked of the library, a line each.
    [[nodiscard]] std::string log() const {
        const std::filesystem::path file = folder_.path() / "log";
        return std::filesystem::exists(file) ? testsupport::fileText(file) : std::string();
    }

private:
    [[nodiscard]] std::string pipe() const { return (folder_.path() / "pipe").string(); }

    testsupport::TemporaryFolder folder_;
    testsupport::EnvironmentValue library_{"LD_LIBRARY_PATH", FAKE_UDEV_FOLDER};
    testsupport::EnvironmentValue pipe_{"FAKE_UDEV_PIPE", pipe()};
    testsupport::EnvironmentValue log_{"FAKE_UDEV_LOG", (folder_.path() / "log").string()};
    int end_ = -1;
};

} // namespace testplatform
