#include "source/descriptionLoader.h"

namespace nZoTavManagerPciPlugin_15_0 {

eDeviceCategory deviceCategoryFromText(const std::string& text) {
    if (text == "PCI")
        return eDeviceCategory::Pci;
    if (text == "Expresscard")
        return eDeviceCategory::Expresscard;
    if (text == "SwitchboxTav")
        return eDeviceCategory::SwitchboxTav;
    raiseSoftwareFault(nDescription::kRecordedFile);
}

} // namespace nZoTavManagerPciPlugin_15_0
