#include "platform/folderReader.h"

#include "platform/linux/descriptor.h"
#include "platform/linux/interruption.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>

namespace platform {

namespace {

struct ListCloser {
    void operator()(DIR* list) const noexcept { closedir(list); }
};

enum class Until { full, lineEnd };

// Reads until nothing more comes at the latest. `size` is 0 before.
int readUntil(Until until, int folder, const std::string& name, std::span<std::uint8_t> result,
              std::size_t& size) {
    // A pipe in the file's place gives what is in it, and nobody waits for more.
    const Descriptor file(pastInterruptions([&] {
        return openat(folder, name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    }));
    if (file.number() < 0)
        return errno;
    while (size < result.size()) {
        const ssize_t got = read(file.number(), result.data() + size, result.size() - size);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return errno;
        if (got == 0)
            break;
        size += static_cast<std::size_t>(got);
        if (until == Until::lineEnd && result[size - 1] == '\n')
            break;
    }
    return 0;
}

} // namespace

struct FolderReader::Folder {
    explicit Folder(const char* path) noexcept
        : descriptor(
              pastInterruptions([&] { return open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC); })),
          error(descriptor.number() < 0 ? errno : 0) {}

    Descriptor descriptor;
    int error;
};

FolderReader::FolderReader(const std::string& utf8Path)
    : folder_(std::make_unique<Folder>(utf8Path.c_str())) {}

FolderReader::~FolderReader() = default;

int FolderReader::list(std::vector<std::string>& names) {
    if (folder_->error != 0)
        return folder_->error;
    // The list has a descriptor of its own, which closes with it.
    const int again = pastInterruptions([&] {
        return openat(folder_->descriptor.number(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    });
    const std::unique_ptr<DIR, ListCloser> entries(again < 0 ? nullptr : fdopendir(again));
    if (!entries) {
        const int failure = errno;
        const Descriptor closer(again);
        return failure;
    }
    for (;;) {
        errno = 0;
        const dirent* const entry = readdir(entries.get());
        if (entry == nullptr)
            return errno;
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..")
            names.emplace_back(name);
    }
}

int FolderReader::readFirst(const std::string& name, std::span<std::uint8_t> result,
                            std::size_t& size) {
    size = 0;
    return folder_->error != 0
               ? folder_->error
               : readUntil(Until::full, folder_->descriptor.number(), name, result, size);
}

int FolderReader::readLine(const std::string& name, std::span<std::uint8_t> result,
                           std::size_t& size) {
    size = 0;
    return folder_->error != 0
               ? folder_->error
               : readUntil(Until::lineEnd, folder_->descriptor.number(), name, result, size);
}

} // namespace platform
