#include "platform/dynamicLibrary.h"

#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

namespace platform {

namespace {

// Not dlopen, which is the same for the base namespace: sanitizers put a function of their own in
// its place, and then their run path would count.
void* open(const char* name, int flags) noexcept {
    return dlmopen(LM_ID_BASE, name, flags);
}

// The loader's answer about where it searches. Its dlinfo may report success although the loader
// had no memory to count everything, and then write past what it counted; dlerror knows.
void askForSearch(void* handle, int request, Dl_serinfo& answer) {
    dlerror();
    if (dlinfo(handle, request, &answer) != 0 || dlerror() != nullptr)
        throw std::bad_alloc();
}

// The folders in which the loader looks for what the module that this code is linked into asks for.
// None when the loader does not tell.
std::vector<std::string> searchedFolders() {
    Dl_info information = {};
    void* module = nullptr;
    static const char kInThisModule = 0;
    if (dladdr1(&kInThisModule, &information, &module, RTLD_DL_LINKMAP) == 0)
        return {};
    void* const handle =
        open(static_cast<const link_map*>(module)->l_name, RTLD_LAZY | RTLD_NOLOAD);
    if (handle == nullptr)
        return {};
    const std::unique_ptr<void, int (*)(void*)> closed(handle, dlclose);
    Dl_serinfo header = {};
    askForSearch(handle, RTLD_DI_SERINFOSIZE, header);
    std::vector<std::max_align_t> room(header.dls_size / sizeof(std::max_align_t) + 1);
    auto* const list = reinterpret_cast<Dl_serinfo*>(room.data());
    *list = header;
    askForSearch(handle, RTLD_DI_SERINFO, *list);
    std::vector<std::string> folders;
    for (unsigned i = 0; i < list->dls_cnt; ++i)
        folders.emplace_back(list->dls_serpath[i].dls_name);
    return folders;
}

bool isAbsolute(const std::string& folder) {
    return folder.starts_with('/');
}

// An empty element in LD_LIBRARY_PATH, which is soon made by mistake, means the current folder to
// the loader: whoever can write there would decide what the host runs. In such an environment the
// loader gets a whole path, from its other folders. Empty when the file is in none of them.
std::string nameForLoader(const char* name) {
    if (std::strchr(name, '/') != nullptr)
        return name;
    const std::vector<std::string> folders = searchedFolders();
    if (std::all_of(folders.begin(), folders.end(), isAbsolute))
        return name;
    for (const std::string& folder : folders) {
        std::string path = folder + "/" + name;
        if (isAbsolute(folder) && access(path.c_str(), R_OK) == 0)
            return path;
    }
    return {};
}

} // namespace

std::string libraryFileName(const char* baseName) {
    return std::string(baseName) + ".so";
}

DynamicLibrary::~DynamicLibrary() {
    unload();
}

bool DynamicLibrary::load(const char* utf8Name) {
    unload();
    const std::string name = nameForLoader(utf8Name);
    if (name.empty()) {
        failure_ = ENOENT;
        failureText_.assign(utf8Name).append(": cannot open shared object file: ");
        failureText_.append(std::strerror(ENOENT));
        return false;
    }
    do // again where the loader gave up for a signal
        errno = 0;
    while ((handle_ = open(name.c_str(), RTLD_NOW | RTLD_LOCAL)) == nullptr && errno == EINTR);
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
