# Host builds use Debian's builds of the platform's liblog and libutils; their headers sit under
# /usr/include/android so that sources include them by their device paths (<android/log.h>,
# <utils/StrongPointer.h>).
find_path(ANDROID_HOST_INCLUDE_DIR android/log.h PATHS /usr/include/android NO_DEFAULT_PATH)
find_library(ANDROID_LOG_LIBRARY log PATHS /usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/android NO_DEFAULT_PATH)
find_library(ANDROID_UTILS_LIBRARY utils PATHS /usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/android NO_DEFAULT_PATH)
# libcutils: the trace calls of generated interface code (comes with android-libutils-dev).
find_library(ANDROID_CUTILS_LIBRARY cutils PATHS /usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/android NO_DEFAULT_PATH)
if(NOT ANDROID_HOST_INCLUDE_DIR OR NOT ANDROID_LOG_LIBRARY OR NOT ANDROID_UTILS_LIBRARY
   OR NOT ANDROID_CUTILS_LIBRARY)
  message(FATAL_ERROR "android-liblog-dev and android-libutils-dev are needed (./mmi installs them)")
endif()
get_filename_component(ANDROID_HOST_LIB_DIR ${ANDROID_LOG_LIBRARY} DIRECTORY)

add_library(android_log SHARED IMPORTED GLOBAL)
set_target_properties(android_log PROPERTIES IMPORTED_LOCATION ${ANDROID_LOG_LIBRARY}
  INTERFACE_INCLUDE_DIRECTORIES ${ANDROID_HOST_INCLUDE_DIR})
add_library(android_utils SHARED IMPORTED GLOBAL)
set_target_properties(android_utils PROPERTIES IMPORTED_LOCATION ${ANDROID_UTILS_LIBRARY}
  INTERFACE_INCLUDE_DIRECTORIES ${ANDROID_HOST_INCLUDE_DIR})
add_library(android_cutils SHARED IMPORTED GLOBAL)
set_target_properties(android_cutils PROPERTIES IMPORTED_LOCATION ${ANDROID_CUTILS_LIBRARY}
  INTERFACE_INCLUDE_DIRECTORIES ${ANDROID_HOST_INCLUDE_DIR})
# The Debian libraries live outside the loader's default path.
set(CMAKE_BUILD_RPATH ${ANDROID_HOST_LIB_DIR})
list(APPEND CMAKE_BUILD_RPATH ${CMAKE_BINARY_DIR}/lib)

set(JAVA_HOME_HINT /usr/lib/jvm/java-17-openjdk-amd64)
if(NOT DEFINED ENV{JAVA_HOME} AND EXISTS ${JAVA_HOME_HINT})
  set(ENV{JAVA_HOME} ${JAVA_HOME_HINT})
endif()
# The library needs the JNI headers and the JVM, not AWT (which a headless JRE lacks).
find_package(JNI REQUIRED COMPONENTS JVM)
find_package(Java 17 REQUIRED COMPONENTS Development Runtime)
find_package(GTest REQUIRED)

set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)

# Interface code generated from the .hal packages.
include(${CMAKE_CURRENT_LIST_DIR}/HidlGen.cmake)

# kxmmi_stand_in(<target>...): the host stand-ins (transport, HidlUtil, simulated device) are
# compiled for a quick first build, which the first ./mmi run waits on, not for speed: without
# exceptions, as a device builds its platform code, and unoptimised in a release build (the
# sanitizer builds keep their own level, which their timing-sensitive tests were tuned on).
# Under the host's clang they also share one precompiled header of the transport headers they all
# parse: about 5 s less processor time in a first build. It is a target of its own, declared before
# them, which ./mmi builds beside the console's jar before the rest (every stand-in compile waits
# for it anyway). Their flags are alike, as sharing needs. They iterate hidl_vec, whose iterator
# base clang reports as deprecated once it comes from a precompiled header; host-only code, so not
# reported (the library, which a device compiles, is not among them and keeps the warning).
set(KXMMI_STAND_IN_PCH OFF)
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang" AND NOT CMAKE_CROSSCOMPILING)
  set(KXMMI_STAND_IN_PCH ON)
endif()
function(kxmmi_stand_in)
  foreach(target ${ARGN})
    target_compile_options(${target} PRIVATE -fno-exceptions $<$<CONFIG:Release>:-O0>)
    if(KXMMI_STAND_IN_PCH)
      target_compile_options(${target} PRIVATE -Wno-deprecated-declarations)
      if(NOT target STREQUAL "stand_in_headers")
        target_precompile_headers(${target} REUSE_FROM stand_in_headers)
      endif()
    endif()
  endforeach()
endfunction()

add_library(stand_in_headers OBJECT EXCLUDE_FROM_ALL
  ${KXMMI_SOURCE_ROOT}/platform/src/stand_in_headers.cc)
target_include_directories(stand_in_headers PRIVATE ${KXMMI_SOURCE_ROOT}/platform/include)
target_link_libraries(stand_in_headers PRIVATE hidl_gen_interface android_utils android_log android_cutils)
kxmmi_stand_in(stand_in_headers)
if(KXMMI_STAND_IN_PCH)
  target_precompile_headers(stand_in_headers PRIVATE <hidl/HidlSupport.h>
    <hidl/HidlTransportSupport.h> <hidl/Status.h> <hidl/Static.h> <android/hidl/base/1.0/IBase.h>
    <functional> <map> <mutex> <sstream>)
endif()
