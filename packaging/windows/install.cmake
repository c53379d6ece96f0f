# The archive for Windows: one folder for each target, and what serves both, as text of Windows.
if(CMAKE_SIZEOF_VOID_P EQUAL 8)
    set(target x64)
else()
    set(target x86)
endif()
install(TARGETS tavctl zopcibrd zotavpci RUNTIME DESTINATION ${target})
get_target_property(import_library zotavpci TAV_IMPORT_LIBRARY)
install(FILES ${import_library} DESTINATION ${target})
# An archive of their own.
foreach(file IN ITEMS tavctl zopcibrd zotavpci)
    install(FILES $<TARGET_FILE:${file}>.debug DESTINATION ${target}
            COMPONENT symbols EXCLUDE_FROM_ALL)
endforeach()

# tav_install_text(FOLDER FILE...): with the line ends that every editor of Windows knows.
function(tav_install_text folder)
    foreach(file IN LISTS ARGN)
        cmake_path(GET file FILENAME name)
        cmake_path(GET name STEM LAST_ONLY stem)
        if(name MATCHES "\\.in$")
            set(name ${stem})
        endif()
        if(name STREQUAL "exports.def")
            set(name zotavpci.def)
        endif()
        set(converted ${CMAKE_CURRENT_BINARY_DIR}/windows/${folder}/${name})
        configure_file(${file} ${converted} @ONLY NEWLINE_STYLE CRLF)
        install(FILES ${converted} DESTINATION ${folder})
    endforeach()
endfunction()

file(GLOB descriptions CONFIGURE_DEPENDS
     "${PROJECT_SOURCE_DIR}/descriptions/PCI Hardware Descriptions/*.ini")
tav_install_text(. ${CMAKE_CURRENT_LIST_DIR}/README.txt.in)
tav_install_text(include ${PROJECT_SOURCE_DIR}/include/tavPlugin.h
                 ${PROJECT_SOURCE_DIR}/include/tavHost.h ${PROJECT_SOURCE_DIR}/include/tavLibrary.h
                 ${PROJECT_SOURCE_DIR}/zopcibrd/zopcibrd.h ${PROJECT_SOURCE_DIR}/source/exports.def)
# What the three files contain of others, and the licences that ask to be passed on along with them.
set(notices ${CMAKE_CURRENT_BINARY_DIR}/windows/${target}/THIRD-PARTY.txt)
install(CODE "execute_process(COMMAND_ERROR_IS_FATAL ANY
    COMMAND python3 \"${PROJECT_SOURCE_DIR}/scripts/make-sbom.py\" \"${PROJECT_BINARY_DIR}\"
            --third-party -o \"${notices}\")")
install(FILES ${notices} DESTINATION ${target})
file(MAKE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/windows/${target})

include(CMakePackageConfigHelpers)
set(version_file ${CMAKE_CURRENT_BINARY_DIR}/windows-package/zotavpciConfigVersion.cmake)
write_basic_package_version_file(${version_file} # one for both targets
    VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion ARCH_INDEPENDENT)
set(package ${CMAKE_CURRENT_LIST_DIR}/cmake/zotavpciConfig.cmake)
tav_install_text(cmake ${package} ${version_file})
tav_install_text("descriptions/PCI Hardware Descriptions" ${descriptions})
tav_install_text(samples ${PROJECT_SOURCE_DIR}/samples/switchboxes.dump)
tav_install_text(docs ${PROJECT_SOURCE_DIR}/docs/descriptions.md ${PROJECT_SOURCE_DIR}/docs/rack.md
                 ${PROJECT_SOURCE_DIR}/docs/hosts.md ${PROJECT_SOURCE_DIR}/docs/fleet.md)
file(GLOB schemas CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/docs/schema/*.json")
tav_install_text(docs/schema ${schemas})
foreach(language IN ITEMS c cpp csharp)
    file(GLOB examples CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/examples/${language}/*")
    tav_install_text(examples/${language} ${examples})
endforeach()
