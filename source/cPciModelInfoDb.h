// The model database over an INI file class.
#pragma once

#include "pxidrivertools/cIniFile.h"
#include "source/descriptionLoader.h"
#include "source/modelList.h"

namespace nZoTavManagerPciPlugin_15_0 {

template <typename tIniFile>
class cPciModelInfoDbTemplated : public ModelList {
public:
    void LoadDescriptions(iPciTavFilesystem& filesystem) override {
        if (!models_.empty())
            return;
        std::vector<std::string> files;
        filesystem.ListFiles(filesystem.GetDescriptionFilePattern(), files);
        for (const std::string& path : files) {
            tIniFile file;
            models_.push_back(DescriptionLoader<tIniFile>(file).load(path));
        }
    }
};

using cPciModelInfoDb = cPciModelInfoDbTemplated<nZoPxiDriverTools_1_0::cIniFile>;
extern template class cPciModelInfoDbTemplated<nZoPxiDriverTools_1_0::cIniFile>;

// The one database of the process; loaded by the first build of the device cache and never again.
// Raises std::bad_alloc.
iPciModelInfoDb& modelDatabase();

// At the library's end. Whoever asks later gets a new one.
void releaseModelDatabase() noexcept;

} // namespace nZoTavManagerPciPlugin_15_0
