#include "tests/support/program.h"

#include "tests/support/fileText.h"
#include "tests/support/temporaryFolder.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace testsupport {

namespace {} // namespace

struct RunningProgram::State {
    TemporaryFolder folder;
    pid_t child = -1;
};

RunningProgram::RunningProgram(const std::filesystem::path& program,
                               const std::vector<std::string>& arguments)
    : state_(new State) {
    std::vector<std::string> words{program.string()};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    for (std::string& word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);

    const std::string output = (state_->folder.path() / "output").string();
    const std::string error = (state_->folder.path() / "error").string();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    constexpr int kFlags = O_WRONLY | O_CREAT | O_TRUNC;
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(), kFlags, 0600);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, error.c_str(), kFlags, 0600);
    const int code = posix_spawn(&state_->child, words.front().c_str(), &actions, nullptr,
                                 pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (code != 0) {
        delete state_;
        throw std::runtime_error("cannot run " + program.string());
    }
}

RunningProgram::~RunningProgram() {
    if (state_->child > 0)
        wait();
    delete state_;
}

ProgramResult RunningProgram::wait() {
    int status = 0;
    while (waitpid(state_->child, &status, 0) < 0 && errno == EINTR)
        continue;
    state_->child = -1;
    ProgramResult result;
    if (WIFEXITED(status))
        result.exitStatus = WEXITSTATUS(status);
    result.output = fileText(state_->folder.path() / "output");
    result.error = fileText(state_->folder.path() / "error");
    return result;
}

ProgramResult runProgram(const std::filesystem::path& program,
                         const std::vector<std::string>& arguments) {
    return RunningProgram(program, arguments).wait();
}

} // namespace testsupport
