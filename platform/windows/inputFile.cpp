#include "platform/inputFile.h"

#include "platform/windows/longPath.h"

#include <cerrno>
#include <cstdio>

namespace platform {

struct InputFile::File {
    explicit File(const wchar_t* path) noexcept : stream(_wfopen(path, L"rb")) {
        if (stream == nullptr)
            error = errno;
        else
            std::setvbuf(stream, nullptr, _IONBF, 0);
    }
    ~File() {
        if (stream != nullptr)
            std::fclose(stream);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    std::FILE* stream;
    int error = 0;
};

InputFile::InputFile(const std::string& utf8Path)
    : file_(std::make_unique<File>(withLongPrefix(wideText(utf8Path)).c_str())) {}

InputFile::~InputFile() = default;

int InputFile::read(std::span<char> bytes, std::size_t& size) {
    size = 0;
    if (file_->error != 0)
        return file_->error;
    errno = 0;
    size = std::fread(bytes.data(), 1, bytes.size(), file_->stream);
    return std::ferror(file_->stream) != 0 ? errno : 0;
}

} // namespace platform
