#include "tavctl/completion/completion.h"

#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <algorithm>

namespace tavctl {

namespace {

using Value = OptionWords::Value;

std::string joined(const std::vector<std::string>& words) {
    return separated(words, " ");
}

// What may stand in place of a command's own commands: the choices of its arguments.
std::vector<std::string> argumentChoices(const CommandWords& command) {
    std::vector<std::string> choices;
    for (const OptionWords& option : command.options) {
        if (option.isArgument())
            choices.insert(choices.end(), option.choices.begin(), option.choices.end());
    }
    return choices;
}

bool takesDevices(const CommandWords& command) {
    return std::any_of(command.options.begin(), command.options.end(), [](const auto& option) {
        return option.isArgument() && option.value == Value::device;
    });
}

std::string singleQuoted(const std::string& text) {
    std::string result = "'";
    for (const char c : text) {
        if (c == '\'')
            result += "'\\''";
        else
            result += c;
    }
    return result.append("'");
}

// Which bus is at hand the line itself may say. An address has colons, at which bash divides words.
constexpr const char* kDevicesInBash =
    R"(# Completes tavctl's command line in bash.
_tavctl_devices() {
    local typed=${COMP_LINE:0:COMP_POINT} word at=() i
    typed=${typed##*[[:space:]]}
    for ((i = 1; i < COMP_CWORD; i++)); do
        case ${COMP_WORDS[i]} in
            --dump|--descriptions|--state|--plugin)
                at+=("${COMP_WORDS[i]}" "${COMP_WORDS[i+1]/#\~\//$HOME/}") ;;
        esac
    done
    COMPREPLY=()
    while IFS= read -r word; do
        printf -v word %q "$word"
        [[ $word == "$typed"* ]] || continue
        [[ $typed == *:* ]] && word=${word#"${typed%:*}:"}
        COMPREPLY+=("$word")
    done < <("${COMP_WORDS[0]}" completion devices "${at[@]}" 2>/dev/null </dev/null)
}
)";

constexpr const char* kDevicesInZsh = R"(_tavctl_devices() {
    local -a at found
    local -i i
    for ((i = 1; i < CURRENT; i++)); do
        case $words[i] in
            --dump|--descriptions|--state|--plugin) at+=($words[i] ${(Q)words[i+1]}) ;;
        esac
    done
    found=("${(@f)$(_call_program devices tavctl completion devices ${(q)at} 2>/dev/null </dev/null)}")
    compadd -a found
}
)";

constexpr const char* kDevicesInFish = R"(function __tavctl_devices
    set -l at
    set -l before ''
    for word in (commandline -opc)
        if contains -- $before --dump --descriptions --state --plugin
            set -a at $before $word
        end
        set before $word
    end
    tavctl completion devices $at 2>/dev/null </dev/null
end
)";

class BashScript {
public:
    explicit BashScript(const CommandWords& app) : app_(app) {}

    std::string write() {
        out_ = kDevicesInBash;
        out_ += "_tavctl() {\n"
                "    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]}\n"
                "    local path='' words='' options='' devices=0 word\n"
                "    for word in \"${COMP_WORDS[@]:1:COMP_CWORD-1}\"; do\n"
                "        case \"$path/$word\" in\n";
        forEachCommand(app_, "", [this](const CommandWords&, const std::string& path) {
            if (!path.empty())
                out_ += fmt::format("            {0}) path={0} ;;\n", path);
        });
        out_ += "        esac\n"
                "    done\n"
                "    case \"$path $prev\" in\n";
        forEachCommand(app_, "", [this](const CommandWords& command, const std::string& path) {
            addValues(command, path);
        });
        out_ += "    esac\n"
                "    case \"$path\" in\n";
        forEachCommand(app_, "", [this](const CommandWords& command, const std::string& path) {
            std::vector<std::string> words = commandNames(command);
            const auto choices = argumentChoices(command);
            words.insert(words.end(), choices.begin(), choices.end());
            out_ +=
                fmt::format("        {}) words='{}' options='{}' devices={} ;;\n", quotedPath(path),
                            joined(words), joined(allOptions(path)), takesDevices(command) ? 1 : 0);
        });
        out_ += "    esac\n"
                "    if [[ $cur == -* ]]; then\n"
                "        COMPREPLY=($(compgen -W \"$options\" -- \"$cur\"))\n"
                "    elif ((devices)); then\n"
                "        _tavctl_devices\n"
                "    elif [[ -n $words ]]; then\n"
                "        COMPREPLY=($(compgen -W \"$words\" -- \"$cur\"))\n"
                "    else\n"
                "        compopt -o filenames 2>/dev/null\n"
                "        COMPREPLY=($(compgen -f -- \"$cur\"))\n"
                "    fi\n"
                "}\n"
                "complete -F _tavctl tavctl\n";
        return std::move(out_);
    }

private:
    template <typename Use>
    static void forEachCommand(const CommandWords& command, const std::string& path, Use use) {
        use(command, path);
        for (const CommandWords& each : command.commands)
            forEachCommand(each, path + "/" + each.name, use);
    }

    static std::string quotedPath(const std::string& path) {
        return path.empty() ? std::string("''") : path;
    }

    // Of a command and of those that it is within, but for the program's own.
    [[nodiscard]] std::vector<std::string> allOptions(const std::string& wanted) const {
        std::vector<std::string> names;
        forEachCommand(app_, "", [&](const CommandWords& command, const std::string& path) {
            const bool within =
                path.empty() ? wanted.empty() : (wanted + "/").starts_with(path + "/");
            if (!within)
                return;
            const auto more = dashedNames(command);
            names.insert(names.end(), more.begin(), more.end());
        });
        return names;
    }

    // What follows an option that takes a value; also within the command's own commands.
    void addValues(const CommandWords& command, const std::string& path) {
        for (const OptionWords& option : command.options) {
            if (option.value == Value::none || option.isArgument())
                continue;
            std::string patterns;
            for (const std::string& name : dashedNames(option)) {
                patterns += fmt::format("{}{}{}\\ {}", patterns.empty() ? "" : "|", path,
                                        command.commands.empty() ? "" : "*", name);
            }
            out_ += fmt::format("        {})\n            ", patterns);
            switch (option.value) {
            case Value::choice:
                out_ += fmt::format("COMPREPLY=($(compgen -W '{}' -- \"$cur\"))",
                                    joined(option.choices));
                break;
            case Value::file:
                out_ += "compopt -o filenames 2>/dev/null; COMPREPLY=($(compgen -f -- \"$cur\"))";
                break;
            case Value::folder:
                out_ += "compopt -o filenames 2>/dev/null; COMPREPLY=($(compgen -d -- \"$cur\"))";
                break;
            case Value::device:
                out_ += "_tavctl_devices";
                break;
            case Value::text:
            case Value::none:
                out_ += "COMPREPLY=()";
                break;
            }
            out_ += "; return ;;\n";
        }
    }

    const CommandWords& app_;
    std::string out_;
};

class ZshScript {
public:
    std::string write(const CommandWords& app) {
        out_ = "#compdef tavctl\n# Completes tavctl's command line in zsh.\n";
        out_ += kDevicesInZsh;
        addFunction(app, "_tavctl", {});
        out_ += "_tavctl \"$@\"\n";
        return std::move(out_);
    }

private:
    static std::string action(const OptionWords& option) {
        switch (option.value) {
        case Value::choice:
            return fmt::format(":value:({})", joined(option.choices));
        case Value::file:
            return ":file:_files";
        case Value::folder:
            return ":folder:_files -/";
        case Value::device:
            return ":device:_tavctl_devices";
        case Value::text:
            return ":value: ";
        case Value::none:
            break;
        }
        return "";
    }

    void add(const std::string& specification) {
        out_ += fmt::format(" \\\n        {}", singleQuoted(specification));
    }

    void addSpecifications(const CommandWords& command) {
        for (const OptionWords& option : command.options) {
            if (option.isArgument()) {
                add(fmt::format("*{}", action(option)));
                continue;
            }
            for (const std::string& name : dashedNames(option))
                add(fmt::format("{}[{}]{}", name, escaped(option.description), action(option)));
        }
    }

    // Brackets and colons mean something in a specification.
    static std::string escaped(const std::string& description) {
        std::string text;
        for (const char c : description) {
            if (c == '[' || c == ']' || c == ':' || c == '\\')
                text += '\\';
            text += c;
        }
        return text;
    }

    void addFunction(const CommandWords& command, const std::string& name,
                     const std::vector<const CommandWords*>& around) {
        std::vector<const CommandWords*> within = around;
        if (!command.commands.empty() && name != "_tavctl")
            within.push_back(&command);
        for (const CommandWords& each : command.commands)
            addFunction(each, fmt::format("{}_{}", name, each.name), within);
        out_ += fmt::format("{}() {{\n", name);
        if (!command.commands.empty()) {
            out_ += "    local context state state_descr line\n    typeset -A opt_args\n";
            out_ += "    local -a commands=(";
            for (const CommandWords& each : command.commands)
                out_ += fmt::format(
                    "\n        {}",
                    singleQuoted(fmt::format("{}:{}", each.name, escaped(each.description))));
            out_ += ")\n";
        }
        out_ += "    _arguments -C";
        addSpecifications(command);
        for (const CommandWords* outer : around)
            addSpecifications(*outer);
        if (!command.commands.empty()) {
            out_ += " \\\n        '1: :->command' \\\n        '*:: :->rest'\n";
            out_ += "    case $state in\n        command) _describe command commands ;;\n";
            out_ += "        rest) case $words[1] in\n";
            for (const CommandWords& each : command.commands)
                out_ += fmt::format("            {0}) {1}_{0} ;;\n", each.name, name);
            out_ += "        esac ;;\n    esac";
        }
        out_ += "\n}\n";
    }

    std::string out_;
};

class FishScript {
public:
    std::string write(const CommandWords& app) {
        out_ = "# Completes tavctl's command line in fish.\ncomplete -c tavctl -f\n";
        out_ += kDevicesInFish;
        addCommand(app, {}, "");
        return std::move(out_);
    }

private:
    void addLine(const std::string& condition, const std::string& rest) {
        out_ += fmt::format("complete -c tavctl -n {}{}\n", singleQuoted(condition), rest);
    }

    void addCommand(const CommandWords& command, const std::vector<std::string>& path,
                    const std::string& seen) {
        const std::string condition = seen.empty() ? "__fish_use_subcommand" : seen;
        for (const OptionWords& option : command.options)
            addOption(option, condition);
        const std::string names = joined(commandNames(command));
        for (const CommandWords& each : command.commands) {
            const std::string here =
                seen.empty()
                    ? condition
                    : fmt::format("{}; and not __fish_seen_subcommand_from {}", seen, names);
            addLine(here, fmt::format(" -a {} -d {}", each.name, singleQuoted(each.description)));
            const std::string inside = fmt::format("{}{}__fish_seen_subcommand_from {}", seen,
                                                   seen.empty() ? "" : "; and ", each.name);
            std::vector<std::string> deeper = path;
            deeper.push_back(each.name);
            addCommand(each, deeper, inside);
        }
    }

    void addOption(const OptionWords& option, const std::string& condition) {
        std::string rest;
        for (const std::string& name : option.shortNames)
            rest += fmt::format(" -s {}", name);
        for (const std::string& name : option.longNames)
            rest += fmt::format(" -l {}", name);
        switch (option.value) {
        case Value::none:
            break;
        case Value::file:
            rest += option.isArgument() ? " -F" : " -r -F";
            break;
        case Value::folder:
            rest += " -x -a '(__fish_complete_directories)'";
            break;
        case Value::choice:
            rest += fmt::format("{} -a {}", option.isArgument() ? "" : " -x",
                                singleQuoted(joined(option.choices)));
            break;
        case Value::device:
            rest += fmt::format("{} -a '(__tavctl_devices)'", option.isArgument() ? "" : " -x");
            break;
        case Value::text:
            rest += option.isArgument() ? "" : " -x";
            break;
        }
        if (option.isArgument() && (option.value == Value::text || option.value == Value::folder))
            return;
        addLine(condition, fmt::format("{} -d {}", rest, singleQuoted(option.description)));
    }

    std::string out_;
};

} // namespace

std::string bashCompletion(const CommandWords& whole) {
    return BashScript(whole).write();
}

std::string zshCompletion(const CommandWords& whole) {
    return ZshScript().write(whole);
}

std::string fishCompletion(const CommandWords& whole) {
    return FishScript().write(whole);
}

} // namespace tavctl
