# The chosen libraries; only the platform links them.
find_package(CURL REQUIRED)
find_package(OpenSSL 3 REQUIRED)
find_package(ZLIB REQUIRED)
find_package(LibLZMA REQUIRED)
find_package(nlohmann_json REQUIRED)
find_package(spdlog REQUIRED)
find_package(Threads REQUIRED)
