# What Windows users get of a library or program has no symbols inside; these travel in files of
# their own, for whoever has to read a crash: names and lines of functions, no more.

# Sources are called /zotavpci/... in every file, wherever they and the build folder are, so that the
# same sources give the same bytes everywhere, and a debugger can be told once where they are. A
# compiler cache may name sources and headers from the build folder; that counts too. Of several names
# that fit the compiler takes the last. Left to itself it would call headers of libraries by the shorter
# one of two names.
if(WIN32)
    file(RELATIVE_PATH source_from_build ${PROJECT_BINARY_DIR} ${PROJECT_SOURCE_DIR})
    cmake_path(GET source_from_build PARENT_PATH source_from_build)
    set(product $<NOT:$<BOOL:$<TARGET_PROPERTY:TAV_IS_TEST>>>)
    target_compile_options(zotavpci_settings INTERFACE $<${product}:-fno-canonical-system-headers>)
    foreach(map IN ITEMS ${source_from_build}=/zotavpci headers=/zotavpci/build/headers
            ${PROJECT_SOURCE_DIR}=/zotavpci ${PROJECT_BINARY_DIR}=/zotavpci/build)
        target_compile_options(zotavpci_settings INTERFACE $<${product}:-ffile-prefix-map=${map}>)
    endforeach()
    target_compile_options(zotavpci_settings INTERFACE $<$<AND:$<CONFIG:Release>,${product}>:-g1>)
endif()

# tav_symbol_file(TARGET): moves the symbols of a file for Windows into one beside it, FILE.debug,
# which debuggers find by the name and the checksum that the file keeps of it.
function(tav_symbol_file target)
    if(NOT WIN32 OR NOT CMAKE_BUILD_TYPE STREQUAL "Release")
        return()
    endif()
    set_target_properties(${target} PROPERTIES TAV_SYMBOL_FILE ON)
    get_target_property(type ${target} TYPE)
    set(file ${target}$<IF:$<STREQUAL:${type},EXECUTABLE>,.exe,.dll>)
    add_custom_command(TARGET ${target} POST_BUILD VERBATIM
        WORKING_DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}
        BYPRODUCTS ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${file}.debug
        COMMAND ${CMAKE_OBJCOPY} -p --only-keep-debug ${file} ${file}.debug
        COMMAND ${CMAKE_STRIP} -p ${file}
        COMMAND ${CMAKE_OBJCOPY} -p --add-gnu-debuglink=${file}.debug ${file})
endfunction()
