#include "platform/folderReader.h"

#include "platform/windows/longPath.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

namespace platform {

struct FolderReader::Folder {
    std::filesystem::path path;
};

FolderReader::FolderReader(const std::filesystem::path& folder)
    : folder_(std::make_unique<Folder>(Folder{folder})) {}

FolderReader::~FolderReader() = default;

int FolderReader::list(std::vector<std::string>& names) {
    std::error_code failure;
    std::filesystem::directory_iterator entry(folder_->path, failure);
    for (; !failure && entry != std::filesystem::directory_iterator(); entry.increment(failure)) {
        const std::u8string name = entry->path().filename().u8string();
        names.emplace_back(name.begin(), name.end());
    }
    return failure.default_error_condition().value();
}

int FolderReader::readFirst(const std::string& name, std::span<std::uint8_t> result,
                            std::size_t& size) {
    size = 0;
    const std::u8string relative(name.begin(), name.end());
    const std::wstring path = withLongPrefix((folder_->path / relative).native());
    std::FILE* const file = _wfopen(path.c_str(), L"rb");
    if (file == nullptr)
        return errno;
    size = std::fread(result.data(), 1, result.size(), file);
    const int failure = std::ferror(file) != 0 ? errno : 0;
    std::fclose(file);
    return failure;
}

} // namespace platform
