// Which library a bare name stands for, where it cannot be told where the loader would look.
#include "platform/dynamicLibrary.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <string>

namespace {

bool modulesAreHidden = false;

} // namespace

// Stands before the system's for this program: asked for a module that is loaded already it may say
// that there is none.
extern "C" __attribute__((visibility("default"))) void* dlopen(const char* name,
                                                               int flags) noexcept {
    if (modulesAreHidden && (flags & RTLD_NOLOAD) != 0)
        return nullptr;
    return dlmopen(LM_ID_BASE, name, flags);
}

namespace {

// One that every system has, and no program is linked with.
constexpr const char* kSystemsOwn = "libcrypt.so.1";

class HiddenModules {
public:
    HiddenModules() { modulesAreHidden = true; }
    ~HiddenModules() { modulesAreHidden = false; }
    HiddenModules(const HiddenModules&) = delete;
    HiddenModules& operator=(const HiddenModules&) = delete;
};

TEST(DynamicLibrary, BareNameIsLoadedFromTheSystemsFolders) {
    platform::DynamicLibrary library;
    EXPECT_TRUE(library.load(kSystemsOwn)) << library.failureText();
    EXPECT_NE(library.symbol("crypt"), nullptr);
}

TEST(DynamicLibrary, NothingIsLoadedByABareNameWhereTheFoldersCannotBeTold) {
    const HiddenModules hidden;
    platform::DynamicLibrary library;
    EXPECT_FALSE(library.load(kSystemsOwn));
    EXPECT_FALSE(library.loaded());
    EXPECT_EQ(library.failure(), static_cast<platform::SystemCode>(ENOENT));
    EXPECT_EQ(library.failureText(), std::string(kSystemsOwn) + ": cannot open shared object file: "
                                                                "No such file or directory");
}

TEST(DynamicLibrary, APathIsTakenAsItIsAllTheSame) {
    platform::DynamicLibrary library;
    ASSERT_TRUE(library.load(kSystemsOwn)) << library.failureText();
    Dl_info information = {};
    ASSERT_NE(dladdr(library.symbol("crypt"), &information), 0);
    const std::string path = information.dli_fname;
    const HiddenModules hidden;
    platform::DynamicLibrary again;
    EXPECT_TRUE(again.load(path.c_str())) << again.failureText();
}

TEST(DynamicLibrary, SecondFailureReplacesTheWordsOfTheFirst) {
    platform::DynamicLibrary library;
    EXPECT_FALSE(library.load("/nonexistent/first.so"));
    EXPECT_FALSE(library.load("/nonexistent/second.so"));
    EXPECT_EQ(library.failureText(), "/nonexistent/second.so: cannot open shared object file: "
                                     "No such file or directory");
}

} // namespace
