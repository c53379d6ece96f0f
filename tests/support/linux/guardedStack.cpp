#include "tests/support/guardedStack.h"

#include <pthread.h>
#include <sys/mman.h>
#include <ucontext.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <system_error>

namespace testsupport {

namespace {

constexpr std::size_t kBehind = 128 * std::size_t{1024}; // more than the largest frame that was
constexpr std::size_t kGuard = 4096;
constexpr unsigned char kPaint = 0x5A;

const std::function<void()>* workOnStack = nullptr;

void runWork() {
    (*workOnStack)();
}

void* runThreadsWork(void* work) {
    (*static_cast<const std::function<void()>*>(work))();
    return nullptr;
}

} // namespace

GuardedStack::GuardedStack(std::size_t bytes) : bytes_(bytes) {
    void* const mapped = mmap(nullptr, kBehind + kGuard + bytes, PROT_READ | PROT_WRITE,
                              MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED)
        throw std::runtime_error("cannot map a stack");
    memory_ = static_cast<unsigned char*>(mapped);
    std::memset(memory_, kPaint, kBehind + kGuard + bytes);
    mprotect(memory_ + kBehind, kGuard, PROT_NONE);
}

GuardedStack::~GuardedStack() {
    munmap(memory_, kBehind + kGuard + bytes_);
}

void GuardedStack::runThread(const std::function<void()>& work) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_t thread = 0;
    int code = pthread_attr_setstack(&attributes, memory_ + kBehind + kGuard, bytes_);
    if (code == 0)
        code = pthread_create(&thread, &attributes, runThreadsWork,
                              const_cast<std::function<void()>*>(&work));
    pthread_attr_destroy(&attributes);
    if (code != 0)
        throw std::system_error(code, std::generic_category(), "cannot start a thread");
    pthread_join(thread, nullptr);
}

void GuardedStack::run(const std::function<void()>& work) {
    ucontext_t here = {};
    ucontext_t there = {};
    getcontext(&there);
    there.uc_stack.ss_sp = memory_ + kBehind + kGuard;
    there.uc_stack.ss_size = bytes_;
    there.uc_link = &here;
    workOnStack = &work;
    makecontext(&there, runWork, 0);
    swapcontext(&here, &there);
}

std::size_t GuardedStack::used() const {
    const unsigned char* const begin = memory_ + kBehind + kGuard;
    const unsigned char* const end = begin + bytes_;
    const unsigned char* const lowest =
        std::find_if(begin, end, [](unsigned char c) { return c != kPaint; });
    return static_cast<std::size_t>(end - lowest);
}

std::size_t GuardedStack::changedBehindGuard() const {
    return static_cast<std::size_t>(
        std::count_if(memory_, memory_ + kBehind, [](unsigned char c) { return c != kPaint; }));
}

} // namespace testsupport
