// Which devices would lose their names when other names took the place of those that are stored.
#pragma once

#include "tavctl/names/nameCheck.h"

#include <string>
#include <vector>

namespace tavctl {

// A stored name that a device has.
struct NameLoss {
    NameEntry entry;
    std::string then; // what the device would be called; empty: the other names do not say
};

// The names of `stored` that devices of the survey have and `others` lacks. Without a survey (null)
// every stored name counts as one that a device has.
std::vector<NameLoss> lostNames(const NameFile& stored, const Survey* survey,
                                const NameFile& others);

// "TAV1 (TAV-B3 Switch Box, MR00:00,20) would lose its name, TAV2 (...) would be named TAV7"; of
// many the first ones, and how many more there are.
std::string lossesAsText(const std::vector<NameLoss>& losses);

} // namespace tavctl
