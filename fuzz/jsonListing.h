// JSON texts as a reader that is not ours takes them.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace fuzz {

// The text with a question mark for each byte above 127, which JSON has only as parts of UTF-8.
std::string plain(std::string text);

bool isJson(const std::string& text);

// What the text has, in its order, each with a letter or sign for its kind: "kKEY", "sTEXT",
// "nNUMBER", "{", "}" and so on. Nothing when the text is no JSON.
std::optional<std::vector<std::string>> listJson(const std::string& text);

} // namespace fuzz
