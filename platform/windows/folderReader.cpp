#include "platform/folderReader.h"

#include "platform/pathBelow.h"
#include "platform/windows/longPath.h"

#include <dirent.h>

#include <cerrno>
#include <cstdio>
#include <string_view>

namespace platform {

namespace {

struct ListCloser {
    void operator()(_WDIR* list) const noexcept { _wclosedir(list); }
};

} // namespace

struct FolderReader::Folder {
    std::string path;
};

FolderReader::FolderReader(const std::string& utf8Path)
    : folder_(std::make_unique<Folder>(Folder{utf8Path})) {}

FolderReader::~FolderReader() = default;

int FolderReader::list(std::vector<std::string>& names) {
    const std::unique_ptr<_WDIR, ListCloser> entries(_wopendir(wideText(folder_->path).c_str()));
    if (!entries)
        return errno;
    for (;;) {
        errno = 0;
        const _wdirent* const entry = _wreaddir(entries.get());
        if (entry == nullptr)
            return errno;
        const std::wstring_view name = entry->d_name;
        if (name != L"." && name != L"..")
            names.push_back(utf8Text(name));
    }
}

int FolderReader::readFirst(const std::string& name, std::span<std::uint8_t> result,
                            std::size_t& size) {
    size = 0;
    const std::wstring path = withLongPrefix(wideText(pathBelow(folder_->path, name)));
    std::FILE* const file = _wfopen(path.c_str(), L"rb");
    if (file == nullptr)
        return errno;
    size = std::fread(result.data(), 1, result.size(), file);
    const int failure = std::ferror(file) != 0 ? errno : 0;
    std::fclose(file);
    return failure;
}

int FolderReader::readLine(const std::string& name, std::span<std::uint8_t> result,
                           std::size_t& size) {
    return readFirst(name, result, size);
}

} // namespace platform
