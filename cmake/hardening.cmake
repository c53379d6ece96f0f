# tav_harden(TARGET): what makes a fault in a piece of the product end the process instead of being of
# use to somebody, and what keeps the product off its host's memory. Not for tests, which are theirs,
# nor where faults are looked for: checks of another kind take the room, and unoptimised frames are
# large.

# No frame may pass over the page that guards a thread's stack, and there is room for a whole
# initialisation in 32 kB. Larger things live on the heap.
set(TAV_LARGEST_FRAME 4000)

function(tav_harden target)
    if(ZOTAVPCI_SANITIZE OR ZOTAVPCI_COVERAGE)
        return()
    endif()
    target_compile_options(${target} PRIVATE
        -fstack-protector-strong
        $<$<CONFIG:Release>:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2 -Wframe-larger-than=${TAV_LARGEST_FRAME}>)
    # Windows' own convention has larger frames probed, and its marks stand in compilerSettings.cmake.
    if(WIN32)
        return()
    endif()
    target_compile_options(${target} PRIVATE -fstack-clash-protection)
    if(CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64")
        target_compile_options(${target} PRIVATE -fcf-protection=full)
    endif()
    get_target_property(type ${target} TYPE)
    if(type STREQUAL "OBJECT_LIBRARY")
        return()
    endif()
    target_link_options(${target} PRIVATE LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
    # The C library's start files carry no marks, which would take them from everything linked with
    # them. They keep the shadow stack's rules. Where an indirect branch may land they do not say: a
    # program's is left unmarked for its first instruction, and the libraries do without the one
    # function that theirs would hold, which has nothing to do.
    if(CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64")
        target_link_options(${target} PRIVATE LINKER:-z,shstk)
        if(type STREQUAL "SHARED_LIBRARY")
            target_link_options(${target} PRIVATE
                LINKER:-z,ibt LINKER:-init=tav_no_init LINKER:-fini=tav_no_fini)
        endif()
    endif()
    if(type STREQUAL "EXECUTABLE")
        target_link_options(${target} PRIVATE -pie)
    endif()
endfunction()
