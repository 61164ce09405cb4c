# Cross-builds for 64-bit Windows with the distribution's MinGW and its threads.
include(${CMAKE_CURRENT_LIST_DIR}/mingw-x86_64.cmake)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
