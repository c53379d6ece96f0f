#include "source/cPciModelInfoDb.h"

namespace nZoTavManagerPciPlugin_15_0 {

template class cPciModelInfoDbTemplated<nZoPxiDriverTools_1_0::cIniFile>;

iPciModelInfoDb& modelDatabase() {
    static cPciModelInfoDb database;
    return database;
}

} // namespace nZoTavManagerPciPlugin_15_0
