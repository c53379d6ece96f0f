# One interface target that every target of the project links: language level, warnings, sanitizers.
add_library(zotavpci_settings INTERFACE)
target_compile_features(zotavpci_settings INTERFACE cxx_std_20 c_std_11)
target_include_directories(zotavpci_settings INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(zotavpci_settings INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
    # One section a function, so that each shared library keeps only what its exports reach.
    -ffunction-sections -fdata-sections
    # Tests put functions of their own in the place of the system's.
    $<$<AND:$<CXX_COMPILER_ID:Clang>,$<NOT:$<BOOL:$<TARGET_PROPERTY:TAV_IS_TEST>>>>:-Wreserved-identifier>)

if(WIN32)
    # Windows 7 is the oldest system; the run-time libraries travel inside, so that a file needs no
    # other beside it, what checks the stack among them; addresses are random and data is not run. No
    # file says when it was linked. One that gets its symbols beside it is stripped afterwards. Of the
    # run-time's threads only programs take what the compiler has: libraries that hosts load have
    # platform/windows/hosted instead.
    target_compile_definitions(zotavpci_settings INTERFACE _WIN32_WINNT=0x0601)
    target_link_options(zotavpci_settings INTERFACE
        -static -fstack-protector-strong LINKER:--dynamicbase LINKER:--nxcompat LINKER:--gc-sections
        LINKER:--no-insert-timestamp
        $<$<EQUAL:${CMAKE_SIZEOF_VOID_P},8>:LINKER:--high-entropy-va>
        $<$<AND:$<CONFIG:Release>,$<NOT:$<BOOL:$<TARGET_PROPERTY:TAV_SYMBOL_FILE>>>>:-s>)
    enable_language(RC)
endif()

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

# Everything that is loaded or run together stands in one folder, as it does when installed.
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)

if(ZOTAVPCI_SANITIZE)
    target_compile_options(zotavpci_settings INTERFACE
        -fsanitize=${ZOTAVPCI_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_compile_definitions(zotavpci_settings INTERFACE _GLIBCXX_ASSERTIONS)
    if(ZOTAVPCI_SANITIZE MATCHES address) # which tests that count memory must know
        target_compile_definitions(zotavpci_settings INTERFACE TAV_SANITIZED)
    endif()
    target_link_options(zotavpci_settings INTERFACE -fsanitize=${ZOTAVPCI_SANITIZE})
endif()

# What a fuzzer learns from: which branches of ours an input took. Tests are compiled without.
if(ZOTAVPCI_FUZZERS)
    target_compile_options(zotavpci_settings INTERFACE
        $<$<NOT:$<BOOL:$<TARGET_PROPERTY:TAV_IS_TEST>>>:-fsanitize=fuzzer-no-link>)
endif()

# Counted at the lines as they are written, hence unoptimised, whatever a target asks for; by threads
# and processes at once. Counters stand in the code, so nothing that runs allocates or asks the
# system for them until a program ends or a library is unloaded.
if(ZOTAVPCI_COVERAGE)
    target_compile_options(zotavpci_settings INTERFACE
        --coverage -fprofile-abs-path -fprofile-update=atomic -O0)
    target_link_options(zotavpci_settings INTERFACE --coverage)
endif()
