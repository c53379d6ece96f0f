// A guide whose examples are run. In its Markdown text
//
//     ```console      holds commands ("$ command") and what each prints
//     ```ini          whose first line is "; in FILE, [Section]" holds keys to change in that file
//
// Everything else is left alone.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace testtavctl {

class Guide {
public:
    // Raises std::runtime_error for a text whose blocks do not end.
    explicit Guide(const std::string& text);

    // Runs the examples, one after the other, in `folder`, with `programs` first in the search path
    // for programs. Answers the guide with what they printed in place of what it says.
    [[nodiscard]] std::string run(const std::filesystem::path& folder,
                                  const std::filesystem::path& programs) const;

    [[nodiscard]] std::size_t commands() const;

private:
    struct Block {
        std::string kind; // "console", "ini", or empty for text
        std::vector<std::string> lines;
    };
    static void change(const std::filesystem::path& folder, const Block& block);

    std::vector<Block> blocks_;
};

// The text of a description with one key of a section given another value, or given at all; or,
// without a value, taken out. A section that is not there is put at the end.
std::string withValue(const std::string& text, const std::string& section, const std::string& key,
                      const std::string& value);

} // namespace testtavctl
