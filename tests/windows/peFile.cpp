#include "tests/windows/peFile.h"

#include "tests/support/fileText.h"

#include <windows.h>

#include <cctype>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace testwindows {

namespace {

// Reads out of the bytes of the file, never beyond them.
class Image {
public:
    explicit Image(std::vector<char> bytes) : bytes_(std::move(bytes)) {}

    template <typename Value>
    [[nodiscard]] Value at(std::size_t offset) const {
        if (offset > bytes_.size() || bytes_.size() - offset < sizeof(Value))
            throw std::runtime_error("the file ends before what it announces");
        Value value;
        std::memcpy(&value, bytes_.data() + offset, sizeof value);
        return value;
    }

    void addSection(const IMAGE_SECTION_HEADER& section) { sections_.push_back(section); }

    // The place in the file of what is loaded at this address.
    [[nodiscard]] std::size_t offsetOf(DWORD address) const {
        for (const IMAGE_SECTION_HEADER& section : sections_) {
            if (address >= section.VirtualAddress &&
                address - section.VirtualAddress < section.SizeOfRawData)
                return address - section.VirtualAddress + std::size_t{section.PointerToRawData};
        }
        throw std::runtime_error("an address outside of every section");
    }

    template <typename Value>
    [[nodiscard]] Value loadedAt(DWORD address) const {
        return at<Value>(offsetOf(address));
    }

    [[nodiscard]] std::string textAt(DWORD address) const {
        std::string text;
        for (std::size_t offset = offsetOf(address); at<char>(offset) != '\0'; ++offset)
            text.push_back(at<char>(offset));
        return text;
    }

private:
    std::vector<char> bytes_;
    std::vector<IMAGE_SECTION_HEADER> sections_;
};

std::string lowerCase(std::string text) {
    for (char& character : text)
        character = static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
    return text;
}

void readExports(const Image& image, const IMAGE_DATA_DIRECTORY& directory, PeFile& file) {
    if (directory.Size == 0)
        return;
    const auto table = image.loadedAt<IMAGE_EXPORT_DIRECTORY>(directory.VirtualAddress);
    for (DWORD i = 0; i < table.NumberOfNames; ++i)
        file.exports.insert(
            image.textAt(image.loadedAt<DWORD>(table.AddressOfNames + i * DWORD{sizeof(DWORD)})));
    file.exportsMadeAt = table.TimeDateStamp;
    file.exportsByNumberOnly = table.NumberOfFunctions - table.NumberOfNames;
}

template <typename Thunk>
void readImports(const Image& image, const IMAGE_DATA_DIRECTORY& directory, Thunk byNumber,
                 PeFile& file) {
    if (directory.Size == 0)
        return;
    for (DWORD place = directory.VirtualAddress;; place += DWORD{sizeof(IMAGE_IMPORT_DESCRIPTOR)}) {
        const auto library = image.loadedAt<IMAGE_IMPORT_DESCRIPTOR>(place);
        if (library.Name == 0)
            return;
        std::set<std::string>& names = file.imports[lowerCase(image.textAt(library.Name))];
        for (DWORD thunk = library.OriginalFirstThunk;; thunk += DWORD{sizeof(Thunk)}) {
            const auto entry = image.loadedAt<Thunk>(thunk);
            if (entry == 0)
                break;
            if ((entry & byNumber) != 0)
                throw std::runtime_error("a function imported by its number");
            // The name stands behind a 16-bit hint.
            names.insert(image.textAt(static_cast<DWORD>(entry) + DWORD{sizeof(WORD)}));
        }
    }
}

template <typename Headers, typename Thunk>
void readHeaders(Image& image, std::size_t start, Thunk byNumber, PeFile& file) {
    const auto headers = image.at<Headers>(start);
    file.machine = headers.FileHeader.Machine;
    file.characteristics = headers.FileHeader.Characteristics;
    file.dllCharacteristics = headers.OptionalHeader.DllCharacteristics;
    file.linkedAt = headers.FileHeader.TimeDateStamp;
    file.checksum = headers.OptionalHeader.CheckSum;
    file.imageBytes = headers.OptionalHeader.SizeOfImage;
    file.sectionAlignment = headers.OptionalHeader.SectionAlignment;
    const std::size_t sections = start + offsetof(Headers, OptionalHeader) +
                                 std::size_t{headers.FileHeader.SizeOfOptionalHeader};
    for (std::size_t i = 0; i < headers.FileHeader.NumberOfSections; ++i) {
        const auto section =
            image.at<IMAGE_SECTION_HEADER>(sections + i * sizeof(IMAGE_SECTION_HEADER));
        image.addSection(section);
        const char* const name = reinterpret_cast<const char*>(section.Name);
        file.sections.push_back({std::string(name, strnlen(name, sizeof section.Name)),
                                 section.VirtualAddress, section.Misc.VirtualSize});
    }
    const auto& directories = headers.OptionalHeader.DataDirectory;
    file.relocationBytes = directories[IMAGE_DIRECTORY_ENTRY_BASERELOC].Size;
    file.loadConfigurationBytes = directories[IMAGE_DIRECTORY_ENTRY_LOAD_CONFIG].Size;
    readExports(image, directories[IMAGE_DIRECTORY_ENTRY_EXPORT], file);
    readImports(image, directories[IMAGE_DIRECTORY_ENTRY_IMPORT], byNumber, file);
}

} // namespace

PeFile readPeFile(const std::filesystem::path& file) {
    const std::string bytes = testsupport::fileText(file);
    Image image(std::vector<char>(bytes.begin(), bytes.end()));
    const auto dos = image.at<IMAGE_DOS_HEADER>(0);
    const auto start = static_cast<std::size_t>(dos.e_lfanew);
    if (dos.e_magic != IMAGE_DOS_SIGNATURE || image.at<DWORD>(start) != IMAGE_NT_SIGNATURE)
        throw std::runtime_error("no program: " + file.string());
    PeFile result;
    const auto kind = image.at<WORD>(start + offsetof(IMAGE_NT_HEADERS32, OptionalHeader));
    if (kind == IMAGE_NT_OPTIONAL_HDR64_MAGIC)
        readHeaders<IMAGE_NT_HEADERS64, ULONGLONG>(image, start, IMAGE_ORDINAL_FLAG64, result);
    else if (kind == IMAGE_NT_OPTIONAL_HDR32_MAGIC)
        readHeaders<IMAGE_NT_HEADERS32, DWORD>(image, start, IMAGE_ORDINAL_FLAG32, result);
    else
        throw std::runtime_error("neither a 32-bit nor a 64-bit program: " + file.string());
    return result;
}

} // namespace testwindows
