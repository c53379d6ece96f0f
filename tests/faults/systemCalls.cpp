#include "tests/faults/systemCalls.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/syscall.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace testfaults {

namespace {

struct Row {
    long number;
    const char* name;
    std::vector<int> errors;
    bool transfers = false; // the third argument is a size, of which less may be done
};

// Errors that POSIX or the system's manual gives for the call, and EIO wherever a disk stands
// behind it.
const std::vector<Row>& rows() {
    static const std::vector<Row> all = {
        {SYS_open, "open", {EACCES, EMFILE, EINTR, EIO, ENOSPC}},
        {SYS_openat, "openat", {EACCES, EMFILE, EINTR, EIO, ENOSPC}},
        {SYS_read, "read", {EIO, EINTR}, true},
        {SYS_pread64, "pread64", {EIO, EINTR}, true},
        {SYS_write, "write", {ENOSPC, EIO, EINTR}, true},
        {SYS_writev, "writev", {ENOSPC, EIO, EINTR}},
        {SYS_close, "close", {EIO, EINTR, ENOSPC}},
        {SYS_fsync, "fsync", {EIO, ENOSPC, EINTR}},
        {SYS_fallocate, "fallocate", {ENOSPC, EDQUOT, EFBIG, EOPNOTSUPP, EINTR}},
        {SYS_ftruncate, "ftruncate", {EIO, EINTR}},
        {SYS_rename, "rename", {EACCES, EIO, ENOSPC}},
        {SYS_unlink, "unlink", {EACCES, EIO}},
        {SYS_chmod, "chmod", {EACCES, EIO, EINTR}},
        {SYS_fchmod, "fchmod", {EPERM, EIO, EINTR}},
        {SYS_fgetxattr, "fgetxattr", {EIO, ENOTSUP}},
        {SYS_fcntl, "fcntl", {EIO, ENOLCK, EINTR}},
        {SYS_stat, "stat", {EACCES, EIO}},
        {SYS_fstat, "fstat", {EIO}},
        {SYS_newfstatat, "newfstatat", {EACCES, EIO}},
        {SYS_getdents64, "getdents64", {EIO}},
        {SYS_readlink, "readlink", {EACCES, EIO}},
        {SYS_access, "access", {EACCES, EIO}},
        {SYS_mmap, "mmap", {ENOMEM, EACCES}},
        {SYS_mprotect, "mprotect", {ENOMEM, EACCES}},
        {SYS_lseek, "lseek", {}},
    };
    return all;
}

const Row* rowOf(const SystemCall& call) {
    const auto found = std::find_if(rows().begin(), rows().end(),
                                    [&](const Row& row) { return row.number == call.number; });
    return found == rows().end() ? nullptr : &*found;
}

bool isLock(const SystemCall& call) {
    return call.arguments[1] == F_OFD_SETLKW || call.arguments[1] == F_OFD_SETLK;
}

bool creates(const SystemCall& call) {
    const std::uint64_t flags = call.arguments[call.number == SYS_open ? 1 : 2];
    return (flags & O_CREAT) != 0;
}

bool canGive(const SystemCall& call, int error) {
    switch (call.number) {
    case SYS_open:
    case SYS_openat:
        return error != ENOSPC || creates(call);
    case SYS_fcntl:
        return isLock(call);
    default:
        return true;
    }
}

// Takes or gives back memory, or has to do with threads.
bool isUncounted(const SystemCall& call) {
    switch (call.number) {
    case SYS_mmap:
        return (call.arguments[3] & MAP_ANONYMOUS) != 0;
    case SYS_munmap:
    case SYS_mremap:
    case SYS_madvise:
    case SYS_brk:
    case SYS_futex:
        return true;
    default:
        return false;
    }
}

class CallCounter {
public:
    // Whether the call is one of those that count.
    bool counts(const SystemCall& call) {
        // A checking build finds out whether memory is there by writing it into a pipe; the product
        // makes none.
        constexpr unsigned kAfterPipe = 3; // a write and two closes
        if (call.number == SYS_pipe || call.number == SYS_pipe2) {
            checkers_ = kAfterPipe;
            return false;
        }
        if (isUncounted(call))
            return false;
        if (checkers_ != 0) {
            --checkers_;
            return false;
        }
        ++count_;
        return true;
    }
    [[nodiscard]] std::size_t count() const { return count_; }

private:
    unsigned checkers_ = 0;
    std::size_t count_ = 0;
};

} // namespace

std::string nameOf(const SystemCall& call) {
    const Row* const row = rowOf(call);
    return row == nullptr ? "system call " + std::to_string(call.number) : row->name;
}

std::vector<CallFault> faultsOf(const SystemCall& call) {
    std::vector<CallFault> faults;
    const Row* const row = rowOf(call);
    if (row == nullptr)
        return faults;
    for (const int error : row->errors) {
        if (!canGive(call, error))
            continue;
        // A file that is closed is closed, whatever the answer.
        const auto kind = call.number == SYS_close ? Verdict::Kind::failAfter : Verdict::Kind::fail;
        faults.push_back({{kind, error, 0}, strerrorname_np(error)});
    }
    if (row->transfers && call.arguments[2] > 1)
        faults.push_back({{Verdict::Kind::shorten, 0, 1}, "short"});
    return faults;
}

Decide onlyCall(std::size_t number, const Verdict& verdict) {
    return [number, verdict, counter = CallCounter()](const SystemCall& call) mutable {
        return counter.counts(call) && counter.count() == number + 1 ? verdict : Verdict{};
    };
}

Decide listCalls(std::vector<SystemCall>& calls) {
    return [&calls, counter = CallCounter()](const SystemCall& call) mutable {
        if (counter.counts(call))
            calls.push_back(call);
        return Verdict{};
    };
}

} // namespace testfaults
