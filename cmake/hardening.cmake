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
    # Windows' own convention has larger frames probed, and the marks that every file has stand in
    # compilerSettings.cmake. On x86 no handler of exceptions is registered on the stack, so the loader
    # may refuse to call any. On x64 handlers stand in tables, and the mark would say nothing. GCC
    # has no checks of indirect calls, and its linker does not announce a load configuration, which is
    # where these would be listed.
    if(WIN32)
        get_target_property(type ${target} TYPE)
        if(type STREQUAL "EXECUTABLE")
            target_link_options(${target} PRIVATE LINKER:--tsaware)
        endif()
        if(CMAKE_SIZEOF_VOID_P EQUAL 4 AND NOT type STREQUAL "OBJECT_LIBRARY")
            target_link_options(${target} PRIVATE LINKER:--no-seh)
        endif()
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
