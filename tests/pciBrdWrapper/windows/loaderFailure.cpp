#include "tests/pciBrdWrapper/loaderFailure.h"

#include "tests/windows/systemText.h"

#include <gtest/gtest.h>

namespace loaderfailure {

namespace {

// The system's words for the code, to the letter: they end with a line break.
std::string withCode(DWORD code) {
    std::string text = testwindows::systemText(code);
    EXPECT_TRUE(text.ends_with("\r\n")) << text;
    text.resize(text.size() - 2);
    return R"("internal_error":{"api":"win32","code":)" + std::to_string(code) + R"(,"string":")" +
           text + R"(\r\n"})";
}

} // namespace

std::string bridgeLibrary() {
    return "zopcibrd.dll";
}

std::string noLibrary() {
    return withCode(126); // ERROR_MOD_NOT_FOUND
}

std::string noLibraryWithoutWords() {
    return R"("internal_error":{"api":"win32","code":126})";
}

std::string notALibrary(const std::string&) {
    return withCode(193); // ERROR_BAD_EXE_FORMAT
}

std::string missingSymbol(const std::string&, const std::string&) {
    return withCode(127); // ERROR_PROC_NOT_FOUND
}

} // namespace loaderfailure
