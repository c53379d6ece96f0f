#include "tavctl/completion/completion.h"

namespace tavctl {

namespace {

using Value = OptionWords::Value;

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words)
        text.append(text.empty() ? "" : " ").append(word);
    return text;
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

class BashScript {
public:
    explicit BashScript(const CommandWords& app) : app_(app) {}

    std::string write() {
        out_ = "# Completes tavctl's command line in bash.\n"
               "_tavctl() {\n"
               "    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]}\n"
               "    local path='' words='' options='' word\n"
               "    for word in \"${COMP_WORDS[@]:1:COMP_CWORD-1}\"; do\n"
               "        case \"$path/$word\" in\n";
        forEachCommand(app_, "", [this](const CommandWords&, const std::string& path) {
            if (!path.empty())
                out_.append("            ")
                    .append(path)
                    .append(") path=")
                    .append(path)
                    .append(" ;;\n");
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
            out_.append("        ").append(quotedPath(path)).append(") words='");
            std::vector<std::string> words = commandNames(command);
            const auto choices = argumentChoices(command);
            words.insert(words.end(), choices.begin(), choices.end());
            out_.append(joined(words)).append("' options='");
            out_.append(joined(allOptions(path))).append("' ;;\n");
        });
        out_ += "    esac\n"
                "    if [[ $cur == -* ]]; then\n"
                "        COMPREPLY=($(compgen -W \"$options\" -- \"$cur\"))\n"
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
                patterns.append(patterns.empty() ? "" : "|").append(path);
                patterns.append(command.commands.empty() ? "" : "*").append("\\ ").append(name);
            }
            out_.append("        ").append(patterns).append(")\n            ");
            switch (option.value) {
            case Value::choice:
                out_.append("COMPREPLY=($(compgen -W '").append(joined(option.choices));
                out_.append("' -- \"$cur\"))");
                break;
            case Value::file:
                out_ += "compopt -o filenames 2>/dev/null; COMPREPLY=($(compgen -f -- \"$cur\"))";
                break;
            case Value::folder:
                out_ += "compopt -o filenames 2>/dev/null; COMPREPLY=($(compgen -d -- \"$cur\"))";
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
        addFunction(app, "_tavctl", {});
        out_ += "_tavctl \"$@\"\n";
        return std::move(out_);
    }

private:
    static std::string action(const OptionWords& option) {
        switch (option.value) {
        case Value::choice:
            return std::string(":value:(").append(joined(option.choices)).append(")");
        case Value::file:
            return ":file:_files";
        case Value::folder:
            return ":folder:_files -/";
        case Value::text:
            return ":value: ";
        case Value::none:
            break;
        }
        return "";
    }

    void addSpecifications(const CommandWords& command) {
        for (const OptionWords& option : command.options) {
            if (option.isArgument()) {
                out_.append(" \\\n        ")
                    .append(singleQuoted(std::string("*").append(action(option))));
                continue;
            }
            for (const std::string& name : dashedNames(option)) {
                out_.append(" \\\n        ");
                out_.append(singleQuoted(std::string(name)
                                             .append("[")
                                             .append(escaped(option.description))
                                             .append("]")
                                             .append(action(option))));
            }
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
            addFunction(each, std::string(name).append("_").append(each.name), within);
        out_.append(name).append("() {\n");
        if (!command.commands.empty()) {
            out_.append("    local context state state_descr line\n    typeset -A opt_args\n");
            out_.append("    local -a commands=(");
            for (const CommandWords& each : command.commands)
                out_.append("\n        ")
                    .append(singleQuoted(
                        std::string(each.name).append(":").append(escaped(each.description))));
            out_.append(")\n");
        }
        out_.append("    _arguments -C");
        addSpecifications(command);
        for (const CommandWords* outer : around)
            addSpecifications(*outer);
        if (!command.commands.empty()) {
            out_.append(" \\\n        '1: :->command' \\\n        '*:: :->rest'\n");
            out_.append("    case $state in\n        command) _describe command commands ;;\n");
            out_.append("        rest) case $words[1] in\n");
            for (const CommandWords& each : command.commands)
                out_.append("            ")
                    .append(each.name)
                    .append(") ")
                    .append(name)
                    .append("_")
                    .append(each.name)
                    .append(" ;;\n");
            out_.append("        esac ;;\n    esac");
        }
        out_.append("\n}\n");
    }

    std::string out_;
};

class FishScript {
public:
    std::string write(const CommandWords& app) {
        out_ = "# Completes tavctl's command line in fish.\ncomplete -c tavctl -f\n";
        addCommand(app, {}, "");
        return std::move(out_);
    }

private:
    void addLine(const std::string& condition, const std::string& rest) {
        out_.append("complete -c tavctl -n ").append(singleQuoted(condition));
        out_.append(rest).append("\n");
    }

    void addCommand(const CommandWords& command, const std::vector<std::string>& path,
                    const std::string& seen) {
        const std::string condition = seen.empty() ? "__fish_use_subcommand" : seen;
        for (const OptionWords& option : command.options)
            addOption(option, condition);
        const std::string names = joined(commandNames(command));
        for (const CommandWords& each : command.commands) {
            const std::string here = seen.empty()
                                         ? condition
                                         : std::string(seen)
                                               .append("; and not __fish_seen_subcommand_from ")
                                               .append(names);
            addLine(here, std::string(" -a ").append(each.name).append(" -d ").append(
                              singleQuoted(each.description)));
            std::string inside = seen.empty() ? std::string() : std::string(seen).append("; and ");
            inside.append("__fish_seen_subcommand_from ").append(each.name);
            std::vector<std::string> deeper = path;
            deeper.push_back(each.name);
            addCommand(each, deeper, inside);
        }
    }

    void addOption(const OptionWords& option, const std::string& condition) {
        std::string rest;
        for (const std::string& name : option.shortNames)
            rest.append(" -s ").append(name);
        for (const std::string& name : option.longNames)
            rest.append(" -l ").append(name);
        switch (option.value) {
        case Value::none:
            break;
        case Value::file:
            rest.append(option.isArgument() ? " -F" : " -r -F");
            break;
        case Value::folder:
            rest.append(" -x -a ").append(singleQuoted("(__fish_complete_directories)"));
            break;
        case Value::choice:
            rest.append(option.isArgument() ? " -a " : " -x -a ");
            rest.append(singleQuoted(joined(option.choices)));
            break;
        case Value::text:
            rest.append(option.isArgument() ? "" : " -x");
            break;
        }
        if (option.isArgument() && option.value != Value::file && option.value != Value::choice)
            return;
        addLine(condition, rest.append(" -d ").append(singleQuoted(option.description)));
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
