// The function that registers for news of devices came with Windows 8, after the oldest system that
// this runs on: it is looked up, and what goes into it is declared here.
#include "platform/deviceEvents.h"

#include "platform/windows/stopEvent.h"
#include "platform/windows/systemHeaders.h"

#include <algorithm>
#include <array>

namespace platform {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr DWORD kAllDeviceInstances = 2;
constexpr int kOfDeviceInstances = 2;
constexpr std::size_t kLongestDeviceName = 200;

struct NoticeFilter {
    DWORD size = sizeof(NoticeFilter);
    DWORD flags = kAllDeviceInstances;
    int kind = kOfDeviceInstances;
    DWORD reserved = 0;
    std::array<wchar_t, kLongestDeviceName> device{}; // none: any
};

using NoticeFunction = DWORD(CALLBACK*)(void* notice, void* context, int action, void* data,
                                        DWORD size);
using RegisterFunction = DWORD(WINAPI*)(NoticeFilter*, void* context, NoticeFunction,
                                        void** notice);
using UnregisterFunction = DWORD(WINAPI*)(void* notice);

template <typename Function>
Function functionOf(HMODULE library, const char* name) {
    return library == nullptr
               ? nullptr
               : reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}

// In a thread of the system's.
DWORD CALLBACK note(void* /*notice*/, void* context, int /*action*/, void* /*data*/,
                    DWORD /*size*/) {
    SetEvent(context);
    return ERROR_SUCCESS;
}

DWORD untilThen(const std::optional<Clock::time_point>& end) {
    if (!end)
        return INFINITE;
    constexpr milliseconds kLongest = std::chrono::hours(1);
    const auto left = std::chrono::ceil<milliseconds>(*end - Clock::now());
    return static_cast<DWORD>(std::clamp(left, milliseconds(0), kLongest).count());
}

} // namespace

struct DeviceEvents::State {
    State() = default;
    // No notice comes once it is given up.
    ~State() {
        if (notice != nullptr)
            functionOf<UnregisterFunction>(library, "CM_Unregister_Notification")(notice);
        if (event != nullptr)
            CloseHandle(event);
    }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    void startListening() {
        const auto start = functionOf<RegisterFunction>(library, "CM_Register_Notification");
        const auto end = functionOf<UnregisterFunction>(library, "CM_Unregister_Notification");
        NoticeFilter filter;
        if (start == nullptr || end == nullptr || event == nullptr ||
            start(&filter, event, note, &notice) != ERROR_SUCCESS)
            notice = nullptr;
    }

    HMODULE library = GetModuleHandleW(L"cfgmgr32.dll"); // which the program is linked with
    HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    void* notice = nullptr;
};

DeviceEvents::DeviceEvents(Listening listening) : state_(std::make_unique<State>()) {
    if (listening == Listening::yes)
        state_->startListening();
}

DeviceEvents::~DeviceEvents() = default;

bool DeviceEvents::isListening() const noexcept {
    return state_->notice != nullptr;
}

DeviceEvents::Woken DeviceEvents::wait(std::optional<milliseconds> limit, const StopRequest& stop) {
    const auto end = limit ? std::optional(Clock::now() + *limit) : std::nullopt;
    for (;;) {
        const std::array<HANDLE, 2> awaited{stopEvent(), state_->event};
        const DWORD count = isListening() ? 2 : 1;
        const DWORD woken = WaitForMultipleObjects(count, awaited.data(), FALSE, untilThen(end));
        if (stop.isMade())
            return Woken::stop;
        if (woken == WAIT_OBJECT_0 + 1)
            return Woken::change;
        if (end && Clock::now() >= *end)
            return Woken::time;
    }
}

} // namespace platform
