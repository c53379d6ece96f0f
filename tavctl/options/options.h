// Declares what a command line may say, and reads one. Only options.cpp knows the library that does
// the parsing: whoever declares options compiles without it.
//
// Names of options are written as "-o,--output"; whichever of them is used sets the same variable.
// An empty value is refused, of an option as of an argument.
//
// A variable keeps its value when the command line does not give another, and must live as long as
// the parser.
#pragma once

#include "tavctl/options/commandWords.h"

#include <memory>
#include <string>
#include <vector>

namespace tavctl {

// What a value is: the help shows its name, shells complete it by its kind.
struct ValueForm {
    static ValueForm text(std::string name);
    // A file that is there, and one that is to be written.
    static ValueForm file(std::string name = "FILE");
    static ValueForm newFile(std::string name = "FILE");
    static ValueForm folder(std::string name = "DIR");
    // A device as the bus at hand has it: its terminal name, its address or its model.
    static ValueForm device(std::string name = "DEVICE");
    // One of these words and no other, which the help lists where the description does not.
    static ValueForm choice(std::string name, std::vector<std::string> choices);

    std::string name;
    OptionWords::Value kind;
    std::vector<std::string> choices;
    bool isThere = false;
};

// One command's part of the command line. A reference to what belongs to the parser: copies declare
// for the same command.
class CommandOptions {
public:
    class Node; // the parser's own
    explicit CommandOptions(Node& node) : node_(&node) {}

    // An option that takes no value.
    void flag(const std::string& names, bool& isSet, const std::string& description);
    // An option that takes one value.
    void value(const std::string& names, std::string& value, const ValueForm& form,
               const std::string& description);
    // An option that takes a whole number from `least` to `most`, which the help tells where the
    // description does not have them as "(1-9)".
    void number(const std::string& names, int& value, const std::string& valueName, int least,
                int most, const std::string& description);
    // An option that takes every word behind it up to the next option, at least one.
    void values(const std::string& names, std::vector<std::string>& values, const ValueForm& form,
                const std::string& description);

    // Words that stand on their own: one that must be there, one that may be left out, and any
    // number of them, none too. The form's name is what the help calls them.
    void argument(std::string& value, const ValueForm& form, const std::string& description);
    void optionalArgument(std::string& value, const ValueForm& form,
                          const std::string& description);
    void arguments(std::vector<std::string>& values, const ValueForm& form,
                   const std::string& description);

    // The one option is refused without the other. Both are declared, and named with their dashes.
    void needs(const std::string& option, const std::string& other);

    // The two options are refused together, likewise.
    void excludes(const std::string& option, const std::string& other);

    // Lines at the end of the help.
    void footer(const std::string& text);

    // A word of the command's own, such as "check" in "names check", with options of its own. The
    // command takes one of its actions or none; its own options may stand behind the action too.
    CommandOptions action(const std::string& word, const std::string& description);

    // Whether the command line that was parsed has this command.
    [[nodiscard]] bool isGiven() const;

private:
    Node* node_;
};

// What a command line turned out to be.
struct ParsedLine {
    enum class Kind {
        command,  // one that can be run: CommandOptions::isGiven() says which
        question, // for the help or the version: the text is the answer
        misuse    // the text is the parser's sentence on it
    };
    Kind kind = Kind::command;
    std::string text;
};

// The command line of a program that is told one of its commands. Has -h, --help and --version.
class OptionParser {
public:
    OptionParser(const std::string& program, const std::string& description,
                 const std::string& version);
    ~OptionParser();
    OptionParser(const OptionParser&) = delete;
    OptionParser& operator=(const OptionParser&) = delete;

    // Lines at the end of the program's own help.
    void footer(const std::string& text);

    CommandOptions command(const std::string& word, const std::string& description);

    // Sets the variables to what the words say, the program's own name first. At most once.
    ParsedLine parse(const std::vector<std::string>& words);

    // After parse(): puts files in the place of the patterns that stand for them where shells leave
    // that to programs. A variable that takes one file gets the only one. Raises FailureException,
    // with ExitStatus::wrongUsage, for a pattern that no file matches, or more than one then.
    void findFiles();

    // Every command and option declared so far.
    [[nodiscard]] CommandWords words() const;

private:
    struct Whole;
    std::unique_ptr<Whole> whole_;
};

} // namespace tavctl
