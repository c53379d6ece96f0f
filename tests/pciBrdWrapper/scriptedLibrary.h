// The scripted bridge library as a test holds it: kept loaded, with an empty script at the start.
// Program and binding then share the one loaded library, and its script says what the binding did.
#pragma once

#include "platform/dynamicLibrary.h"
#include "tests/pciBrdWrapper/libraries/script.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

class ScriptedLibrary {
public:
    // `path` is the library's full path; TAV_BRIDGE_LIBRARY is that of the one in the program's run
    // path.
    explicit ScriptedLibrary(const char* path = TAV_BRIDGE_LIBRARY) {
        if (!module_->load(path))
            throw std::runtime_error(module_->failureText());
        void* const access = module_->symbol(scripted::kScriptSymbol);
        if (!access)
            throw std::runtime_error(module_->failureText());
        script_ = reinterpret_cast<scripted::ScriptAccess>(access)();
    }

    scripted::Script* operator->() const { return script_; }
    scripted::Script& operator*() const { return *script_; }

    // Lets go of the library; the script is there no longer unless someone else keeps it loaded.
    void release() { module_.reset(); }

    // The calls of one function, in order.
    [[nodiscard]] std::vector<scripted::Call> callsOf(scripted::BridgeFunction function) const {
        std::vector<scripted::Call> calls;
        for (const scripted::Call& call : script_->calls)
            if (call.function == function)
                calls.push_back(call);
        return calls;
    }

private:
    std::unique_ptr<platform::DynamicLibrary> module_ =
        std::make_unique<platform::DynamicLibrary>();
    scripted::Script* script_ = nullptr;
};

// Every test of such a suite starts with a fresh script.
class WithScriptedLibrary : public testing::Test {
protected:
    void SetUp() override { *library = scripted::Script(); }
    void TearDown() override { *library = scripted::Script(); }

    ScriptedLibrary library;
};
