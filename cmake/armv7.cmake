# The device: ARMv7-A with NEON, hard-float calls. Expat, fast_float and GoogleTest come from the sysroot that
# scripts/armhf-sysroot fills; tests run under qemu-arm.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
set(CMAKE_C_FLAGS_INIT "-march=armv7-a -mfpu=neon -mfloat-abi=hard")
set(CMAKE_CXX_FLAGS_INIT "${CMAKE_C_FLAGS_INIT} -Wno-psabi") # no note about calls of compilers before GCC 7.1

set(VEXO_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../build/armhf-sysroot)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)
set(CMAKE_FIND_ROOT_PATH ${VEXO_SYSROOT} /usr/arm-linux-gnueabihf)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -L /usr/arm-linux-gnueabihf
    -E LD_LIBRARY_PATH=${VEXO_SYSROOT}/lib/arm-linux-gnueabihf)
set(CMAKE_EXE_LINKER_FLAGS_INIT "-Wl,-rpath-link,${VEXO_SYSROOT}/lib/arm-linux-gnueabihf") # what libvexo.so needs
