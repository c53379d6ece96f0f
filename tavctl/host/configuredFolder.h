// Folders as the machine's configuration names them: in the text that a host gets, which need not
// be UTF-8 on every system.
#pragma once

#include <filesystem>
#include <string>

namespace tavctl {

// The path that a host opens for a text of the configuration.
[[nodiscard]] std::filesystem::path configuredPath(const std::string& text);

// Why no host can search a folder of this name, for people; empty where it can.
[[nodiscard]] std::string whyNotSearchable(const std::string& text);

} // namespace tavctl
