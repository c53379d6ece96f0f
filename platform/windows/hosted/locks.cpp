// The part of the compiler's own thread library that lets threads wait for each other: locks,
// conditions, and what is done once. The original allocates each of them at its first use, and most
// are never destroyed. Here they are the words that their users keep, and one lock of the system's
// guards all of those words. It is held for a few instructions: who waits for a word sleeps.
#include "platform/windows/systemHeaders.h"

#include <pthread.h>

#include <atomic>
#include <cerrno>

namespace {

SRWLOCK wordsLock = SRWLOCK_INIT;
CONDITION_VARIABLE wordChanged = CONDITION_VARIABLE_INIT;

// The right to look at the words and to change them.
class Words {
public:
    Words() noexcept { AcquireSRWLockExclusive(&wordsLock); }
    ~Words() { ReleaseSRWLockExclusive(&wordsLock); }
    Words(const Words&) = delete;
    Words& operator=(const Words&) = delete;

    // Gives the right away until some word has changed, perhaps another one.
    static void wait() noexcept {
        SleepConditionVariableSRW(&wordChanged, &wordsLock, INFINITE, 0);
    }
    static void changed() noexcept { WakeAllConditionVariable(&wordChanged); }
};

// The word of a lock is its owner's number, or less than zero, as initialised, while nobody has it.
pthread_mutex_t thisThread() noexcept {
    return static_cast<pthread_mutex_t>(GetCurrentThreadId() & INT32_MAX);
}

int take(pthread_mutex_t& lock) noexcept {
    const pthread_mutex_t owner = thisThread();
    // Also for the kind that is called recursive. The run-time has one such lock and lets go of it
    // before it calls anybody.
    if (lock == owner)
        return EDEADLK;
    while (lock >= 0)
        Words::wait();
    lock = owner;
    return 0;
}

int giveBack(pthread_mutex_t& lock) noexcept {
    if (lock != thisThread())
        return EPERM;
    lock = PTHREAD_MUTEX_INITIALIZER;
    Words::changed();
    return 0;
}

constexpr pthread_once_t kRunning = 1;
constexpr pthread_once_t kDone = 2;

} // namespace

extern "C" int pthread_mutex_init(pthread_mutex_t* lock, const pthread_mutexattr_t* /*kind*/) {
    *lock = PTHREAD_MUTEX_INITIALIZER;
    return 0;
}

extern "C" int pthread_mutex_destroy(pthread_mutex_t* /*lock*/) {
    return 0;
}

extern "C" int pthread_mutex_lock(pthread_mutex_t* lock) {
    const Words words;
    return take(*lock);
}

extern "C" int pthread_mutex_unlock(pthread_mutex_t* lock) {
    const Words words;
    return giveBack(*lock);
}

// Waiters look again at what they wait for, so each may be woken for any condition.
extern "C" int pthread_cond_wait(pthread_cond_t* /*condition*/, pthread_mutex_t* lock) {
    const Words words;
    const int result = giveBack(*lock);
    if (result != 0)
        return result;
    Words::wait();
    return take(*lock);
}

extern "C" int pthread_cond_broadcast(pthread_cond_t* /*condition*/) {
    Words::changed();
    return 0;
}

// `work` raises nothing.
extern "C" int pthread_once(pthread_once_t* once, void (*work)()) {
    if (std::atomic_ref(*once).load(std::memory_order_acquire) == kDone)
        return 0;
    {
        const Words words;
        while (*once == kRunning)
            Words::wait();
        if (*once == kDone)
            return 0;
        *once = kRunning;
    }
    work();
    const Words words;
    std::atomic_ref(*once).store(kDone, std::memory_order_release);
    Words::changed();
    return 0;
}
