# 64-bit Windows from Debian's mingw-w64, with the sysroot that scripts/build-sysroot.sh makes; programs run under wine.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR AMD64)
set(ORV_MINGW x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${ORV_MINGW}-gcc-posix)
set(CMAKE_CXX_COMPILER ${ORV_MINGW}-g++-posix)
set(CMAKE_RC_COMPILER ${ORV_MINGW}-windres)

get_filename_component(ORV_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../../build/sysroot ABSOLUTE)
set(CMAKE_FIND_ROOT_PATH ${ORV_SYSROOT} /usr/${ORV_MINGW})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Windows 10, and nothing beside the system's own libraries: the compiler's are linked in.
set(CMAKE_C_FLAGS_INIT "-D_WIN32_WINNT=0x0A00 -DUNICODE -D_UNICODE")
set(CMAKE_CXX_FLAGS_INIT "-D_WIN32_WINNT=0x0A00 -DUNICODE -D_UNICODE")
foreach(kind EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT -static)
endforeach()
