#include "tests/support/exportedSymbols.h"

#include "tests/support/command.h"

#include <sstream>
#include <stdexcept>

namespace testsupport {

std::multiset<std::string> exportedSymbols(const std::string& library) {
    std::string command = "nm -D --defined-only '";
    command.append(library).append("'");
    const CommandResult listed = runCommand(command);
    if (listed.exitStatus != 0)
        throw std::runtime_error(listed.output);
    std::multiset<std::string> symbols;
    std::istringstream lines(listed.output);
    std::string address;
    std::string kind;
    std::string name;
    while (lines >> address >> kind >> name)
        symbols.insert(kind.append(" ").append(name));
    return symbols;
}

} // namespace testsupport
