// What reaches standard error, and in how many pieces.
#include "platform/debugOutput.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <string>

namespace {

// Standard error as a pipe that keeps the border between one write and the next: each read gives
// what one write has put in.
class PacketPipe {
public:
    PacketPipe() {
        EXPECT_EQ(pipe2(ends_, O_DIRECT | O_NONBLOCK), 0);
        before_ = dup(STDERR_FILENO);
        EXPECT_GE(dup2(ends_[1], STDERR_FILENO), 0);
    }
    ~PacketPipe() {
        dup2(before_, STDERR_FILENO);
        for (const int descriptor : {before_, ends_[0], ends_[1]})
            close(descriptor);
    }
    PacketPipe(const PacketPipe&) = delete;
    PacketPipe& operator=(const PacketPipe&) = delete;

    [[nodiscard]] std::string packet() const {
        char buffer[4096];
        const ssize_t size = read(ends_[0], buffer, sizeof buffer);
        return size < 0 ? "nothing" : std::string(buffer, static_cast<std::size_t>(size));
    }

private:
    int ends_[2] = {-1, -1};
    int before_ = -1;
};

TEST(DebugOutput, EachTextIsOneWrite) {
    const PacketPipe pipe;
    const std::string longest(511, 'x');
    platform::writeDebugOutput("[a] one\n[a] two\n");
    platform::writeDebugOutput(longest.c_str());
    const std::string first = pipe.packet();
    const std::string second = pipe.packet();
    const std::string third = pipe.packet();
    EXPECT_EQ(first, "[a] one\n[a] two\n");
    EXPECT_EQ(second, longest);
    EXPECT_EQ(third, "nothing");
}

TEST(DebugOutput, EmptyTextWritesNothing) {
    const PacketPipe pipe;
    platform::writeDebugOutput("");
    EXPECT_EQ(pipe.packet(), "nothing");
}

TEST(DebugOutput, LeavesTheLastErrorAsItWas) {
    const int before = dup(STDERR_FILENO);
    close(STDERR_FILENO);
    errno = ENOTDIR;
    platform::writeDebugOutput("nobody reads this");
    const int after = errno;
    dup2(before, STDERR_FILENO);
    close(before);
    EXPECT_EQ(after, ENOTDIR);
}

} // namespace
