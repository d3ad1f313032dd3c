# The chosen libraries; only the platform links them.
find_package(CURL REQUIRED)
# Windows judges signatures itself; only its tests make some.
if(NOT WIN32 OR ORV_TESTS)
  find_package(OpenSSL 3 REQUIRED COMPONENTS Crypto)
endif()
set(ZLIB_USE_STATIC_LIBS ${WIN32})  # a host carries one DLL
find_package(ZLIB REQUIRED)

# Inflates whole items twice as fast as zlib; Debian 12's package has no CMake files.
find_path(ORV_LIBDEFLATE_INCLUDE libdeflate.h REQUIRED)
find_library(ORV_LIBDEFLATE_LIBRARY NAMES deflate libdeflate deflatestatic REQUIRED)
add_library(OrvLibdeflate INTERFACE)
target_include_directories(OrvLibdeflate SYSTEM INTERFACE ${ORV_LIBDEFLATE_INCLUDE})
target_link_libraries(OrvLibdeflate INTERFACE ${ORV_LIBDEFLATE_LIBRARY})

# A liblzma newer than Debian 12's, where scripts/build-liblzma.sh has made one; else the system's.
set(ORV_LIBLZMA_ROOT ${PROJECT_SOURCE_DIR}/build/deps/liblzma CACHE PATH "Where the newer liblzma is looked for")
add_library(OrvLiblzma INTERFACE)
if(NOT WIN32 AND EXISTS ${ORV_LIBLZMA_ROOT}/lib/liblzma.a)
  target_include_directories(OrvLiblzma SYSTEM INTERFACE ${ORV_LIBLZMA_ROOT}/include)
  target_compile_definitions(OrvLiblzma INTERFACE LZMA_API_STATIC)
  target_link_libraries(OrvLiblzma INTERFACE ${ORV_LIBLZMA_ROOT}/lib/liblzma.a)
else()
  find_package(LibLZMA REQUIRED)
  target_link_libraries(OrvLiblzma INTERFACE LibLZMA::LibLZMA)
endif()
find_package(nlohmann_json REQUIRED)
find_package(spdlog REQUIRED)
find_package(Threads REQUIRED)

# What differs between the systems of what the platform links.
if(WIN32)
  set(ORV_SYSTEM_LIBRARIES wintrust crypt32 ws2_32 shell32 bcrypt)
else()
  set(ORV_SYSTEM_LIBRARIES OpenSSL::Crypto)
endif()
