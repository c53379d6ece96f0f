#include "pcibus/fileBytes.h"

#include "pcibus/busError.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <ios>
#include <system_error>

namespace pcibus {
namespace {

[[noreturn]] void refuse(const std::filesystem::path& file, int code) {
    throw BusError(pathText(file) + ": " +
                   (code != 0 ? std::generic_category().message(code) : "cannot be read"));
}

// A file buffer takes paths of any character set on every system, which std::fopen does not.
class UnbufferedFile {
public:
    explicit UnbufferedFile(const std::filesystem::path& file) : name_(file) {
        buffer_.pubsetbuf(nullptr, 0);
        errno = 0;
        if (buffer_.open(file, std::ios_base::in | std::ios_base::binary) == nullptr)
            refuse(name_, errno);
    }

    std::size_t read(char* to, std::size_t size) {
        errno = 0;
        try {
            return static_cast<std::size_t>(buffer_.sgetn(to, static_cast<std::streamsize>(size)));
        } catch (const std::ios_base::failure&) {
            refuse(name_, errno);
        }
    }

private:
    const std::filesystem::path& name_;
    std::filebuf buffer_;
};

} // namespace

std::string pathText(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

std::string readWholeFile(const std::filesystem::path& file) {
    UnbufferedFile source(file);
    // One byte more than the size, so that the end of an ordinary file is met by the first read.
    std::error_code unknown;
    const std::uintmax_t size = std::filesystem::file_size(file, unknown);
    constexpr std::size_t kLeastRoom = 64 * std::size_t{1024};
    std::string text(unknown ? kLeastRoom : static_cast<std::size_t>(size) + 1, '\0');
    std::size_t used = 0;
    for (;;) {
        const std::size_t got = source.read(text.data() + used, text.size() - used);
        used += got;
        if (used < text.size())
            break;
        text.resize(text.size() + std::max(text.size(), kLeastRoom));
    }
    text.resize(used);
    return text;
}

std::size_t readFirstBytes(const std::filesystem::path& file, std::span<std::uint8_t> result) {
    UnbufferedFile source(file);
    return source.read(reinterpret_cast<char*>(result.data()), result.size());
}

} // namespace pcibus
