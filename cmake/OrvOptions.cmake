# Build-wide choices: the language, warnings, sanitizers, and what is built beside the libraries.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
if(WIN32)
  set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)  # a program finds its DLLs beside it
endif()

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Debug, Release or RelWithDebInfo" FORCE)
endif()

option(ORV_TESTS "Build the tests" ON)
option(ORV_BENCH "Build the benchmarks" OFF)
option(ORV_FUZZ "Build the fuzz targets" OFF)
set(ORV_SANITIZER "" CACHE STRING "address, thread, or empty")
set(ORV_UPDATE_CLOUD_HOST "update.orv.example" CACHE STRING "Host of the update cloud when no upgrade_domain.json names another")

add_library(OrvBuildFlags INTERFACE)
if(MSVC)
  # 4251 and 4275 speak of classes of the standard library in exported ones: host and DLL are built by one compiler.
  target_compile_options(OrvBuildFlags INTERFACE /W4 /WX /utf-8 /permissive- /bigobj /wd4251 /wd4275)
  target_compile_definitions(OrvBuildFlags INTERFACE _CRT_SECURE_NO_WARNINGS)
else()
  target_compile_options(OrvBuildFlags INTERFACE
    $<$<BOOL:${MINGW}>:-Wa,-mbig-obj>
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Werror)
endif()

if(ORV_SANITIZER STREQUAL "address")
  set(ORV_SANITIZER_FLAGS -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
elseif(ORV_SANITIZER STREQUAL "thread")
  set(ORV_SANITIZER_FLAGS -fsanitize=thread -fno-omit-frame-pointer)
elseif(ORV_SANITIZER)
  message(FATAL_ERROR "ORV_SANITIZER is 'address', 'thread' or empty, not '${ORV_SANITIZER}'")
endif()
add_compile_options(${ORV_SANITIZER_FLAGS})
add_link_options(${ORV_SANITIZER_FLAGS})

# Fuzzing: every object counts the edges that an input reaches; only the fuzz targets bring the engine that mutates.
if(ORV_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "ORV_FUZZ needs clang (cmake --preset fuzz), not ${CMAKE_CXX_COMPILER_ID}")
  endif()
  if(ORV_SANITIZER)
    message(FATAL_ERROR "ORV_FUZZ brings its own sanitizers; leave ORV_SANITIZER empty")
  endif()
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
