// One INI library in the race: this project's or a peer's, each used as its own users use it.
#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace bench {

class IniContender {
public:
    virtual ~IniContender() = default;

    // Reads a file into something that can be queried and written back. What was loaded before has
    // been dropped by unload().
    virtual void load(const std::string& path) = 0;
    virtual void unload() = 0;
    // The paths of the files in a folder of INI files.
    virtual std::vector<std::string> list(const std::string& folder) {
        std::vector<std::string> paths;
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            paths.push_back(entry.path().string());
        return paths;
    }
    // The value of a key, or nothing when there is none. Good until the next call.
    virtual std::string_view find(const std::string& section, const std::string& key) = 0;
    // Writes what was loaded to the file that it came from.
    virtual void save(const std::string& path) = 0;

protected:
    IniContender() = default;
    IniContender(const IniContender&) = delete;
    IniContender& operator=(const IniContender&) = delete;
};

using IniContenderOwner = std::unique_ptr<IniContender>;
IniContenderOwner makeIniClass();
IniContenderOwner makeIniEngine();
IniContenderOwner makeInih();
IniContenderOwner makeSimpleIni();
IniContenderOwner makeGKeyFile();
IniContenderOwner makePropertyTree();

struct IniEntrant {
    const char* name;
    IniContenderOwner (*make)();
    bool canSave;
};
// The project's own first, then the peers.
inline constexpr std::size_t kOwnEntrants = 2;
const std::vector<IniEntrant>& iniEntrants();

} // namespace bench
