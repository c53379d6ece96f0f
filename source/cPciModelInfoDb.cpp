#include "source/cPciModelInfoDb.h"

namespace nZoTavManagerPciPlugin_15_0 {

template class cPciModelInfoDbTemplated<nZoPxiDriverTools_1_0::cIniFile>;

namespace {

cPciModelInfoDb* database = nullptr;

} // namespace

iPciModelInfoDb& modelDatabase() {
    if (database == nullptr)
        database = new cPciModelInfoDb;
    return *database;
}

void releaseModelDatabase() noexcept {
    delete database;
    database = nullptr;
}

} // namespace nZoTavManagerPciPlugin_15_0
