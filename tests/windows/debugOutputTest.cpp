// Text for the debugger, caught where a monitor of the system catches it.
#include "platform/windows/uniqueHandle.h"
#include "quil/debugPrinter.h"
#include "quil/tConsoleTraceDestination.h"
#include "quil/tTrace.h"
#include "tests/windows/importedFunction.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <cstring>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace nZOQUIL000;
using testing::ElementsAre;
using testwindows::ImportedFunction;

struct KernelObjectKind {
    using Handle = HANDLE;
    static Handle none() noexcept { return nullptr; }
    static void close(Handle handle) noexcept { CloseHandle(handle); }
};
using KernelObject = platform::UniqueHandle<KernelObjectKind>;

// What this process sends to the debugger while it lives. The system hands one text at a time over
// in a piece of shared memory, behind the number of the process.
class DebugMonitor {
public:
    DebugMonitor() {
        if (!buffer_ || !ready_ || !data_ || !stop_)
            throw std::runtime_error("the system's debug output cannot be caught");
        const void* const view = MapViewOfFile(buffer_.get(), FILE_MAP_READ, 0, 0, kSize);
        if (view == nullptr)
            throw std::runtime_error("the system's debug output cannot be looked at");
        thread_ = std::thread([this, view] { run(view); });
    }
    ~DebugMonitor() {
        if (thread_.joinable())
            end();
    }
    DebugMonitor(const DebugMonitor&) = delete;
    DebugMonitor& operator=(const DebugMonitor&) = delete;

    std::vector<std::string> end() {
        SetEvent(stop_.get());
        thread_.join();
        return texts_;
    }

private:
    static constexpr DWORD kSize = 4096;

    void run(const void* view) {
        const HANDLE either[] = {data_.get(), stop_.get()};
        SetEvent(ready_.get());
        while (WaitForMultipleObjects(2, either, FALSE, INFINITE) == WAIT_OBJECT_0) {
            DWORD process = 0;
            std::memcpy(&process, view, sizeof process);
            if (process == GetCurrentProcessId())
                texts_.emplace_back(static_cast<const char*>(view) + sizeof process);
            SetEvent(ready_.get());
        }
        UnmapViewOfFile(view);
    }

    KernelObject buffer_{CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, kSize,
                                            L"DBWIN_BUFFER")};
    KernelObject ready_{CreateEventW(nullptr, FALSE, FALSE, L"DBWIN_BUFFER_READY")};
    KernelObject data_{CreateEventW(nullptr, FALSE, FALSE, L"DBWIN_DATA_READY")};
    KernelObject stop_{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    std::vector<std::string> texts_;
    std::thread thread_;
};

template <typename Action>
std::vector<std::string> caught(Action action) {
    DebugMonitor monitor;
    action();
    return monitor.end();
}

TEST(WindowsDebugOutput, AMessageReachesTheDebuggerInOneCall) {
    EXPECT_THAT(caught([] {
                    debugPrint("%s=%d\n", "one", 1);
                    debugPrint("%s", "two");
                }),
                ElementsAre("one=1\n", "two"));
}

TEST(WindowsDebugOutput, IsCutAt511Characters) {
    const std::string longest(511, 'x');
    EXPECT_THAT(caught([&] {
                    debugPrint("%s", longest.c_str());
                    debugPrint("%s", (longest + "y").c_str());
                    debugPrint("%s", std::string(5000, 'x').c_str());
                }),
                ElementsAre(longest, longest, longest));
}

TEST(WindowsDebugOutput, TheDestinationWritesCountedAndWholeTexts) {
    tConsoleTraceDestination destination;
    EXPECT_THAT(caught([&] {
                    destination.writeCounted("counted", 5);
                    destination.write("100% whole");
                    destination.write(std::string(600, 'z').c_str());
                }),
                ElementsAre("count", "100% whole", std::string(511, 'z')));
}

TEST(WindowsDebugOutput, ATraceLineIsOneTextWithItsPrefix) {
    tConsoleTraceDestination destination;
    tTrace trace;
    EXPECT_THAT(caught([&] {
                    trace.setDestination(&destination);
                    trace.write("source", 42, "value %d", 7);
                    trace.setDestination(nullptr);
                    trace.write("source", 43, "nobody hears this");
                }),
                ElementsAre("[  zotavpci|                          source|  42] value 7\n"));
}

struct Printed {
    static inline std::vector<std::string> texts;
    static void WINAPI print(LPCSTR text) { texts.emplace_back(text); }
};

TEST(WindowsDebugOutput, GoesThroughTheNarrowFunction) {
    Printed::texts.clear();
    const ImportedFunction function("OutputDebugStringA", reinterpret_cast<void*>(&Printed::print));
    debugPrint("%c", 'x');
    EXPECT_THAT(Printed::texts, ElementsAre("x"));
}

} // namespace
