// The script for PowerShell, which does not run everywhere: its text is looked at, by the rules
// that PowerShell reads it by.
#include "tavctl/commandLine.h"
#include "tavctl/completion/completion.h"

#include <gmock/gmock.h>

#include <cctype>
#include <functional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace tavctl;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsSupersetOf;

// One piece of a script: a text in single quotes without them, a variable, or a single character.
struct Piece {
    enum class Kind { text, variable, other } kind;
    std::string text;
};

bool isWordCharacter(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

// Refuses what the script has no use for and what would mean something else than it looks like.
std::vector<Piece> piecesOf(const std::string& script) {
    std::vector<Piece> pieces;
    for (std::size_t i = 0; i < script.size();) {
        const char c = script[i];
        if (c == '#') {
            i = script.find('\n', i);
        } else if (c == '\'') {
            std::string text;
            for (++i;; ++i) {
                if (script.at(i) == '\'' && script.at(i + 1) != '\'')
                    break;
                text += script[i];
                i += script[i] == '\'' ? 1U : 0U;
            }
            ++i;
            pieces.push_back({Piece::Kind::text, text});
        } else if (c == '$') {
            std::string name;
            for (++i; isWordCharacter(script.at(i)); ++i)
                name += script[i];
            pieces.push_back({Piece::Kind::variable, name});
        } else if (c == '"' || c == '`' || c == '\r' || static_cast<unsigned char>(c) > 0x7E) {
            throw std::runtime_error("unexpected: " + script.substr(i, 20));
        } else {
            pieces.push_back({Piece::Kind::other, std::string(1, c)});
            ++i;
        }
    }
    return pieces;
}

void expectBalancedBrackets(const std::vector<Piece>& pieces) {
    std::string open;
    for (const Piece& piece : pieces) {
        if (piece.kind != Piece::Kind::other)
            continue;
        const char c = piece.text.front();
        const auto closer = std::string("}])").find(c);
        if (c == '{' || c == '[' || c == '(') {
            open += c;
        } else if (closer != std::string::npos) {
            ASSERT_FALSE(open.empty());
            ASSERT_EQ(open.back(), std::string("{[(")[closer]);
            open.pop_back();
        }
    }
    EXPECT_EQ(open, "");
}

// What the table has for a path, up to the next path.
std::string entryOf(const std::string& script, const std::string& path) {
    const std::string begin = "\n        '" + path + "' = @{\n";
    const std::size_t at = script.find(begin);
    if (at == std::string::npos)
        return "no entry for " + path;
    return script.substr(at, script.find("\n        }\n", at) - at);
}

void forEachOf(const CommandWords& command, const std::string& path,
               const std::function<void(const CommandWords&, const std::string&)>& use) {
    use(command, path);
    for (const CommandWords& each : command.commands)
        forEachOf(each, path + "/" + each.name, use);
}

TEST(PowershellCompletion, IsTextThatPowershellReadsAsItIsMeant) {
    const std::string script = powershellCompletion(commandLineWords());
    const auto pieces = piecesOf(script);
    expectBalancedBrackets(pieces);
    std::set<std::string> variables;
    for (const Piece& piece : pieces) {
        if (piece.kind == Piece::Kind::variable)
            variables.insert(piece.text);
    }
    // Those that are set in it, and the element of a pipeline.
    EXPECT_THAT(variables,
                ElementsAre("_", "around", "at", "before", "commandAst", "cursorPosition", "kind",
                            "known", "name", "null", "offers", "option", "options", "path", "quote",
                            "word", "wordToComplete", "words"));
    for (const char* given :
         {"_", "null", "word", "wordToComplete", "commandAst", "cursorPosition"})
        variables.erase(given);
    for (const std::string& name : variables)
        EXPECT_THAT(script, HasSubstr("$" + name + " = ")) << name;
    EXPECT_THAT(script, HasSubstr("\nRegister-ArgumentCompleter -Native -CommandName 'tavctl', "
                                  "'tavctl.exe' -ScriptBlock {\n"));
    EXPECT_TRUE(script.ends_with("\n}\n"));
}

TEST(PowershellCompletion, HasEveryCommandAndOption) {
    const std::string script = powershellCompletion(commandLineWords());
    forEachOf(commandLineWords(), "", [&](const CommandWords& command, const std::string& path) {
        const std::string entry = entryOf(script, path);
        for (const CommandWords& each : command.commands)
            EXPECT_THAT(entry, HasSubstr("@{ Name = '" + each.name + "'; Text = '")) << path;
        for (const std::string& name : dashedNames(command))
            EXPECT_THAT(entry, HasSubstr("@{ Name = '" + name + "'; Text = '")) << path;
    });
}

TEST(PowershellCompletion, KnowsValuesByTheirKind) {
    const std::string script = powershellCompletion(commandLineWords());
    EXPECT_THAT(entryOf(script, "/draw"),
                HasSubstr("Kind = 'choice'; Choices = @('svg', 'dot') }"));
    EXPECT_THAT(entryOf(script, "/completion"), HasSubstr("@{ Name = 'powershell'; "));
    EXPECT_THAT(entryOf(script, "/lint"), HasSubstr("\n            Kind = 'file'\n"));
    EXPECT_THAT(entryOf(script, "/list"), HasSubstr("\n            Kind = 'device'\n"));
    EXPECT_THAT(entryOf(script, "/record"), HasSubstr("\n            Kind = 'text'\n"));
    EXPECT_THAT(entryOf(script, "/names"), HasSubstr("\n            Kind = 'choice'\n"));
    EXPECT_THAT(entryOf(script, "/tree"), HasSubstr("Kind = 'folder'; Choices = @() }"));
    EXPECT_THAT(entryOf(script, "/tree"), HasSubstr("Kind = 'none'; Choices = @() }"));
}

// A command line whose texts hold what means something to PowerShell.
TEST(PowershellCompletion, QuotesEveryText) {
    CommandWords whole{"box", "", {}, {}};
    OptionWords option;
    option.longNames = {"size"};
    option.description = "the box's $(size) `n @{ } \"x\"";
    option.value = OptionWords::Value::choice;
    option.choices = {"'small'", "$large"};
    whole.options.push_back(option);
    option = {};
    option.shortNames = {"f"};
    whole.options.push_back(option);
    const std::string script = powershellCompletion(whole);
    EXPECT_THAT(script, HasSubstr("Text = 'the box''s $(size) `n @{ } \"x\"'; Kind = 'choice'; "
                                  "Choices = @('''small''', '$large') }"));
    EXPECT_THAT(script, HasSubstr("@{ Name = '-f'; Text = '-f'; "))
        << "an empty text beside an offer is an error";
    const auto pieces = piecesOf(script);
    expectBalancedBrackets(pieces);
    std::set<std::string> texts;
    for (const Piece& piece : pieces) {
        if (piece.kind == Piece::Kind::text)
            texts.insert(piece.text);
    }
    EXPECT_THAT(texts, IsSupersetOf({std::string("'small'"), std::string("$large"),
                                     std::string("the box's $(size) `n @{ } \"x\"")}));
}

} // namespace
