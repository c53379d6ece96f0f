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

constexpr const char* kNotFoundWords = ": cannot open shared object file: ";

// The module that this code is linked into, as the loader knows it; null when it cannot be told. By
// dlopen, which looks in the namespace that the module lives in: a host may have made one for it.
std::unique_ptr<void, int (*)(void*)> thisModule() {
    Dl_info information = {};
    void* module = nullptr;
    static const char kInThisModule = 0;
    if (dladdr1(&kInThisModule, &information, &module, RTLD_DL_LINKMAP) == 0)
        return {nullptr, dlclose};
    errno = 0;
    module = dlopen(static_cast<const link_map*>(module)->l_name, RTLD_LAZY | RTLD_NOLOAD);
    if (module == nullptr && errno == ENOMEM)
        throw std::bad_alloc();
    return {module, dlclose};
}

// The loader's answer about where it searches. Its dlinfo may report success although the loader
// had no memory to count everything, and then write past what it counted; dlerror knows.
void askForSearch(void* handle, int request, Dl_serinfo& answer) {
    dlerror();
    if (dlinfo(handle, request, &answer) != 0 || dlerror() != nullptr)
        throw std::bad_alloc();
}

// The folders in which the loader looks for what the module asks for.
std::vector<std::string> searchedFolders(void* handle) {
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
std::string nameForLoader(void* module, const char* name) {
    const std::vector<std::string> folders = searchedFolders(module);
    if (!folders.empty() && std::all_of(folders.begin(), folders.end(), isAbsolute))
        return name;
    for (const std::string& folder : folders) {
        std::string path = folder + "/" + name;
        if (isAbsolute(folder) && access(path.c_str(), R_OK) == 0)
            return path;
    }
    return {};
}

// What the loader is asked for: in which namespace, which is the module's own, and under what name.
struct Request {
    Lmid_t space = LM_ID_BASE;
    std::string name; // empty: nothing, since it cannot be told where the loader would look
};

Request requestFor(const char* name) {
    Request request;
    const auto module = thisModule();
    const bool isKnown = module && dlinfo(module.get(), RTLD_DI_LMID, &request.space) == 0;
    if (std::strchr(name, '/') != nullptr)
        request.name = name;
    else if (isKnown)
        request.name = nameForLoader(module.get(), name);
    return request;
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
    const Request request = requestFor(utf8Name);
    dlerror();
    errno = request.name.empty() ? ENOENT : 0;
    // Not dlopen, which is the same otherwise: sanitizers put a function of their own in its place,
    // and then their run path would count.
    if (!request.name.empty())
        handle_ = dlmopen(request.space, request.name.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle_ == nullptr)
        keepFailure(lastSystemCode(), request.name.empty() ? utf8Name : nullptr);
    return handle_ != nullptr;
}

void* DynamicLibrary::symbol(const char* name) {
    errno = 0;
    dlerror();
    void* address = dlsym(handle_, name);
    if (address)
        return address;
    keepFailure(lastSystemCode());
    return nullptr;
}

void DynamicLibrary::keepFailure(SystemCode code, const char* name) noexcept {
    failure_ = code;
    try {
        const char* const text = name == nullptr ? dlerror() : nullptr;
        failureText_ = text != nullptr ? text : "";
        if (name != nullptr)
            failureText_.assign(name).append(kNotFoundWords).append(std::strerror(ENOENT));
    } catch (const std::bad_alloc&) {
        failureText_.clear();
    }
}

void DynamicLibrary::unload() noexcept {
    if (handle_)
        dlclose(handle_);
    handle_ = nullptr;
}

} // namespace platform
