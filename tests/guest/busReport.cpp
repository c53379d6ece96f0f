// Prints the bus that pcibus/ reads from a path, live or recorded, a function a line.
#include "pcibus/busError.h"
#include "pcibus/readBus.h"
#include "tests/support/describe.h"

#include <cstdio>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s DUMP-OR-SYSFS\n", argv[0]);
        return 2;
    }
    try {
        for (const auto& line : testsupport::describe(pcibus::readBus(argv[1]).functions()))
            std::puts(line.c_str());
    } catch (const pcibus::BusError& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
