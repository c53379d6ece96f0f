// A load by the rules alone: lists, linear walks, no index, nothing remembered. What the engine
// loads is held against it, on files made of few names, so that they meet often.
#include "pxidrivertools/asciiText.h"
#include "pxidrivertools/ini/iniContinuation.h"
#include "pxidrivertools/ini/iniLines.h"
#include "pxidrivertools/ini/iniNames.h"
#include "tests/pxidrivertools/iniHelpers.h"

#include <list>
#include <random>

namespace {

using namespace ini;

struct ModelKey {
    std::string name;
    std::string value;
    std::int32_t line;
    char quote;
};
struct ModelSection {
    std::string name;
    std::int32_t line;
    std::vector<ModelKey> keys;
};

class Model {
public:
    explicit Model(const IniFileObject& settings) : settings_(settings) {}

    std::string load(const std::string& text) {
        std::string line;
        std::int32_t number = 0;
        for (std::size_t at = 0; at < text.size(); ++at) {
            const char c = text[at];
            const bool ends = c == '\n' || c == '\r';
            if (!ends)
                line += c;
            if (ends || at + 1 == text.size()) {
                take(line, ++number);
                line.clear();
                if (ends && at + 1 < text.size() && text[at + 1] != c &&
                    (text[at + 1] == '\n' || text[at + 1] == '\r'))
                    ++at;
            }
        }
        for (ModelSection& section : sections_)
            join(section);
        return listing();
    }

private:
    template <class Records>
    auto* find(Records& records, std::string_view name) const {
        for (auto& record : records)
            if (settings_.mergeDuplicates && equalNames(settings_.caseSensitive, record.name, name))
                return &record;
        return static_cast<typename Records::value_type*>(nullptr);
    }

    void take(const std::string& text, std::int32_t number) {
        const IniLine line = classifyLine(settings_.parse, text);
        if (line.kind == IniLineKind::header) {
            current_ = find(sections_, line.name);
            if (current_ != nullptr)
                current_->line = number;
            else
                current_ =
                    &sections_.emplace_back(ModelSection{std::string(line.name), number, {}});
        } else if (line.kind == IniLineKind::key && current_ != nullptr) {
            std::string_view value = line.value;
            const char quote = stripQuotes(settings_.parse, value);
            if (ModelKey* const same = find(current_->keys, line.name)) {
                same->value = value;
                same->quote = quote;
            } else {
                current_->keys.push_back(
                    {std::string(line.name), std::string(value), number, quote});
            }
        }
    }

    static void join(ModelSection& section) {
        std::vector<ModelKey> joined;
        bool inRun = false;
        for (const ModelKey& key : section.keys) {
            const auto form = readContinuationName(key.name);
            if (form && inRun && form->number != 1) {
                joined.back().value += key.value;
                continue;
            }
            inRun = form && form->number == 1;
            joined.push_back(key);
            if (inRun)
                joined.back().name = form->base;
        }
        section.keys = joined;
    }

    std::string listing() const {
        std::string text;
        for (const ModelSection& section : sections_) {
            text += section.name + "@" + std::to_string(section.line) + "{";
            for (const ModelKey& key : section.keys) {
                text += key.name + "@" + std::to_string(key.line) + "=";
                if (key.quote != kNoQuote)
                    text += key.quote;
                text += key.value + ";";
            }
            text += "}";
        }
        return text;
    }

    const IniFileObject& settings_;
    std::list<ModelSection> sections_;
    ModelSection* current_ = nullptr;
};

class IniModelTest : public testing::Test {
protected:
    std::size_t below(std::size_t bound) { return random() % bound; }

    // `sections` and `keys` are how many different names there are, `stay` how rarely the section
    // changes.
    std::string text(std::size_t lines, std::size_t sections, std::size_t keys, std::size_t stay) {
        const std::vector<std::string> ends = {"\n", "\n", "\r\n", "\n\n", "\n\r", "\r\r\n"};
        std::string all;
        for (std::size_t n = 0; n < lines; ++n) {
            std::string line(below(4) == 0 ? 1 : 0, ' ');
            if (below(stay) == 0) {
                line += "[" + std::string(below(2), ' ') + (below(2) == 0 ? "s" : "S") +
                        std::to_string(below(sections)) + "]";
            } else if (below(20) == 0) {
                line += below(2) == 0 ? ";comment = no" : "odd";
            } else {
                line += (below(2) == 0 ? "key" : "KEY") + std::to_string(below(keys));
                if (below(6) == 0)
                    line += " Line" + std::to_string(below(4));
                const std::string quote(below(3) == 0 ? "\"" : "");
                line += below(2) == 0 ? " = " : "=";
                line += quote + std::string(below(30), 'v') + std::to_string(n) + quote;
            }
            all += line;
            all += ends[below(ends.size())];
        }
        return all;
    }

    void compare(const std::string& input) {
        for (const bool merges : {true, false})
            for (const bool exact : {true, false}) {
                file->mergeDuplicates = merges;
                file->caseSensitive = exact;
                ASSERT_EQ(loadText(*file, input), kIniDone);
                ASSERT_EQ(listing(*file), Model(*file).load(input));
            }
    }

    std::mt19937 random{20240301}; // NOLINT: the same files in every run
    TestMemory memory;
    IniFileOwner file{createIniFile(memory.memory())};
};

TEST_F(IniModelTest, FewNames) {
    for (int round = 0; round < 200; ++round)
        compare(text(60, 4, 6, 5));
}

TEST_F(IniModelTest, ManyShortSections) {
    for (int round = 0; round < 20; ++round)
        compare(text(1000, 300, 20, 4));
}

TEST_F(IniModelTest, SectionsAroundTheSizesWhereStorageChanges) {
    for (const std::size_t keys : {30U, 33U, 34U, 60U, 64U, 66U, 100U, 200U})
        for (int round = 0; round < 5; ++round)
            compare(text(keys * 12, 5, keys, 20));
}

TEST_F(IniModelTest, LongSectionsBegunAgain) {
    for (int round = 0; round < 5; ++round)
        compare(text(5000, 3, 1500, 400));
}

} // namespace
