#include "tavctl/options/resultOptions.h"

namespace tavctl {

void addTo(CommandOptions command, ResultTarget& target) {
    command.value("-o,--output", target.file, ValueForm::newFile(),
                  "File to write (default, or -: standard output)");
    command.flag("--force", target.replace, "Replace that file when it is there");
}

} // namespace tavctl
