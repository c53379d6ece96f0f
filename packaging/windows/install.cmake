# The archive for Windows: one folder for each target, and what serves both, as text of Windows.
if(CMAKE_SIZEOF_VOID_P EQUAL 8)
    set(target x64)
else()
    set(target x86)
endif()
install(TARGETS tavctl zopcibrd RUNTIME DESTINATION ${target})
install(TARGETS zotavpci RUNTIME DESTINATION ${target} ARCHIVE DESTINATION ${target})

# tav_install_text(FOLDER FILE...): with the line ends that every editor of Windows knows.
function(tav_install_text folder)
    foreach(file IN LISTS ARGN)
        cmake_path(GET file FILENAME name)
        cmake_path(GET name STEM LAST_ONLY stem)
        if(name MATCHES "\\.in$")
            set(name ${stem})
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
                 ${PROJECT_SOURCE_DIR}/zopcibrd/zopcibrd.h)
tav_install_text("descriptions/PCI Hardware Descriptions" ${descriptions})
tav_install_text(samples ${PROJECT_SOURCE_DIR}/samples/switchboxes.dump)
tav_install_text(docs ${PROJECT_SOURCE_DIR}/docs/descriptions.md)
