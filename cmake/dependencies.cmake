# The libraries that the product and its tests are built with, as the same targets on every system.
if(NOT CMAKE_CROSSCOMPILING)
    find_package(Boost 1.74 REQUIRED)
    find_package(CLI11 2.1 REQUIRED)
    find_package(nlohmann_json 3.11 REQUIRED)
    find_package(fmt 9.1 REQUIRED)
    # Without the library that fmt::fmt links: tavctl compiles its own.
    add_library(fmt_headers INTERFACE)
    target_include_directories(fmt_headers SYSTEM INTERFACE
        $<TARGET_PROPERTY:fmt::fmt,INTERFACE_INCLUDE_DIRECTORIES>)
    if(ZOTAVPCI_TESTS)
        find_package(GTest 1.12 REQUIRED)
    endif()
    return()
endif()

# A cross build takes the build machine's header-only libraries, each through a link of its own: a
# cross compiler that is shown the whole folder would find the wrong system's headers there.
set(headers ${PROJECT_BINARY_DIR}/headers)
file(MAKE_DIRECTORY ${headers})
foreach(header IN ITEMS boost/version.hpp CLI/CLI.hpp nlohmann/json.hpp fmt/core.h)
    cmake_path(GET header PARENT_PATH library)
    find_path(folder_of_${library} ${header} PATHS /usr/include NO_CMAKE_FIND_ROOT_PATH REQUIRED)
    file(CREATE_LINK ${folder_of_${library}}/${library} ${headers}/${library} SYMBOLIC)
endforeach()
foreach(target IN ITEMS Boost::headers CLI11::CLI11 nlohmann_json::nlohmann_json)
    add_library(${target} INTERFACE IMPORTED)
    target_include_directories(${target} SYSTEM INTERFACE ${headers})
endforeach()
add_library(fmt_headers INTERFACE)
target_include_directories(fmt_headers SYSTEM INTERFACE ${headers})

# GoogleTest from Debian's sources; its targets get the names that a found package gives them.
if(ZOTAVPCI_TESTS)
    set(BUILD_GMOCK ON)
    set(INSTALL_GTEST OFF)
    find_path(googletest_folder googlemock/CMakeLists.txt PATHS /usr/src/googletest
              NO_CMAKE_FIND_ROOT_PATH REQUIRED)
    add_subdirectory(${googletest_folder} ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
endif()
