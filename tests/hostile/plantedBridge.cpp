// A library that somebody has put where it should never be found. Loading it leaves a file behind.
#include <cstdio>
#include <cstdlib>

namespace {

struct Planted {
    Planted() {
        if (const char* const marker = std::getenv("PLANTED_MARKER"))
            std::fclose(std::fopen(marker, "w"));
    }
};
const Planted kPlanted;

} // namespace
