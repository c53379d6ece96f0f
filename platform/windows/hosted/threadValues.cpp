// The part of the compiler's own thread library that keeps a value for each thread, in a form that
// can be unloaded. The original takes a slot of the system's that is never given back, of which a
// process has 1,088, and memory for each thread that nobody frees.
#include "platform/windows/hosted/threadValues.h"

#include "platform/windows/systemHeaders.h"

#include <pthread.h>

#include <cerrno>
#include <utility>

namespace platform::hosted {

namespace {

// The run-time asks for one key, under which it keeps all of its variables of a thread.
constexpr pthread_key_t kOnlyKey = 0;
using Destructor = void (*)(void*);

struct ThreadValue {
    void* value;
    ThreadValue* next;
    ThreadValue* previous;
};

DWORD slot = TLS_OUT_OF_INDEXES;
Destructor destructor = nullptr;
bool isKeyTaken = false;

// Every thread's value, so that unloading finds those of the threads that live on.
SRWLOCK listLock = SRWLOCK_INIT;
ThreadValue* first = nullptr;

// The run-time asks at any moment, between a failure of the system's and the look at its code too.
class KeptLastError {
public:
    KeptLastError() noexcept = default;
    ~KeptLastError() { SetLastError(code_); }
    KeptLastError(const KeptLastError&) = delete;
    KeptLastError& operator=(const KeptLastError&) = delete;

private:
    DWORD code_ = GetLastError();
};

ThreadValue* ofThisThread() noexcept {
    return static_cast<ThreadValue*>(TlsGetValue(slot));
}

void link(ThreadValue* entry) noexcept {
    AcquireSRWLockExclusive(&listLock);
    entry->next = first;
    if (first != nullptr)
        first->previous = entry;
    first = entry;
    ReleaseSRWLockExclusive(&listLock);
}

void unlink(ThreadValue* entry) noexcept {
    AcquireSRWLockExclusive(&listLock);
    (entry->previous != nullptr ? entry->previous->next : first) = entry->next;
    if (entry->next != nullptr)
        entry->next->previous = entry->previous;
    ReleaseSRWLockExclusive(&listLock);
}

void destroy(ThreadValue* entry) noexcept {
    if (entry->value != nullptr && destructor != nullptr)
        destructor(entry->value);
    HeapFree(GetProcessHeap(), 0, entry);
}

} // namespace

bool takeThreadSlot() noexcept {
    slot = TlsAlloc();
    return slot != TLS_OUT_OF_INDEXES;
}

void destroyThreadValue() noexcept {
    ThreadValue* const entry = ofThisThread();
    if (entry == nullptr)
        return;
    TlsSetValue(slot, nullptr);
    unlink(entry);
    destroy(entry);
}

void returnThreadSlot() noexcept {
    if (slot == TLS_OUT_OF_INDEXES)
        return;
    while (first != nullptr)
        destroy(std::exchange(first, first->next));
    TlsFree(slot);
    slot = TLS_OUT_OF_INDEXES;
}

} // namespace platform::hosted

using namespace platform::hosted;

extern "C" int pthread_key_create(pthread_key_t* key, void (*keyDestructor)(void*)) {
    if (std::exchange(isKeyTaken, true))
        return EAGAIN;
    destructor = keyDestructor;
    *key = kOnlyKey;
    return 0;
}

extern "C" void* pthread_getspecific(pthread_key_t /*key*/) {
    const KeptLastError kept;
    const ThreadValue* const entry = ofThisThread();
    return entry != nullptr ? entry->value : nullptr;
}

extern "C" int pthread_setspecific(pthread_key_t /*key*/, const void* value) {
    const KeptLastError kept;
    ThreadValue* entry = ofThisThread();
    if (entry == nullptr) {
        entry = static_cast<ThreadValue*>(
            HeapAlloc(GetProcessHeap(), HEAP_ZERO_MEMORY, sizeof(ThreadValue)));
        if (entry == nullptr)
            return ENOMEM;
        TlsSetValue(slot, entry);
        link(entry);
    }
    entry->value = const_cast<void*>(value);
    return 0;
}
