#include "tests/support/debugOutputCapture.h"

#include "platform/windows/systemHeaders.h"

#include <mutex>

namespace testsupport {

namespace {

constexpr DWORD kPrinted = 0x40010006; // DBG_PRINTEXCEPTION_C

std::mutex mutex;
std::string caught;
void* handler = nullptr;

// The system tells debuggers of such text by an exception, which goes on when nobody is there.
LONG CALLBACK catchText(EXCEPTION_POINTERS* exception) {
    const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
    if (record.ExceptionCode != kPrinted || record.NumberParameters < 2)
        return EXCEPTION_CONTINUE_SEARCH;
    const std::lock_guard<std::mutex> guard(mutex);
    // The length counts the terminating zero.
    caught.append(reinterpret_cast<const char*>(record.ExceptionInformation[1]),
                  record.ExceptionInformation[0] - 1);
    return EXCEPTION_CONTINUE_EXECUTION;
}

} // namespace

DebugOutputCapture::DebugOutputCapture() {
    caught.clear();
    handler = AddVectoredExceptionHandler(1, &catchText);
}

DebugOutputCapture::~DebugOutputCapture() {
    if (!ended_)
        text();
}

std::string DebugOutputCapture::text() {
    ended_ = true;
    RemoveVectoredExceptionHandler(handler);
    const std::lock_guard<std::mutex> guard(mutex);
    return caught;
}

} // namespace testsupport
