#include "tests/examples/exampleFile.h"

#include <fstream>
#include <stdexcept>
#include <string_view>

namespace testexamples {

namespace {

constexpr std::string_view kPrompt = "$ ";

std::string trimmed(const std::string& text) {
    const std::size_t begin = text.find_first_not_of(' ');
    return begin == std::string::npos ? std::string() : text.substr(begin);
}

// What a line of a manual page's example looks like on paper.
std::string withoutRoff(const std::string& line) {
    std::string text;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] != '\\' || i + 1 == line.size()) {
            text += line[i];
            continue;
        }
        const char next = line[++i];
        if (next == 'e')
            text += '\\';
        else if (next == '-')
            text += '-';
        else if (next != '&')
            throw std::runtime_error("unknown escape in an example: " + line);
    }
    return text;
}

class Reader {
public:
    explicit Reader(const std::filesystem::path& path) : stream_(path) {
        file_.path = path;
        if (!stream_)
            throw std::runtime_error("cannot read " + path.string());
    }

    ExampleFile markdown() {
        while (next()) {
            if (text_.starts_with("```")) {
                fence(text_.substr(3));
            } else if (text_.starts_with("    ")) {
                checkNotRun();
            }
        }
        return std::move(file_);
    }

    ExampleFile manualPage() {
        while (next()) {
            if (text_ != ".EX")
                continue;
            Example example;
            while (next() && text_ != ".EE") {
                text_ = withoutRoff(text_);
                addConsoleLine(example);
            }
            file_.examples.push_back(std::move(example));
        }
        return std::move(file_);
    }

private:
    bool next() {
        ++line_;
        return static_cast<bool>(std::getline(stream_, text_));
    }

    [[noreturn]] void fail(const std::string& reason) const {
        throw std::runtime_error(file_.path.string() + ":" + std::to_string(line_) + ": " + reason);
    }

    void fence(const std::string& kind) {
        Example example;
        bool first = true;
        while (next() && text_ != "```") {
            if (kind == "console")
                addConsoleLine(example);
            else if (kind == "ini" && (!first || text_.starts_with("; in ")))
                addEditLine(example, first);
            else
                checkNotRun();
            if (kind == "ini" && first && example.edits.empty()) {
                while (next() && text_ != "```")
                    checkNotRun();
                return;
            }
            first = false;
        }
        if (!example.commands.empty() || !example.edits.empty())
            file_.examples.push_back(std::move(example));
    }

    void checkNotRun() {
        const std::string text = trimmed(text_);
        if (text.starts_with("tavctl ") || text.starts_with("$ tavctl "))
            file_.notRun.push_back(std::to_string(line_) + ": " + text);
    }

    void addConsoleLine(Example& example) {
        if (text_.starts_with(kPrompt)) {
            Command command{text_.substr(kPrompt.size()), {}, line_};
            while (command.text.ends_with('\\')) {
                if (!next())
                    fail("the command goes on behind the end");
                command.text.pop_back();
                command.text += trimmed(text_);
            }
            example.commands.push_back(std::move(command));
        } else if (example.commands.empty()) {
            fail("expected a command, \"$ ...\", got " + text_);
        } else {
            example.commands.back().output.push_back(text_);
        }
    }

    // "; in FILE, [SECTION]", then keys.
    void addEditLine(Example& example, bool first) {
        if (first) {
            const std::size_t comma = text_.rfind(", [");
            if (comma == std::string::npos || !text_.ends_with(']'))
                fail("expected \"; in FILE, [SECTION]\"");
            constexpr std::size_t kBegin = 5;
            Edit edit;
            edit.file = text_.substr(kBegin, comma - kBegin);
            edit.section = text_.substr(comma + 2);
            example.edits.push_back(std::move(edit));
        } else if (text_.starts_with("; in ")) {
            addEditLine(example, true);
        } else if (!text_.empty() && !text_.starts_with(';')) {
            if (text_.find(" = ") == std::string::npos)
                fail("expected \"Key = value\"");
            example.edits.back().keys.push_back(text_);
        }
    }

    std::ifstream stream_;
    ExampleFile file_;
    std::string text_;
    std::size_t line_ = 0;
};

} // namespace

ExampleFile readExamples(const std::filesystem::path& path) {
    Reader reader(path);
    return path.extension() == ".md" ? reader.markdown() : reader.manualPage();
}

} // namespace testexamples
