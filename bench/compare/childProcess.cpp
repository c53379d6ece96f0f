#include "bench/compare/childProcess.h"

#include "bench/compare/stopwatch.h"
#include "bench/require.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>

extern char** environ;

namespace bench {

namespace {

std::string readAll(int descriptor) {
    std::string text;
    std::array<char, 4096> buffer{};
    for (ssize_t got = 0; (got = read(descriptor, buffer.data(), buffer.size())) > 0;)
        text.append(buffer.data(), static_cast<std::size_t>(got));
    return text;
}

} // namespace

ChildRun runChild(const std::vector<std::string>& arguments, bool keepsOutput) {
    std::vector<char*> pointers;
    for (const std::string& argument : arguments)
        pointers.push_back(const_cast<char*>(argument.c_str()));
    pointers.push_back(nullptr);
    std::array<int, 2> ends{-1, -1};
    require(!keepsOutput || pipe2(ends.data(), O_CLOEXEC) == 0, "no pipe");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (keepsOutput)
        posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    else
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);

    ChildRun run;
    int status = 0;
    run.seconds = secondsOf([&] {
        pid_t process = 0;
        require(posix_spawn(&process, pointers[0], &actions, nullptr, pointers.data(), environ) ==
                    0,
                "cannot start " + arguments[0]);
        if (keepsOutput) {
            close(ends[1]);
            run.output = readAll(ends[0]);
            close(ends[0]);
        }
        rusage usage = {};
        wait4(process, &status, 0, &usage);
        run.pages = static_cast<std::size_t>(usage.ru_minflt);
    });
    posix_spawn_file_actions_destroy(&actions);
    require(WIFEXITED(status) && WEXITSTATUS(status) == 0, arguments[0] + " failed");
    return run;
}

} // namespace bench
