# Headers, libraries, a CMake package and a pkg-config file.
