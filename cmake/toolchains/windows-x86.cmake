# 32-bit Windows, with Debian's mingw-w64.
set(MINGW_TRIPLET i686-w64-mingw32)
set(CMAKE_SYSTEM_PROCESSOR X86)
include(${CMAKE_CURRENT_LIST_DIR}/mingw.cmake)
