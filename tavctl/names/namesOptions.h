// What the command line says to tavctl names.
#pragma once

#include "tavctl/options/commonOptions.h"
#include "tavctl/options/options.h"
#include "tavctl/words/exitStatus.h"

#include <string>
#include <vector>

namespace tavctl {

struct NamesOptions;

// A word behind "names", and what runs it. Raises FailureException.
struct NamesAction {
    CommandOptions word;
    ExitStatus (*run)(const NamesOptions&);
};

struct NamesOptions {
    CommonOptions common;
    bool verbose = false;
    bool stored = false; // no bus is looked at
    bool force = false;
    bool swap = false;
    std::string file;
    std::string name;
    std::string newName;
    std::string newDescriptions;
    std::string newDump;
    std::vector<NamesAction> actions; // none given: list
};

} // namespace tavctl
