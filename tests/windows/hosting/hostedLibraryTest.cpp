// What stands in for the compiler's library of threads in the product's libraries, in a library of
// the test's own: values of each thread, locks, and what is made once.
#include "tests/windows/hosting/processResources.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

class HostedLibrary {
public:
    explicit HostedLibrary(const char* file) : module_(LoadLibraryA(file)) {
        if (module_ == nullptr)
            throw std::runtime_error(std::string("cannot load ") + file);
        bind(exchange, "hostedExchange");
        bind(raise, "hostedRaise");
        bind(count, "hostedCount");
        bind(shared, "hostedShared");
    }
    ~HostedLibrary() { FreeLibrary(module_); }
    HostedLibrary(const HostedLibrary&) = delete;
    HostedLibrary& operator=(const HostedLibrary&) = delete;

    int (*exchange)(int) = nullptr;
    int (*raise)(int) = nullptr;
    int (*count)(int) = nullptr;
    int (*shared)() = nullptr;

private:
    template <typename Function>
    void bind(Function& function, const char* name) {
        function =
            reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module_, name)));
    }

    HMODULE module_;
};

constexpr int kThreads = 8;

template <typename Work>
void inThreads(Work work) {
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i)
        threads.emplace_back([&work, i] { work(i); });
    for (std::thread& thread : threads)
        thread.join();
}

// Stripped as the product is, and not: the names of its sections are others then.
class HostedLibraries : public testing::TestWithParam<const char*> {};

TEST_P(HostedLibraries, KeepAValueForEachThread) {
    const HostedLibrary library(GetParam());
    EXPECT_EQ(library.exchange(77), 0);
    std::atomic<int> wrong = 0;
    inThreads([&](int i) {
        wrong += library.exchange(i) == 0 ? 0 : 1;
        for (int n = 0; n < 100; ++n)
            wrong += library.exchange(i + n + 1) == i + n ? 0 : 1;
    });
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(library.exchange(0), 77);
}

TEST_P(HostedLibraries, LeaveTheSystemsLastErrorAlone) {
    const HostedLibrary library(GetParam());
    for (DWORD code = 1000; code < 1003; ++code) { // the first asks for the value's memory
        SetLastError(code);
        library.exchange(1);
        EXPECT_EQ(GetLastError(), code);
    }
}

TEST_P(HostedLibraries, RaiseInManyThreadsAtOnce) {
    const HostedLibrary library(GetParam());
    std::atomic<int> wrong = 0;
    inThreads([&](int i) {
        for (int n = 0; n < 50; ++n)
            wrong += library.raise(100 * i + n) == 100 * i + n ? 0 : 1;
    });
    EXPECT_EQ(wrong, 0);
}

TEST_P(HostedLibraries, LetOneThreadAtATimeHaveALock) {
    const HostedLibrary library(GetParam());
    constexpr int kTimes = 2000;
    inThreads([&](int) { library.count(kTimes); });
    EXPECT_EQ(library.count(0), kThreads * kTimes);
}

TEST_P(HostedLibraries, MakeWhatIsSharedOnce) {
    const HostedLibrary library(GetParam());
    std::atomic<int> wrong = 0;
    inThreads([&](int) { wrong += library.shared() == 11 ? 0 : 1; });
    EXPECT_EQ(wrong, 0);
}

TEST_P(HostedLibraries, StartAfreshWhenTheyAreLoadedAgain) {
    for (int load = 0; load < 3; ++load) {
        const HostedLibrary library(GetParam());
        EXPECT_EQ(library.exchange(load + 1), 0);
        EXPECT_EQ(library.count(1), 1);
        EXPECT_EQ(library.raise(5), 5);
    }
}

// A host is told by the loader, and not ended by the first exception.
TEST_P(HostedLibraries, AreNotLoadedWhereNoSlotIsLeft) {
    std::vector<DWORD> taken;
    for (DWORD slot = TlsAlloc(); slot != TLS_OUT_OF_INDEXES; slot = TlsAlloc())
        taken.push_back(slot);
    const HMODULE module = LoadLibraryA(GetParam());
    const DWORD code = GetLastError();
    for (const DWORD slot : taken)
        TlsFree(slot);
    EXPECT_EQ(module, nullptr);
    EXPECT_EQ(code, static_cast<DWORD>(ERROR_DLL_INIT_FAILED));
    const HostedLibrary library(GetParam());
    EXPECT_EQ(library.raise(5), 5);
}

TEST_P(HostedLibraries, GiveTheSlotBack) {
    const std::size_t before = testwindows::processResources().freeSlots;
    {
        const HostedLibrary library(GetParam());
        library.exchange(1);
        EXPECT_EQ(testwindows::processResources().freeSlots, before - 1);
    }
    EXPECT_EQ(testwindows::processResources().freeSlots, before);
}

INSTANTIATE_TEST_SUITE_P(All, HostedLibraries,
                         testing::Values(TAV_HOSTED_LIBRARY, TAV_UNSTRIPPED_LIBRARY),
                         [](const auto& file) {
                             return file.index == 0 ? "Stripped" : "Unstripped";
                         });

} // namespace
