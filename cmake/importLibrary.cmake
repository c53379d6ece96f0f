# tav_import_library(TARGET EXPORTS.def): TARGET.lib, with which hosts link, made from the list of
# exports and the library's name in it. The one that GNU's linker writes has code inside, without the
# marks that Microsoft's linker for x86 demands; this has names only, and both take it.
function(tav_import_library target exports)
    find_program(LLVM_DLLTOOL NAMES llvm-dlltool llvm-dlltool-14 REQUIRED)
    if(CMAKE_SIZEOF_VOID_P EQUAL 8)
        set(machine i386:x86-64)
    else()
        set(machine i386)
    endif()
    set(definitions ${CMAKE_CURRENT_SOURCE_DIR}/${exports})
    set(library ${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/${target}.lib)
    add_custom_command(OUTPUT ${library} DEPENDS ${definitions} VERBATIM
        COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}
        COMMAND ${LLVM_DLLTOOL} -m ${machine} -d ${definitions} -l ${library})
    add_custom_target(${target}_import_library DEPENDS ${library})
    add_dependencies(${target} ${target}_import_library)
    set_target_properties(${target} PROPERTIES TAV_IMPORT_LIBRARY ${library})
endfunction()
