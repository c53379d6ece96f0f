#include "tavctl/options/commonOptions.h"

namespace tavctl {

void CommonOptions::addBusTo(CommandOptions command) {
    command.value("--plugin", plugin, ValueForm::file(),
                  "Plug-in to load (default: beside tavctl, or as found)");
    command.value("--dump", dump, ValueForm::file("PATH"),
                  "Recorded bus: lspci -x text, folder as /sys, - (stdin)");
    command.value("--descriptions", descriptions, ValueForm::folder(),
                  "Folder that holds \"PCI Hardware Descriptions\"");
    command.value("--state", state, ValueForm::folder(), "Folder of the terminal names");
    command.flag("--debug", debug, "Tell with a failure the plug-in's whole error record");
}

void CommonOptions::addTo(CommandOptions command) {
    command.flag("--json", json, "Print JSON");
    addBusTo(command);
}

} // namespace tavctl
