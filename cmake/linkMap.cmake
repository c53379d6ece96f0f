# tav_link_map(TARGET): has the linker write beside the build what the file is made of, in
# maps/FILE.map. The bill of materials is made from it: which members of which archives are inside.
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/maps)
function(tav_link_map target)
    get_target_property(type ${target} TYPE)
    if(type STREQUAL "EXECUTABLE")
        set(file ${target}${CMAKE_EXECUTABLE_SUFFIX})
    else()
        set(file ${target}${CMAKE_SHARED_LIBRARY_SUFFIX})
    endif()
    # Named from the build folder, where the linker runs: no command tells where that is.
    target_link_options(${target} PRIVATE LINKER:-Map=maps/${file}.map)
endfunction()
