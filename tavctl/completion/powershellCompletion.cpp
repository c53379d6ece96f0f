// What the other shells get as functions is a table here, which a block of script looks things up
// in. Nothing in it is in double quotes, where a dollar sign would mean something.
#include "tavctl/completion/completion.h"

#include <fmt/core.h>

namespace tavctl {

namespace {

using Value = OptionWords::Value;

constexpr const char* kHead =
    R"(# Completes tavctl's command line in Windows PowerShell and PowerShell.
Register-ArgumentCompleter -Native -CommandName 'tavctl', 'tavctl.exe' -ScriptBlock {
    param([string]$wordToComplete, $commandAst, $cursorPosition)
    $known = @{
)";

constexpr const char* kTail =
    R"(    }
    $words = @($commandAst.CommandElements | Select-Object -Skip 1 |
        Where-Object { $_.Extent.EndOffset -lt $cursorPosition } |
        ForEach-Object { $_.Extent.Text })
    $path = ''
    $before = ''
    foreach ($word in $words) {
        if ($known.ContainsKey($path + '/' + $word)) { $path = $path + '/' + $word }
        $before = $word
    }
    # Of the command and of those that it is within, but for the program's own.
    $options = @()
    $around = $path
    do {
        $options += $known[$around].Options
        $around = $around -replace '/[^/]*$', ''
    } while ($around -ne '')
    $option = $options | Where-Object { $_.Kind -ne 'none' -and $_.Name -ceq $before } |
        Select-Object -First 1
    $offers = @()
    $kind = 'choice'
    if ($option) {
        $kind = $option.Kind
        $offers = @($option.Choices | ForEach-Object { @{ Name = $_; Text = $_ } })
    } elseif ($wordToComplete.StartsWith('-')) {
        $offers = $options
    } else {
        $kind = $known[$path].Kind
        $offers = $known[$path].Words
    }
    if ($kind -eq 'file' -or $kind -eq 'folder') {
        [System.Management.Automation.CompletionCompleters]::CompleteFilename($wordToComplete) |
            Where-Object { $kind -eq 'file' -or $_.ResultType -eq 'ProviderContainer' }
        return
    }
    if ($kind -eq 'device') {
        $quote = [string][char]39
        $at = @()
        $before = ''
        foreach ($word in $words) {
            if ($before -cin '--dump', '--descriptions', '--state', '--plugin') {
                $at += $before, $word.Trim($quote, [string][char]34)
            }
            $before = $word
        }
        $offers = @(& tavctl completion devices @at 2>$null | ForEach-Object {
            $name = $_
            if ($name -match '[^\w.:*-]') {
                $name = $quote + $name.Replace($quote, $quote + $quote) + $quote
            }
            @{ Name = $name; Text = $_ }
        })
    }
    $offers | Where-Object { $_.Name.StartsWith($wordToComplete, [System.StringComparison]::Ordinal) } |
        ForEach-Object {
            [System.Management.Automation.CompletionResult]::new(
                $_.Name, $_.Name, 'ParameterValue', $_.Text)
        }
}
)";

// Between single quotes only a single quote means something; two stand for one.
std::string quotedText(const std::string& text) {
    std::string result = "'";
    for (const char c : text)
        result.append(c == '\'' ? 2 : 1, c);
    return result.append("'");
}

const char* kindName(Value value) {
    switch (value) {
    case Value::none:
        return "none";
    case Value::file:
        return "file";
    case Value::folder:
        return "folder";
    case Value::device:
        return "device";
    case Value::choice:
        return "choice";
    case Value::text:
        break;
    }
    return "text";
}

// A text beside an offer must not be empty.
std::string offer(const std::string& name, const std::string& description) {
    return fmt::format("Name = {}; Text = {}", quotedText(name),
                       quotedText(description.empty() ? name : description));
}

std::string choicesOf(const OptionWords& option) {
    std::string list;
    for (const std::string& choice : option.choices)
        list.append(list.empty() ? "" : ", ").append(quotedText(choice));
    return fmt::format("@({})", list);
}

class PowershellTable {
public:
    std::string write(const CommandWords& whole) {
        add(whole, "");
        return std::move(out_);
    }

private:
    void add(const CommandWords& command, const std::string& path) {
        Value argument = command.commands.empty() ? Value::text : Value::choice;
        out_ += fmt::format("        {} = @{{\n            Words = @(\n", quotedText(path));
        for (const CommandWords& each : command.commands)
            addOffer(offer(each.name, each.description));
        for (const OptionWords& option : command.options) {
            if (!option.isArgument())
                continue;
            argument = option.value;
            for (const std::string& choice : option.choices)
                addOffer(offer(choice, choice));
        }
        out_ += fmt::format("            )\n            Kind = '{}'\n            Options = @(\n",
                            kindName(argument));
        for (const OptionWords& option : command.options) {
            for (const std::string& name : dashedNames(option))
                addOffer(fmt::format("{}; Kind = '{}'; Choices = {}",
                                     offer(name, option.description), kindName(option.value),
                                     choicesOf(option)));
        }
        out_ += "            )\n        }\n";
        for (const CommandWords& each : command.commands)
            add(each, path + "/" + each.name);
    }

    void addOffer(const std::string& members) {
        out_ += fmt::format("                @{{ {} }}\n", members);
    }

    std::string out_;
};

} // namespace

std::string powershellCompletion(const CommandWords& whole) {
    return kHead + PowershellTable().write(whole) + kTail;
}

} // namespace tavctl
