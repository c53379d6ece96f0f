#include "tavctl/list/collectionListing.h"

#include "tavctl/bus/leftOutWords.h"
#include "tavctl/host/descriptionFiles.h"
#include "tavctl/host/deviceListing.h"
#include "tavctl/list/listing.h"
#include "tavctl/recordings/machineDocument.h"
#include "tavctl/recordings/machineLook.h"
#include "tavctl/recordings/recordingRun.h"
#include "tavctl/words/print.h"
#include "tavctl/words/printable.h"

#include <fmt/core.h>

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <utility>

namespace tavctl {

namespace {

class Collection {
public:
    Collection(const ListFilter& filter, bool json, bool verbose)
        : filter_(filter), form_{verbose, filter.degraded, screenWidth()} {
        if (json)
            document_.emplace();
    }

    void add(const Recording& recording, MachineLook look) {
        Listing listing;
        if (look.failure) {
            isFailed_ = true;
            complain(look.failure->sentence());
        } else {
            listing = makeListing(look.devices, std::move(look.absent), &look.bus);
            filter_.applyToOneOfMany(listing, found_);
            devices_ += listing.devices.size();
        }
        if (document_) {
            told_ = told_ || !listing.devices.empty() || !listing.absent.empty();
            document_->add(recording, look.failure, listingMembers(listing));
        } else if (!look.failure) {
            addText(recording, std::move(listing));
        }
    }

    ExitStatus end() {
        if (document_)
            document_->end();
        else if (isUnstoredShown_)
            explainMark();
        const bool isUnknown = tellOfUnknown();
        if (isFailed_)
            return ExitStatus::failed;
        const bool isProblem = filter_.degraded ? devices_ != 0 : filter_.isNarrow() && !told_;
        if (!told_ && !document_ && !isUnknown)
            complain("no device is as asked for");
        return isProblem || isUnknown ? ExitStatus::problemFound : ExitStatus::done;
    }

private:
    // Whether there is a DEVICE that no machine has: it may have been meant as a file.
    bool tellOfUnknown() const {
        bool isUnknown = false;
        for (const std::string& word : filter_.devices) {
            if (found_.contains(word))
                continue;
            isUnknown = true;
            complain(Failure{
                "find device",
                word,
                "no machine has one of this name, address or model, and no file is "
                "called so",
                {},
                {}}.sentence());
        }
        return isUnknown;
    }

    void addText(const Recording& recording, Listing listing) {
        tellLeftOut(listing.leftOut, fmt::format(" of {}", recording.name));
        if (!filter_.tellsAbsent())
            listing.absent.clear();
        const std::string present = listingAsTable(listing, form_);
        const std::string absent = absentAsTable(listing, form_);
        const bool isNone = present.empty() && absent.empty();
        if (isNone && filter_.isNarrow())
            return;
        told_ = true;
        print(fmt::format("{}{}\n{}{}{}", isFirst_ ? "" : "\n", printable(recording.name),
                          isNone ? "has no described device\n" : "", present, absent));
        isFirst_ = false;
        for (const ListingEntry& entry : listing.devices)
            isUnstoredShown_ = isUnstoredShown_ || !entry.device.isStored;
    }

    const ListFilter& filter_;
    ListingForm form_;
    std::optional<MachineDocument> document_; // for programs
    std::set<std::string> found_;             // of the DEVICEs, which some machine has
    std::size_t devices_ = 0;
    bool isFirst_ = true;
    bool told_ = false; // something of what was asked for
    bool isFailed_ = false;
    bool isUnstoredShown_ = false;
};

} // namespace

ExitStatus listCollection(const std::vector<std::string>& paths, const CommonOptions& options,
                          const ListFilter& filter, bool verbose) {
    const auto recordings = recordingsAt(paths);
    const HostSetup setup(optionsForMany(options, "list"));
    const Models models = modelsInForce();
    if (models->GetModelCount() == 0)
        explainNoDescriptions();
    Collection collection(filter, options.json, verbose);
    resultsOf<MachineLook>(
        recordings, "looking at recordings",
        [&](const Recording& recording) { return lookAt(recording, models); },
        [&](const Recording& recording, MachineLook look, Progress& progress) {
            const Progress::Hidden hidden(progress);
            collection.add(recording, std::move(look));
        });
    return collection.end();
}

} // namespace tavctl
