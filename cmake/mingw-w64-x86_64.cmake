# Cross-compiling for Windows x64 with mingw-w64 (posix thread model).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
set(VLAPI_WINDMC x86_64-w64-mingw32-windmc)
set(VLAPI_OBJDUMP x86_64-w64-mingw32-objdump)
set(VLAPI_WIDL x86_64-w64-mingw32-widl)
# The system interface definitions and the standard OLE automation type
# library that the type library imports (Wine's development files).
set(VLAPI_WIDL_INCLUDE /usr/include/wine/wine/windows)
set(VLAPI_WIDL_LIBRARY /usr/lib/x86_64-linux-gnu/wine/x86_64-windows)

set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
