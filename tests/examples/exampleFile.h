// The examples of a document: what a reader would type, and what the document says that comes of
// it.
//
// In Markdown they are fenced blocks. "console" blocks hold commands, "$ tavctl ...", each followed
// by what it prints; a line "..." stands for any lines; a command that ends with a backslash goes
// on in the next line. "ini" blocks that begin with "; in FILE, [SECTION]" are edits of a file that
// an earlier command wrote: each of their lines replaces the key of its name, or is added.
//
// In manual pages (roff) the commands stand between .EX and .EE.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace testexamples {

struct Command {
    std::string text;
    std::vector<std::string> output; // lines
    std::size_t line = 0;            // in the document
};

struct Edit {
    std::string file;
    std::string section;
    std::vector<std::string> keys; // whole lines, "Key = value"
};

// A console block, or an edit.
struct Example {
    std::vector<Command> commands;
    std::vector<Edit> edits;
};

struct ExampleFile {
    std::filesystem::path path;
    std::vector<Example> examples;
    // Lines that show tavctl's command line and are no example, so that nobody runs them.
    std::vector<std::string> notRun;
};

// Raises std::runtime_error for a document that cannot be read or a block that is malformed.
ExampleFile readExamples(const std::filesystem::path& path);

} // namespace testexamples
