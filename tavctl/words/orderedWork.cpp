#include "tavctl/words/orderedWork.h"

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>

namespace tavctl {

namespace {

std::size_t processors() {
    return std::max<std::size_t>(1, std::thread::hardware_concurrency());
}

class OrderedWork {
public:
    OrderedWork(std::size_t count, std::size_t window, const std::function<void(std::size_t)>& make,
                const std::function<void(std::size_t)>& take)
        : count_(count), make_(make), take_(take), isMade_(window, false), failures_(window) {}

    ~OrderedWork() { stop(); }
    OrderedWork(const OrderedWork&) = delete;
    OrderedWork& operator=(const OrderedWork&) = delete;

    void run() {
        start();
        if (threads_.empty()) {
            for (std::size_t index = 0; index < count_; ++index) {
                make_(index);
                take_(index);
            }
            return;
        }
        for (std::size_t index = 0; index < count_; ++index)
            takeNext(index);
    }

private:
    void start() {
        const std::size_t wanted = std::min({processors(), count_, isMade_.size()});
        try {
            while (threads_.size() < wanted)
                threads_.emplace_back([this] { makeAll(); });
        } catch (const std::system_error&) {
            // Those that there are do the work.
        }
    }

    void stop() {
        {
            const std::lock_guard lock(mutex_);
            isStopped_ = true;
        }
        changed_.notify_all();
        for (std::thread& each : threads_)
            each.join();
    }

    void takeNext(std::size_t index) {
        const std::size_t slot = index % isMade_.size();
        std::exception_ptr failure;
        {
            std::unique_lock lock(mutex_);
            changed_.wait(lock, [&] { return isMade_[slot]; });
            failure = failures_[slot];
        }
        if (failure)
            std::rethrow_exception(failure);
        take_(index);
        {
            const std::lock_guard lock(mutex_);
            isMade_[slot] = false;
            ++taken_;
        }
        changed_.notify_all();
    }

    void makeAll() {
        std::unique_lock lock(mutex_);
        while (true) {
            changed_.wait(lock, [this] {
                return isStopped_ || next_ == count_ || next_ < taken_ + isMade_.size();
            });
            if (isStopped_ || next_ == count_)
                return;
            const std::size_t index = next_++;
            lock.unlock();
            std::exception_ptr failure;
            try {
                make_(index);
            } catch (...) {
                failure = std::current_exception();
            }
            lock.lock();
            isMade_[index % isMade_.size()] = true;
            failures_[index % isMade_.size()] = failure;
            changed_.notify_all();
        }
    }

    std::size_t count_;
    const std::function<void(std::size_t)>& make_;
    const std::function<void(std::size_t)>& take_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::size_t next_ = 0;     // to be made
    std::size_t taken_ = 0;    // so many were taken
    std::vector<bool> isMade_; // by index, modulo the window
    std::vector<std::exception_ptr> failures_;
    bool isStopped_ = false;
    std::vector<std::thread> threads_;
};

} // namespace

std::size_t usualWindow() {
    constexpr std::size_t kForEach = 4; // one that takes long does not keep the others waiting
    return kForEach * processors();
}

void workInOrder(std::size_t count, std::size_t window,
                 const std::function<void(std::size_t)>& make,
                 const std::function<void(std::size_t)>& take) {
    OrderedWork(count, window, make, take).run();
}

} // namespace tavctl
