# The host side of the build: GCC's Objective-C runtime, GNUstep Base and the
# blocks runtime, found where Debian installs them.

# clang needs GCC's runtime headers, which live among GCC's private headers;
# expose only their objc/ folder so nothing else of GCC's leaks in.
file(GLOB _objc_header_dirs /usr/lib/gcc/${CMAKE_LIBRARY_ARCHITECTURE}/*/include/objc
                            /usr/lib/gcc/x86_64-linux-gnu/*/include/objc)
list(SORT _objc_header_dirs COMPARE NATURAL ORDER DESCENDING)
list(GET _objc_header_dirs 0 KAVELIN_OBJC_HEADERS)
if(NOT KAVELIN_OBJC_HEADERS OR NOT EXISTS "${KAVELIN_OBJC_HEADERS}/runtime.h")
  message(FATAL_ERROR "GCC's Objective-C runtime headers are missing: run scripts/setup.sh")
endif()
set(KAVELIN_OBJC_INCLUDE "${CMAKE_BINARY_DIR}/objc-include")
file(MAKE_DIRECTORY "${KAVELIN_OBJC_INCLUDE}")
file(CREATE_LINK "${KAVELIN_OBJC_HEADERS}" "${KAVELIN_OBJC_INCLUDE}/objc" SYMBOLIC)

find_library(KAVELIN_OBJC_LIB NAMES objc libobjc.so.4 REQUIRED)
find_library(KAVELIN_GNUSTEP_BASE_LIB NAMES gnustep-base REQUIRED)
find_library(KAVELIN_BLOCKS_LIB NAMES BlocksRuntime REQUIRED)

# The Objective-C runtime and the blocks runtime: what the library itself needs.
add_library(kavelin_objc INTERFACE)
target_include_directories(kavelin_objc SYSTEM INTERFACE "${KAVELIN_OBJC_INCLUDE}")
target_link_libraries(kavelin_objc INTERFACE "${KAVELIN_OBJC_LIB}" "${KAVELIN_BLOCKS_LIB}")

# GNUstep Base, the real Foundation of a simulated host. Plain C++ references
# none of its symbols, so the linker must be told to keep it. GNUstep exports
# a _Block_copy of its own that does not know the blocks runtime's stack
# blocks: the blocks runtime must come first in the process's lookup order.
add_library(kavelin_foundation INTERFACE)
target_link_options(kavelin_foundation INTERFACE
  "-Wl,--push-state,--no-as-needed" "${KAVELIN_BLOCKS_LIB}" "-Wl,--pop-state")
target_link_libraries(kavelin_foundation INTERFACE kavelin_objc
  "-Wl,--push-state,--no-as-needed" "${KAVELIN_GNUSTEP_BASE_LIB}" "-Wl,--pop-state")

find_package(GTest REQUIRED)
if(KAVELIN_BENCH)
  find_package(benchmark REQUIRED)
endif()
