# Cross builds for 64-bit Arm with Debian's g++, or with clang by -DCMAKE_CXX_COMPILER=clang++. The
# libraries come from Debian's packages for that architecture, and programs run under QEMU.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
if(NOT CMAKE_CXX_COMPILER)
  set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
endif()
set(CMAKE_CXX_COMPILER_TARGET aarch64-linux-gnu)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64)
set(PKG_CONFIG_EXECUTABLE aarch64-linux-gnu-pkg-config)
