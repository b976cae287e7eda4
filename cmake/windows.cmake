# Toolchain: 64-bit Windows, by the cross compiler of Debian (g++-mingw-w64-x86-64-posix). What was
# built runs here under Wine (wine64), in a Windows of its own in the build folder.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)

# The platform's long double is the 64-bit one.
set(CMAKE_CXX_FLAGS_INIT -mlong-double-64)
# The compiler's own libraries become part of each program and DLL.
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
set(CMAKE_SHARED_LINKER_FLAGS_INIT -static)

find_program(SARNUM_WINE NAMES wine64 PATHS /usr/lib/wine DOC "Wine's loader of 64-bit programs")
if(SARNUM_WINE)
  set(CMAKE_CROSSCOMPILING_EMULATOR
    env "WINEPREFIX=${CMAKE_BINARY_DIR}/wine" WINEDEBUG=-all WINEDLLOVERRIDES=mscoree,mshtml=
    ${SARNUM_WINE})
endif()
