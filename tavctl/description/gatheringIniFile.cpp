#include "tavctl/description/gatheringIniFile.h"

#include "source/descriptionLoader.h"

#include <algorithm>

namespace tavctl::lint {

namespace {

namespace nDescription = nZoTavManagerPciPlugin_15_0::nDescription;
using namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0;
using Kind = LoadProblem::Kind;

constexpr const char* kStandInCategory = "PCI";

bool isCategory(const std::string& text) {
    try {
        nZoTavManagerPciPlugin_15_0::deviceCategoryFromText(text);
        return true;
    } catch (const zoerr::Exception&) {
        return false;
    }
}

Kind kindOf(std::int32_t status) {
    switch (status) {
    case kIniFileErrNotOpen:
        return Kind::missingSection;
    case kIniFileErrBadNumber:
        return Kind::badDecimal;
    case kIniFileErrBadForm:
        return Kind::badHexadecimal;
    case kIniFileErrNoKey:
        return Kind::missingKey;
    default:
        return Kind::cannotOpen;
    }
}

} // namespace

void GatheringIniFile::open(const char* path, std::uint32_t flags, tFixedStatus& status) {
    file_.open(path, flags, status);
    if (status.failed())
        note({Kind::cannotOpen, status.code, {}, {}, {}});
}

void GatheringIniFile::close() {
    tFixedStatus ignored;
    file_.close(ignored);
}

bool GatheringIniFile::hasKey(const std::string& section, const std::string& key,
                              tFixedStatus& status) {
    ask(section, key);
    const bool has = file_.hasKey(section, key, status);
    if (has || section != nDescription::kSectionModel || key != nDescription::kHasUpstreamPort)
        return has;
    // The one key whose absence the loader itself refuses.
    const bool inSection = file_.hasSection(section, status);
    note({inSection ? Kind::missingKey : Kind::missingSection,
          kTavManErrSoftwareFault,
          section,
          key,
          {}});
    return true;
}

void GatheringIniFile::getString(const std::string& section, const std::string& key,
                                 std::string& value, tFixedStatus& status) {
    ask(section, key);
    file_.getString(section, key, value, status);
    const bool failed = gather(section, key, status);
    if (key == nDescription::kIDsSameAs) {
        idsSameAs_[section] = value;
        redirectedFrom_ = section;
        redirectedTo_ = value;
    } else if (key == nDescription::kDeviceCategory && (failed || !isCategory(value))) {
        if (!failed)
            note({Kind::unknownCategory, kTavManErrSoftwareFault, section, key, {}});
        value = kStandInCategory;
    }
}

void GatheringIniFile::getStringList(const std::string& section, const std::string& key,
                                     std::list<std::string>& values, tFixedStatus& status) {
    ask(section, key);
    file_.getStringList(section, key, values, status);
    gather(section, key, status);
    lists_[{section, key}] = {values.begin(), values.end()};
}

void GatheringIniFile::getSigned32(const std::string& section, const std::string& key,
                                   std::int32_t& value, tFixedStatus& status) {
    ask(section, key);
    file_.getSigned32(section, key, value, status);
    tFixedStatus unasked;
    // That HasUpstreamPort is missing was noted when its presence was asked for.
    if (status.failed() && !file_.hasKey(section, key, unasked))
        status = {};
    else if (!gather(section, key, status))
        return;
    // Whether the upstream port is meant shows in the file.
    value = key == nDescription::kHasUpstreamPort &&
                    file_.hasSection(nDescription::kSectionUpstreamPort, unasked)
                ? 1
                : 0;
}

void GatheringIniFile::getHexadecimal(const std::string& section, const std::string& key,
                                      std::uint32_t& value, tFixedStatus& status) {
    ask(section, key);
    file_.getHexadecimal(section, key, value, status);
    if (!gather(section, key, status))
        hexadecimals_[{section, key}] = value;
}

const std::vector<std::string>& GatheringIniFile::list(const std::string& section,
                                                       const std::string& key) const {
    static const std::vector<std::string> kNone;
    const auto found = lists_.find({section, key});
    return found == lists_.end() ? kNone : found->second;
}

void GatheringIniFile::ask(const std::string& section, const std::string& key) {
    // A value is mostly asked for right after its presence.
    if (lastAsked_ == asked_.end() || lastAsked_->second != key || lastAsked_->first != section)
        lastAsked_ = asked_.emplace(section, key).first;
    if (section != redirectedTo_) {
        redirectedFrom_.clear();
        redirectedTo_.clear();
    }
}

bool GatheringIniFile::gather(const std::string& section, const std::string& key,
                              tFixedStatus& status) {
    if (!status.failed())
        return false;
    LoadProblem problem{kindOf(status.code), status.code, section, key, redirectedFrom_};
    status = {};
    if (problem.kind == Kind::missingKey && file_.hasKey(section, key, status))
        problem.kind = Kind::emptyNumber;
    note(std::move(problem));
    return true;
}

void GatheringIniFile::note(LoadProblem problem) {
    // What is missing is one thing for the section itself and another for the one that led there.
    const bool isMissing = problem.kind == Kind::missingSection || problem.kind == Kind::missingKey;
    const bool known =
        std::any_of(problems_.begin(), problems_.end(), [&](const LoadProblem& each) {
            return each.kind == problem.kind && each.section == problem.section &&
                   each.key == problem.key && (!isMissing || each.askedBy == problem.askedBy);
        });
    if (!known)
        problems_.push_back(std::move(problem));
}

} // namespace tavctl::lint
