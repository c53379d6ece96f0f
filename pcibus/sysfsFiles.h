// The files of the PCI functions that sysfs publishes. Private to this room.
#pragma once

#include "platform/folderReader.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace pcibus {

// The folder of all functions, and the one whose files are being read. A value that is missing,
// cannot be read, holds nothing of its kind or says that nothing is known reads as 0: bridges
// without a link have no link files, and some refuse to be read.
class SysfsFiles {
public:
    // A UTF-8 path.
    explicit SysfsFiles(const std::string& devices) : path_(devices), reader_(devices) {}

    // Of all functions. Raises BusError.
    std::vector<std::string> names();

    [[nodiscard]] const std::string& function() const { return function_; }
    void enter(const std::string& function) { function_ = function; }
    [[nodiscard]] std::string path() const;
    [[nodiscard]] std::string pathOf(const char* file) const;

    // 0, or the error number.
    int read(const char* file, std::span<std::uint8_t> bytes, std::size_t& size);
    int readLine(const char* file, std::span<std::uint8_t> bytes, std::size_t& size);

    // "0x10b5".
    std::uint16_t identifier(const char* file);
    // Lanes in decimal; 255 stands for an unknown width.
    std::uint8_t linkWidth(const char* file);
    // "5.0 GT/s PCIe", the older "5 GT/s", or "Unknown".
    std::uint8_t linkSpeed(const char* file);

    // Raises BusError; 0: without a reason of the system's.
    [[noreturn]] static void refuse(const std::string& file, int code);

private:
    const std::string& nameOf(const char* file);

    std::string path_;
    platform::FolderReader reader_;
    std::string function_;
    std::string name_; // here so that its memory is used again
};

} // namespace pcibus
