#include "tests/examples/exampleRun.h"

#include "tests/support/command.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace testexamples {

namespace {

namespace fs = std::filesystem;

constexpr char kEndOfOutput = '\036';
constexpr const char* kAnyLines = "...";

std::vector<std::string> linesOf(std::string text) {
    while (text.ends_with('\n'))
        text.pop_back();
    std::vector<std::string> lines;
    if (text.empty())
        return lines;
    std::stringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

// Each command, and behind its output a mark with its exit status, which the next one can ask for.
std::string scriptOf(const std::vector<Command>& commands) {
    std::string script;
    for (const Command& command : commands) {
        script += command.text;
        script += "\nstatus=$?; printf '\\n\\036%d\\n' $status; (exit $status)\n";
    }
    return script;
}

bool asksForStatus(const Command& command) {
    return command.text == "echo $?";
}

std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines)
        text += "    " + line + "\n";
    return text;
}

bool matchesFrom(const std::vector<std::string>& lines, std::size_t line,
                 const std::vector<std::string>& expected, std::size_t at) {
    for (; at < expected.size(); ++at, ++line) {
        if (expected[at] == kAnyLines) {
            for (std::size_t skip = line; skip <= lines.size(); ++skip) {
                if (matchesFrom(lines, skip, expected, at + 1))
                    return true;
            }
            return false;
        }
        if (line >= lines.size() || lines[line] != expected[at])
            return false;
    }
    return line == lines.size();
}

} // namespace

bool matchesLines(const std::vector<std::string>& lines, const std::vector<std::string>& expected) {
    return matchesFrom(lines, 0, expected, 0);
}

ExampleRun::ExampleRun() : home_(folder_.path() / "home") {
    fs::create_directories(home_ / "names");
    for (const char* folder : {"samples", "descriptions", "examples", "include", "python"})
        fs::create_directory_symlink(fs::path(TAV_SOURCE_DIR) / folder, home_ / folder);
    fs::create_directory(home_ / "build");
    fs::create_directory_symlink(TAV_BINARY_DIR, home_ / "build" / "release");
    std::ofstream(folder_.path() / "tav-manager.conf")
        << "[SOFTWARE\\Quorvane\\TAV Manager\\CurrentVersion]\n"
           "Path=descriptions/\nConfigPath=names/\n";
    fs::create_directory(folder_.path() / "unused");
    std::ofstream(folder_.path() / "newly-installed.conf")
        << "[SOFTWARE\\Quorvane\\TAV Manager\\CurrentVersion]\n"
           "Path=descriptions/\nConfigPath=../unused/\n";
    // The recorded bus stands for the machine's own, on which list stores names; and a host has.
    // Who looks at the installed sample has just installed it: there are no names yet.
    std::ofstream(folder_.path() / "functions")
        << "tavctl() {\n"
           "    local installed=/usr/share/doc/tavctl/examples/\n"
           "    if [[ \"$*\" == *\"$installed\"* ]]; then\n"
           "        TAV_MANAGER_CONF=../newly-installed.conf \\\n"
           "            command tavctl \"${@/\"$installed\"/samples/}\"\n"
           "        return\n"
           "    fi\n"
           "    if [ \"$1\" = list ] && [[ \"$*\" != *--dump* && \"$*\" != *--state* ]]; then\n"
           "        set -- \"$@\" --state names\n"
           "    fi\n"
           "    command tavctl \"$@\"\n"
           "}\n"
           "sqlite3() {\n" // the installed script is that of the sources
           "    command sqlite3 \"${@//\\/usr\\/share\\/tavctl/" TAV_SOURCE_DIR
           "/packaging/sqlite}\"\n"
           "}\n"
           "python3() {\n" // that of the packages which the tests take
           "    /usr/bin/python3 \"$@\"\n"
           "}\n";
    runCommands({{"tavctl list", {}, 0}});
}

std::vector<std::string> ExampleRun::run(const Example& example) {
    for (const Edit& edit : example.edits)
        apply(edit);
    return example.commands.empty() ? std::vector<std::string>() : runCommands(example.commands);
}

std::vector<std::string> ExampleRun::runCommands(const std::vector<Command>& commands) {
    const std::string script = folder_.file("script", scriptOf(commands)).string();
    const std::string environment =
        "PATH=" + fs::path(TAVCTL_FILE).parent_path().string() +
        ":$PATH LC_ALL=C.UTF-8 TAV_MANAGER_CONF=" + (folder_.path() / "tav-manager.conf").string() +
        " TAV_PCI_DUMP=samples/switchboxes.dump PYTHONDONTWRITEBYTECODE=1"
        " PYTEST_ADDOPTS='-p no:cacheprovider' BASH_ENV=" +
        (folder_.path() / "functions").string() + " ";
    std::string rest = testsupport::runCommand("cd " + home_.string() + " && " + environment +
                                               "bash " + script + " </dev/null 2>&1")
                           .output;
    std::vector<std::string> complaints;
    for (std::size_t i = 0; i < commands.size(); ++i) {
        const Command& command = commands[i];
        const std::string where = std::to_string(command.line) + ": $ " + command.text + "\n";
        const std::size_t end = rest.find(kEndOfOutput);
        if (end == std::string::npos) {
            complaints.push_back(where + "  did not come to its end:\n" + joined(linesOf(rest)));
            break;
        }
        const auto lines = linesOf(rest.substr(0, end));
        const std::size_t next = rest.find('\n', end);
        const int status = std::stoi(rest.substr(end + 1, next - end - 1));
        rest.erase(0, next + 1);
        if (!command.output.empty() && !matchesLines(lines, command.output))
            complaints.push_back(where + "  prints\n" + joined(lines) + "  and not\n" +
                                 joined(command.output));
        const bool isShown = i + 1 < commands.size() && asksForStatus(commands[i + 1]);
        if (!isShown && status != 0 && (status != 1 || command.output.empty()))
            complaints.push_back(where + "  ends with " + std::to_string(status) + ":\n" +
                                 joined(lines));
    }
    return complaints;
}

void ExampleRun::apply(const Edit& edit) {
    const fs::path path = home_ / edit.file;
    std::ifstream stream(path);
    if (!stream)
        throw std::runtime_error("nothing has written the file to edit: " + edit.file);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
        if (line.ends_with('\r'))
            line.pop_back();
        lines.push_back(line);
    }
    const auto section = std::find(lines.begin(), lines.end(), edit.section);
    if (section == lines.end())
        throw std::runtime_error(edit.file + " has no section " + edit.section);
    for (const std::string& key : edit.keys) {
        const std::string name = key.substr(0, key.find(' '));
        auto line = std::next(std::find(lines.begin(), lines.end(), edit.section));
        while (line != lines.end() && !line->starts_with('[') && !line->starts_with(name + " ") &&
               !line->starts_with(name + "="))
            ++line;
        if (line == lines.end() || line->starts_with('['))
            lines.insert(std::next(std::find(lines.begin(), lines.end(), edit.section)), key);
        else
            *line = key;
    }
    std::ofstream out(path);
    for (const std::string& line : lines)
        out << line << "\n";
}

} // namespace testexamples
