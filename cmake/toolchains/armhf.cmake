# Cross-compiles for Debian's armhf: needs crossbuild-essential-armhf and the libraries of that
# architecture. Qt's tools are those of the build machine. Programs run in qemu-user.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(ulo_triplet arm-linux-gnueabihf)
set(CMAKE_LIBRARY_ARCHITECTURE ${ulo_triplet})
set(CMAKE_C_COMPILER ${ulo_triplet}-gcc)
set(CMAKE_CXX_COMPILER ${ulo_triplet}-g++)
# Nothing that an older GCC built is linked, so its notes on arguments that GCC 7.1 began to pass
# differently are noise.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)
set(CMAKE_STRIP ${ulo_triplet}-strip)
set(CMAKE_INSTALL_LIBDIR lib/${ulo_triplet} CACHE PATH "Libraries")
set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/${ulo_triplet}/pkgconfig:/usr/share/pkgconfig)

file(GLOB ulo_host_qt /usr/lib/*/cmake/Qt6HostInfo/Qt6HostInfoConfig.cmake)
list(FILTER ulo_host_qt EXCLUDE REGEX ${ulo_triplet})
cmake_path(GET ulo_host_qt PARENT_PATH ulo_host_qt)
cmake_path(GET ulo_host_qt PARENT_PATH ulo_host_qt)
set(QT_HOST_PATH /usr CACHE PATH "Qt of the build machine")
set(QT_HOST_PATH_CMAKE_DIR ${ulo_host_qt} CACHE PATH "CMake packages of Qt of the build machine")

find_program(ULO_QEMU_ARM NAMES qemu-arm-static qemu-arm)
if(ULO_QEMU_ARM)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${ULO_QEMU_ARM})
endif()
