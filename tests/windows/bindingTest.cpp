// Binding the bridge library: what Windows is asked, and what becomes of its refusals.
#include "pciBrdWrapper/cPciBrdDynLib.h"
#include "tests/windows/importedFunction.h"
#include "tests/windows/systemText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace {

using namespace nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0;
using nZOQUIL000::tErrorStatus;
using testing::ElementsAre;
using testing::IsEmpty;
using testwindows::ImportedFunction;

// The loader as the product meets it. A module of any number will do: nothing is called.
struct Loader {
    static inline std::vector<std::string> calls;
    static inline DWORD loadError = ERROR_SUCCESS;
    static inline std::size_t missing = 0; // the symbol that is not there, counted from 1
    static inline std::size_t symbols = 0;
    static inline DWORD words = 0; // flags with which the system's text was asked for
    static inline DWORD language = 0;
    static inline decltype(&FormatMessageA) realFormat = nullptr;

    static HMODULE module() { return reinterpret_cast<HMODULE>(std::uintptr_t{0x12340000}); }
    static HMODULE WINAPI load(LPCWSTR name, HANDLE file, DWORD flags) {
        EXPECT_EQ(std::wstring(name), L"zopcibrd.dll");
        EXPECT_EQ(file, nullptr);
        EXPECT_EQ(flags, 0U);
        calls.emplace_back("load");
        SetLastError(loadError);
        return loadError == ERROR_SUCCESS ? module() : nullptr;
    }
    static FARPROC WINAPI symbol(HMODULE from, LPCSTR name) {
        EXPECT_EQ(from, module());
        calls.emplace_back(name);
        if (++symbols != missing)
            return reinterpret_cast<FARPROC>(std::uintptr_t{0x12345678});
        SetLastError(ERROR_PROC_NOT_FOUND);
        return nullptr;
    }
    static BOOL WINAPI unload(HMODULE from) {
        EXPECT_EQ(from, module());
        calls.emplace_back("unload");
        return TRUE;
    }
    static DWORD WINAPI format(DWORD flags, LPCVOID source, DWORD code, DWORD asked, LPSTR buffer,
                               DWORD size, va_list* arguments) {
        words = flags;
        language = asked;
        return realFormat(flags, source, code, asked, buffer, size, arguments);
    }

    Loader() {
        calls.clear();
        loadError = ERROR_SUCCESS;
        missing = symbols = 0;
        words = language = 0;
        realFormat = reinterpret_cast<decltype(realFormat)>(format_.real());
    }

private:
    ImportedFunction load_{"LoadLibraryExW", reinterpret_cast<void*>(&load)};
    ImportedFunction symbol_{"GetProcAddress", reinterpret_cast<void*>(&symbol)};
    ImportedFunction unload_{"FreeLibrary", reinterpret_cast<void*>(&unload)};
    ImportedFunction format_{"FormatMessageA", reinterpret_cast<void*>(&format)};
};

nlohmann::json recordOf(const tErrorStatus& status) {
    return nlohmann::json::parse(status.textOrEmpty());
}

TEST(WindowsBinding, LoadsByTheBareNameAndUnloadsAtTheEnd) {
    const Loader loader;
    {
        tErrorStatus status;
        const cPciBrdDynLib binding(status);
        EXPECT_EQ(status.code, 0);
        ASSERT_EQ(Loader::calls.size(), 19U);
        EXPECT_EQ(Loader::calls[0], "load");
        for (std::size_t i = 0; i < kBridgeFunctionCount; ++i)
            EXPECT_EQ(Loader::calls[i + 1], kBridgeSymbols[i].name);
        Loader::calls.clear();
    }
    EXPECT_THAT(Loader::calls, ElementsAre("unload"));
}

TEST(WindowsBinding, EveryRefusalIsReportedWithTheSystemsCodeAndText) {
    const Loader loader;
    for (const DWORD code : {ERROR_MOD_NOT_FOUND, ERROR_BAD_EXE_FORMAT, ERROR_ACCESS_DENIED}) {
        Loader::calls.clear();
        Loader::loadError = code;
        tErrorStatus status;
        { const cPciBrdDynLib binding(status); }
        EXPECT_EQ(status.code, -52005);
        // Before the test asks for the system's text itself.
        EXPECT_EQ(Loader::words, 0x1300U);
        EXPECT_EQ(Loader::language, 0x400U);
        const nlohmann::json record = recordOf(status);
        EXPECT_EQ(record["file"], "zodynlib\\dynload");
        EXPECT_EQ(record["line"], 49);
        EXPECT_EQ(record["zodynlib_debug"],
                  (nlohmann::json{{"debug", "failed to zodynlib_load library"},
                                  {"path", "zopcibrd.dll"}}));
        EXPECT_EQ(record["internal_error"],
                  (nlohmann::json{{"api", "win32"},
                                  {"code", code},
                                  {"string", testwindows::systemText(code)}}));
        EXPECT_THAT(Loader::calls, ElementsAre("load")) << "neither looked up nor unloaded";
    }
}

TEST(WindowsBinding, ACodeWithoutWordsHasNoText) {
    const Loader loader;
    Loader::loadError = 0xDEAD1234;
    tErrorStatus status;
    const cPciBrdDynLib binding(status);
    EXPECT_EQ(recordOf(status)["internal_error"],
              (nlohmann::json{{"api", "win32"}, {"code", 0xDEAD1234U}}));
}

TEST(WindowsBinding, TheFirstMissingSymbolEndsTheLookUp) {
    for (std::size_t missing = 1; missing <= kBridgeFunctionCount; ++missing) {
        const Loader loader;
        Loader::missing = missing;
        {
            tErrorStatus status;
            const cPciBrdDynLib binding(status);
            EXPECT_EQ(status.code, -52005);
            const nlohmann::json record = recordOf(status);
            EXPECT_EQ(record["zodynlib_debug"],
                      (nlohmann::json{{"debug", "failed to get symbol"},
                                      {"zodynlib_symbol", kBridgeSymbols[missing - 1].name}}));
            EXPECT_EQ(record["internal_error"],
                      (nlohmann::json{{"api", "win32"},
                                      {"code", 127},
                                      {"string", testwindows::systemText(127)}}));
            EXPECT_EQ(Loader::calls.size(), missing + 1);
            Loader::calls.clear();
        }
        EXPECT_THAT(Loader::calls, ElementsAre("unload"));
    }
}

TEST(WindowsBinding, AFailureBeforeKeepsTheLibraryUnloaded) {
    const Loader loader;
    tErrorStatus status;
    status.code = -7;
    { const cPciBrdDynLib binding(status); }
    EXPECT_EQ(status.code, -7);
    EXPECT_THAT(Loader::calls, IsEmpty());
}

} // namespace
