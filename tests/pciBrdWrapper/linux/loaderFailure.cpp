#include "tests/pciBrdWrapper/loaderFailure.h"

namespace loaderfailure {

namespace {

// The loader has words, but no code.
std::string withText(const std::string& text) {
    return R"("internal_error":{"api":"posix","string":")" + text + R"("})";
}

} // namespace

std::string bridgeLibrary() {
    return "zopcibrd.so";
}

std::string noLibrary() {
    return withText("zopcibrd.so: cannot open shared object file: No such file or directory");
}

std::string noLibraryWithoutWords() {
    return R"("internal_error":{"api":"posix"})";
}

std::string notALibrary(const std::string& path) {
    return withText(path + ": invalid ELF header");
}

std::string missingSymbol(const std::string& path, const std::string& symbol) {
    return withText(path + ": undefined symbol: " + symbol);
}

} // namespace loaderfailure
