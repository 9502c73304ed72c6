# A CMake toolchain for a phone: cmake -S . -B build-ios -G Xcode
#   -DCMAKE_TOOLCHAIN_FILE=cmake/ios.toolchain.cmake
# on a Mac with Xcode's iOS SDK. It builds Kavelin.dylib for arm64 and armv7
# (iOS 8 and later) and nothing of the simulated device.
set(CMAKE_SYSTEM_NAME iOS)
set(CMAKE_OSX_SYSROOT iphoneos)
set(CMAKE_OSX_ARCHITECTURES "arm64;armv7" CACHE STRING "")
set(CMAKE_OSX_DEPLOYMENT_TARGET "8.0" CACHE STRING "")
set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
set(KAVELIN_DEVICE ON)
