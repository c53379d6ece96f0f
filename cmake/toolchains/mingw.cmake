# What the two Windows targets share; MINGW_TRIPLET names the compilers.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_C_COMPILER ${MINGW_TRIPLET}-gcc-posix)
set(CMAKE_CXX_COMPILER ${MINGW_TRIPLET}-g++-posix)
set(CMAKE_RC_COMPILER ${MINGW_TRIPLET}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${MINGW_TRIPLET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# Programs built here, the tests' lists of their cases among them, run under Wine.
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../../scripts/wine-run.sh)
