# What find_package(zotavpci) gives to whoever writes a host, for the target that is built for:
#
#   zotavpci::host       the C interface, to compile with: #include <tavPlugin.h>
#   zotavpci::zotavpci   the plug-in with its import library, to link with; the interface too
#   zotavpci_PLUGIN      the plug-in's file, for hosts that load it as they run
#   zotavpci_PLUGIN_DIR  its folder, where the bridge library stands too
cmake_path(GET CMAKE_CURRENT_LIST_DIR PARENT_PATH zotavpci_PLUGIN_DIR)
set(zotavpci_headers ${zotavpci_PLUGIN_DIR}/include)
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    string(APPEND zotavpci_PLUGIN_DIR /x86)
else()
    string(APPEND zotavpci_PLUGIN_DIR /x64)
endif()
set(zotavpci_PLUGIN ${zotavpci_PLUGIN_DIR}/zotavpci.dll)
if(NOT EXISTS "${zotavpci_PLUGIN}")
    set(zotavpci_FOUND FALSE)
    set(zotavpci_NOT_FOUND_MESSAGE "the plug-in is missing: ${zotavpci_PLUGIN}")
    return()
endif()

if(NOT TARGET zotavpci::host)
    add_library(zotavpci::host INTERFACE IMPORTED)
    set_target_properties(zotavpci::host PROPERTIES
        INTERFACE_INCLUDE_DIRECTORIES "${zotavpci_headers}")
    add_library(zotavpci::zotavpci SHARED IMPORTED)
    set_target_properties(zotavpci::zotavpci PROPERTIES
        IMPORTED_LOCATION "${zotavpci_PLUGIN}"
        IMPORTED_IMPLIB "${zotavpci_PLUGIN_DIR}/zotavpci.lib"
        INTERFACE_LINK_LIBRARIES zotavpci::host)
endif()
unset(zotavpci_headers)
