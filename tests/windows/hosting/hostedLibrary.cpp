// A library of a test's own with what the compiler's run-time needs of a library that is loaded and
// unloaded, so that the test can use each part of it.
#include <windows.h>

#include <mutex>
#include <stdexcept>
#include <string>

namespace {

thread_local int own = 0;

std::mutex countLock;
int counted = 0;

int timesMade = 0;

struct Slow {
    Slow() {
        static const int inner = ++timesMade; // one that is made while another one is
        Sleep(50);
        value = 10 * timesMade + inner;
    }
    int value = 0;
};

[[gnu::noinline]] void throwText(int value) {
    throw std::runtime_error(std::to_string(value));
}

} // namespace

// Sets the calling thread's own value and answers the one before.
extern "C" __declspec(dllexport) int hostedExchange(int value) {
    const int before = own;
    own = value;
    return before;
}

// Answers the value, which is raised and caught on its way.
extern "C" __declspec(dllexport) int hostedRaise(int value) {
    try {
        throwText(value);
    } catch (const std::runtime_error& error) {
        return std::stoi(error.what());
    }
    return -1;
}

// Counts, one thread at a time, and answers the count.
extern "C" __declspec(dllexport) int hostedCount(int times) {
    for (int i = 0; i < times; ++i) {
        const std::lock_guard lock(countLock);
        const volatile int before = counted;
        counted = before + 1;
    }
    const std::lock_guard lock(countLock);
    return counted;
}

// Answers 11 when what all threads share was made once.
extern "C" __declspec(dllexport) int hostedShared() {
    static const Slow slow;
    return slow.value;
}
