// Runs a program that must come to an end, and writes down what it took: the program that
// runBounded() starts. It is small, because the memory of whoever starts a program counts as the
// program's own.
//
//     boundedRunner REPORT OUTPUT ERROR SECONDS PROGRAM ARGUMENT...
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

namespace {

constexpr int kMinute = 60'000; // milliseconds

std::string schedule(pid_t process) {
    std::ifstream stream("/proc/" + std::to_string(process) + "/schedstat");
    return {std::istreambuf_iterator<char>(stream), {}};
}

// Waits until the child has ended, or for so long as a whole minute goes by without it using the
// processor: a busy machine is not a hang.
bool endsByItself(pid_t child) {
    const auto watched = static_cast<int>(syscall(SYS_pidfd_open, child, 0));
    bool ended = false;
    for (std::string before = "none", now; !ended && before != now;) {
        before = schedule(child);
        pollfd one{watched, POLLIN, 0};
        ended = poll(&one, 1, kMinute) > 0;
        now = schedule(child);
    }
    close(watched);
    return ended;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 6)
        return 2;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    constexpr int kFlags = O_WRONLY | O_CREAT | O_TRUNC;
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, argv[2], kFlags, 0600);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, argv[3], kFlags, 0600);
    pid_t child = -1;
    if (posix_spawn(&child, argv[5], &actions, nullptr, argv + 5, environ) != 0)
        return 2;
    posix_spawn_file_actions_destroy(&actions);
    const rlim_t seconds = std::strtoul(argv[4], nullptr, 10);
    const rlimit limit{seconds, seconds};
    prlimit(child, RLIMIT_CPU, &limit, nullptr);

    const bool hung = !endsByItself(child);
    if (hung)
        kill(child, SIGKILL);
    int status = 0;
    rusage usage = {};
    while (wait4(child, &status, 0, &usage) < 0 && errno == EINTR)
        continue;
    std::ofstream report(argv[1]);
    report << hung << ' ' << (WIFEXITED(status) ? WEXITSTATUS(status) : -1) << ' '
           << (WIFSIGNALED(status) ? WTERMSIG(status) : 0) << ' ' << usage.ru_maxrss << '\n';
    return report ? 0 : 2;
}
