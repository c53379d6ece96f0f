/* Loading the plug-in as a host runs: the same three calls on Linux and on Windows. Header only,
 * for C11 and C++17; a host in C++ takes tavHost.h instead, which does all of this.
 *
 *     char reason[TAVLIBRARY_REASON_SIZE];
 *     int32_t(TAVPLUGIN_CALL * initialize)(void);
 *     tavLibrary library = tavLibrary_open("/usr/lib/zotavpci/zotavpci.so", reason);
 *     if (!library || !tavLibrary_find(library, "tavPlugin_initialize", &initialize))
 *         ...
 *     tavLibrary_close(library);
 *
 * Linux: link with ${CMAKE_DL_LIBS}, -ldl before glibc 2.34.
 * Windows: the plug-in loads zopcibrd.dll by its name, from the folder of the program or from
 * wherever Windows looks for libraries.
 */
#ifndef TAVLIBRARY_H
#define TAVLIBRARY_H

#include <stddef.h>
#include <stdio.h>
#include <string.h>

/* Size in bytes of the buffer for the reason of a failure, terminating NUL included. A longer
 * reason is cut. */
#define TAVLIBRARY_REASON_SIZE 512

/* A loaded library, null for none. */
typedef void* tavLibrary;

/* Loads the library of this path, UTF-8, with slashes on Windows too; a bare name is looked for
 * where the system looks for libraries. Null on failure: `reason`, of TAVLIBRARY_REASON_SIZE bytes,
 * then tells why in UTF-8, with the path. On success it is empty. */
static inline tavLibrary tavLibrary_open(const char* path, char* reason);

/* Writes the address of the function `name` to `function`, which points to a pointer to a function
 * of that type. 0 when the library has no such function; then nothing is written. */
static inline int tavLibrary_find(tavLibrary library, const char* name, void* function);

/* Unloads the library; its functions must not be called any more. Null is allowed. The plug-in
 * releases its list of devices by itself. */
static inline void tavLibrary_close(tavLibrary library);

/* Addresses of functions are copied as bytes: C knows no conversion between pointers to data and to
 * functions. */
#ifdef _WIN32

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

/* The last error of the system's as UTF-8. */
static inline void tavLibrary_tellError(const char* path, char* reason) {
    const DWORD code = GetLastError();
    wchar_t wide[128] = {0};
    char text[3 * sizeof(wide) / sizeof(wide[0])] = {0};
    size_t length = 0;
    FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, NULL, code, 0, wide,
                   sizeof(wide) / sizeof(wide[0]), NULL);
    WideCharToMultiByte(CP_UTF8, 0, wide, -1, text, sizeof(text), NULL, NULL);
    for (length = strlen(text); length > 0 && strchr(" .\r\n", text[length - 1]); --length)
        text[length - 1] = 0;
    snprintf(reason, TAVLIBRARY_REASON_SIZE, "%.256s: error %lu: %.200s", path, code, text);
}

static inline tavLibrary tavLibrary_open(const char* path, char* reason) {
    tavLibrary library = NULL;
    wchar_t wide[1024];
    wchar_t* slash = wide;
    if (MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, path, -1, wide,
                            sizeof(wide) / sizeof(wide[0])) != 0) {
        while ((slash = wcschr(slash, L'/')) != NULL)
            *slash = L'\\';
        library = (tavLibrary)LoadLibraryExW(wide, NULL, 0);
    }
    reason[0] = 0;
    if (library == NULL)
        tavLibrary_tellError(path, reason);
    return library;
}

static inline int tavLibrary_find(tavLibrary library, const char* name, void* function) {
    const FARPROC address = GetProcAddress((HMODULE)library, name);
    if (address == NULL)
        return 0;
    memcpy(function, &address, sizeof(address));
    return 1;
}

static inline void tavLibrary_close(tavLibrary library) {
    if (library != NULL)
        FreeLibrary((HMODULE)library);
}

#else

#include <dlfcn.h>

static inline tavLibrary tavLibrary_open(const char* path, char* reason) {
    const tavLibrary library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    reason[0] = 0;
    if (library == NULL)
        snprintf(reason, TAVLIBRARY_REASON_SIZE, "%s", dlerror());
    return library;
}

static inline int tavLibrary_find(tavLibrary library, const char* name, void* function) {
    void* const address = dlsym(library, name);
    if (address == NULL)
        return 0;
    memcpy(function, &address, sizeof(address));
    return 1;
}

static inline void tavLibrary_close(tavLibrary library) {
    if (library != NULL)
        dlclose(library);
}

#endif

#endif
