#include "platform/dynamicLibrary.h"

#include <dlfcn.h>

#include <cerrno>

namespace platform {

std::string libraryFileName(const char* baseName) {
    return std::string(baseName) + ".so";
}

DynamicLibrary::~DynamicLibrary() {
    unload();
}

// A bare name is searched for along the run path of the module that this code is linked into, and
// never in the current folder. Not dlopen, which is the same for the base namespace: sanitizers put
// a function of their own in its place, and then their run path would count.
bool DynamicLibrary::load(const char* utf8Name) {
    unload();
    errno = 0;
    handle_ = dlmopen(LM_ID_BASE, utf8Name, RTLD_NOW | RTLD_LOCAL);
    if (handle_)
        return true;
    failure_ = lastSystemCode();
    const char* text = dlerror();
    failureText_ = text ? text : "";
    return false;
}

void* DynamicLibrary::symbol(const char* name) {
    errno = 0;
    dlerror();
    void* address = dlsym(handle_, name);
    if (address)
        return address;
    failure_ = lastSystemCode();
    const char* text = dlerror();
    failureText_ = text ? text : "";
    return nullptr;
}

void DynamicLibrary::unload() noexcept {
    if (handle_)
        dlclose(handle_);
    handle_ = nullptr;
}

} // namespace platform
