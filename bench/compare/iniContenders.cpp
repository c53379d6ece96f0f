#include "bench/compare/iniContender.h"

namespace bench {

const std::vector<IniEntrant>& iniEntrants() {
    static const std::vector<IniEntrant> entrants = {
        {"class", makeIniClass, true},      {"engine", makeIniEngine, true},
        {"inih, indexed", makeInih, false}, {"SimpleIni", makeSimpleIni, true},
        {"GKeyFile", makeGKeyFile, true},   {"property_tree", makePropertyTree, true},
    };
    return entrants;
}

} // namespace bench
