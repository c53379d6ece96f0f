# What others' builds find the product by: a package of CMake's and a file of pkg-config's, of what is
# installed and of the build folder itself. Both find everything from where they stand, so that the
# folder they are in can be moved.
include(CMakePackageConfigHelpers)
set(templates ${CMAKE_CURRENT_LIST_DIR})

# tav_package_config(FOLDER PREFIX folder DESTINATION place HEADERS place PLUGIN place): both files of
# CMake's package, written into FOLDER, that find things in these places below the prefix.
function(tav_package_config folder)
    cmake_parse_arguments(ARG "" "PREFIX;DESTINATION;HEADERS;PLUGIN" "" ${ARGN})
    set(header_folder ${ARG_HEADERS})
    set(plugin_folder ${ARG_PLUGIN})
    configure_package_config_file(${templates}/zotavpciConfig.cmake.in
        ${folder}/zotavpciConfig.cmake
        INSTALL_PREFIX ${ARG_PREFIX} INSTALL_DESTINATION ${ARG_DESTINATION}
        PATH_VARS header_folder plugin_folder
        NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
    write_basic_package_version_file(${folder}/zotavpciConfigVersion.cmake
        VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
endfunction()

# tav_pkg_config(FILE PREFIX HEADERS PLUGIN): the file, with these values.
function(tav_pkg_config file prefix header_folder plugin_folder)
    configure_file(${templates}/zotavpci.pc.in ${file} @ONLY)
endfunction()

# Installed. Folders that were named from the root stay where they are.
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/zotavpci)
set(plugin_folder ${CMAKE_INSTALL_LIBDIR}/zotavpci)
set(written ${PROJECT_BINARY_DIR}/packaging/consumers)
tav_package_config(${written} PREFIX ${CMAKE_INSTALL_PREFIX} DESTINATION ${package_folder}
                   HEADERS ${CMAKE_INSTALL_INCLUDEDIR} PLUGIN ${plugin_folder})
set(prefix ${CMAKE_INSTALL_PREFIX})
if(NOT IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
    file(RELATIVE_PATH way_up /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
    string(REGEX REPLACE "/$" "" prefix "\${pcfiledir}/${way_up}")
endif()
foreach(folder IN ITEMS CMAKE_INSTALL_INCLUDEDIR plugin_folder)
    set(${folder}_below ${${folder}})
    if(NOT IS_ABSOLUTE "${${folder}}")
        set(${folder}_below "\${prefix}/${${folder}}")
    endif()
endforeach()
tav_pkg_config(${written}/zotavpci.pc ${prefix} ${CMAKE_INSTALL_INCLUDEDIR_below}
               ${plugin_folder_below})
install(FILES ${written}/zotavpciConfig.cmake ${written}/zotavpciConfigVersion.cmake
        DESTINATION ${package_folder})
install(FILES ${written}/zotavpci.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# The build folder: -Dzotavpci_DIR=build/release, or PKG_CONFIG_PATH=build/release. The headers stand
# there alone, as they do when they are installed.
foreach(header IN LISTS TAV_PUBLIC_HEADERS)
    cmake_path(GET header FILENAME name)
    configure_file(${header} ${PROJECT_BINARY_DIR}/include/${name} COPYONLY)
endforeach()
tav_package_config(${PROJECT_BINARY_DIR} PREFIX ${PROJECT_BINARY_DIR} DESTINATION .
                   HEADERS include PLUGIN bin)
tav_pkg_config(${PROJECT_BINARY_DIR}/zotavpci.pc "\${pcfiledir}" "\${prefix}/include" "\${prefix}/bin")
