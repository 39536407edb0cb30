# Builds for Windows on another system, with mingw-w64 and its POSIX threads:
#
#   cmake -S . -B build/windows -DCMAKE_TOOLCHAIN_FILE=cmake/mingw.cmake -DQUELMAR_TESTS=OFF
#
# The programs stand alone: no library of the compiler has to lie beside them.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(QUELMAR_MINGW x86_64-w64-mingw32)
# Debian installs both kinds of threads and says in the name which it is; others have one.
find_program(QUELMAR_MINGW_CXX NAMES ${QUELMAR_MINGW}-g++-posix ${QUELMAR_MINGW}-g++ REQUIRED)
set(CMAKE_CXX_COMPILER ${QUELMAR_MINGW_CXX})
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
set(CMAKE_FIND_ROOT_PATH /usr/${QUELMAR_MINGW})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
