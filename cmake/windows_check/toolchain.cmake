# Debian's compiler for Windows x86-64, with headers of Qt and Vulkan that are the same on all systems.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

# Programs are those of this system; libraries and headers never are.
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)

# find_package() meets the stand-ins that lie here instead of what is installed for this system.
set(CMAKE_FIND_PACKAGE_PREFER_CONFIG ON)
foreach(package IN ITEMS GTest Qt6 Vulkan)
    set(${package}_DIR "${CMAKE_CURRENT_LIST_DIR}")
endforeach()
set(STB_INCLUDE_DIR /usr/include/stb CACHE PATH "Headers that know no system")

# What is made runs without the compiler's own libraries.
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
set(CMAKE_SHARED_LINKER_FLAGS_INIT -static)
