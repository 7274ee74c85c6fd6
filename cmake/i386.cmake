# Toolchain for the 32-bit (i386) configuration on an x86_64 Debian host
# with gcc-multilib, g++-multilib and lib32z1-dev installed.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_C_FLAGS_INIT "-m32")
set(CMAKE_CXX_FLAGS_INIT "-m32")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-m32")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-m32")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-m32")
set(ZLIB_LIBRARY /usr/lib32/libz.so CACHE FILEPATH "32-bit zlib")
set(ZLIB_INCLUDE_DIR /usr/include CACHE PATH "zlib headers")
