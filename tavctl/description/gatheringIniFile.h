// An INI file that never fails, so that the plug-in's own loader goes through a whole description:
// what cannot be read is noted and answered with a stand-in. It has the reads that a description is
// loaded with.
#pragma once

#include "pxidrivertools/cIniFile.h"

#include <cstdint>
#include <list>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace tavctl::lint {

// Something that would have ended the load.
struct LoadProblem {
    enum class Kind {
        cannotOpen,
        missingSection,
        missingKey,
        emptyNumber,
        badDecimal,
        badHexadecimal,
        unknownCategory,
    };
    Kind kind = Kind::cannotOpen;
    std::int32_t status = 0; // what the load would have ended with
    std::string section;
    std::string key;
    // The section whose IDsSameAs led here; empty when none did.
    std::string askedBy;
};

class GatheringIniFile {
public:
    using tFixedStatus = nZOQUIL000::tFixedStatus;
    using SectionAndKey = std::pair<std::string, std::string>;

    // Opening fails like any other: without a file there is nothing to go through.
    void open(const char* path, std::uint32_t flags, tFixedStatus& status);
    bool hasKey(const std::string& section, const std::string& key, tFixedStatus& status);
    void getString(const std::string& section, const std::string& key, std::string& value,
                   tFixedStatus& status);
    void getStringList(const std::string& section, const std::string& key,
                       std::list<std::string>& values, tFixedStatus& status);
    void getSigned32(const std::string& section, const std::string& key, std::int32_t& value,
                     tFixedStatus& status);
    void getHexadecimal(const std::string& section, const std::string& key, std::uint32_t& value,
                        tFixedStatus& status);

    // What was read stays; the file's own content goes.
    void close();

    // In the order in which the loader met them; each once.
    [[nodiscard]] const std::vector<LoadProblem>& problems() const { return problems_; }

    // What was asked for, present or not.
    [[nodiscard]] const std::set<SectionAndKey>& asked() const { return asked_; }

    // The items of a list as they were read; none when it was not.
    [[nodiscard]] const std::vector<std::string>& list(const std::string& section,
                                                       const std::string& key) const;

    // The hexadecimal numbers as they were read.
    [[nodiscard]] const std::map<SectionAndKey, std::uint32_t>& hexadecimals() const {
        return hexadecimals_;
    }

    // Section by section, what IDsSameAs names.
    [[nodiscard]] const std::map<std::string, std::string>& idsSameAs() const { return idsSameAs_; }

private:
    void ask(const std::string& section, const std::string& key);
    // Notes what the status reports, if anything, and clears it; true when there was something.
    bool gather(const std::string& section, const std::string& key, tFixedStatus& status);
    void note(LoadProblem problem);

    nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::cIniFile file_;
    std::vector<LoadProblem> problems_;
    std::set<SectionAndKey> asked_;
    std::set<SectionAndKey>::iterator lastAsked_ = asked_.end();
    std::map<SectionAndKey, std::vector<std::string>> lists_;
    std::map<SectionAndKey, std::uint32_t> hexadecimals_;
    std::map<std::string, std::string> idsSameAs_;
    std::string redirectedFrom_; // the section whose identifiers are read elsewhere right now
    std::string redirectedTo_;
};

} // namespace tavctl::lint
