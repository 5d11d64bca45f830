# Cross build for 64-bit ARM Linux with Debian's cross compilers; programs run under qemu-user.
# The platform libraries, test libraries and JVM come from Debian's arm64 packages unpacked by
# cmake/arm64-sysroot into KXMMI_ARM64_SYSROOT; the C/C++ runtime from the cross toolchain.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)

if(NOT KXMMI_ARM64_SYSROOT)
  get_filename_component(KXMMI_ARM64_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../build/arm64-sysroot ABSOLUTE)
endif()
set(KXMMI_ARM64_SYSROOT ${KXMMI_ARM64_SYSROOT} CACHE PATH "Unpacked arm64 packages (cmake/arm64-sysroot)")
# Try-compiles re-read this file; they must see the same sysroot.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES KXMMI_ARM64_SYSROOT)

set(CMAKE_FIND_ROOT_PATH ${KXMMI_ARM64_SYSROOT} /usr/aarch64-linux-gnu)
# Build-time generators (javac, the interface compiler) are host programs.
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L ${KXMMI_ARM64_SYSROOT})

# Devices use 16 KB pages: every loadable segment of a shared library must be aligned to them.
# The common page size needs no flag: this linker already ends the RELRO range on a max-page
# boundary (tests/scripts/test-arm64 checks both).
set(KXMMI_PAGE_FLAGS "-Wl,-z,max-page-size=16384")
# The linker finds what the sysroot's libraries need themselves (libbacktrace's 7z.so) here, not on
# the host's paths their run paths name.
set(KXMMI_LINK_PATHS "")
foreach(dir usr/lib/aarch64-linux-gnu/android usr/lib/p7zip lib/aarch64-linux-gnu)
  string(APPEND KXMMI_LINK_PATHS " -Wl,-rpath-link,${KXMMI_ARM64_SYSROOT}/${dir}")
endforeach()
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${KXMMI_PAGE_FLAGS}${KXMMI_LINK_PATHS}")
set(CMAKE_EXE_LINKER_FLAGS_INIT "${KXMMI_PAGE_FLAGS}${KXMMI_LINK_PATHS}")

# JNI: the host JDK's headers (jni.h is architecture-neutral and jni_md.h is the same file in
# Debian's arm64 JDK) and the arm64 JRE's libjvm.
set(KXMMI_HOST_JDK /usr/lib/jvm/java-17-openjdk-amd64)
set(JAVA_INCLUDE_PATH ${KXMMI_HOST_JDK}/include CACHE PATH "")
set(JAVA_INCLUDE_PATH2 ${KXMMI_HOST_JDK}/include/linux CACHE PATH "")
set(JAVA_AWT_INCLUDE_PATH ${KXMMI_HOST_JDK}/include CACHE PATH "")
set(JAVA_JVM_LIBRARY ${KXMMI_ARM64_SYSROOT}/usr/lib/jvm/java-17-openjdk-arm64/lib/server/libjvm.so
  CACHE FILEPATH "")
