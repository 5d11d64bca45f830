# Interface code generated from the .hal packages by the interface compiler (hidl-gen): C++
# headers and sources in the build tree, never in git. Every package is also run through
# hidl-gen's checker as a test.
# The tree's root, also when a sub-project (the fuzz build) includes this file.
get_filename_component(KXMMI_SOURCE_ROOT ${CMAKE_CURRENT_LIST_DIR}/.. ABSOLUTE)
find_program(HIDL_GEN hidl-gen REQUIRED)

set(HIDL_GEN_ROOTS
  -r android.hidl:${KXMMI_SOURCE_ROOT}/platform/hidl-interfaces
  -r vendor.tavrin.hardware:${KXMMI_SOURCE_ROOT}/hal/interfaces)
set(HIDL_GEN_INCLUDE_DIR ${CMAKE_BINARY_DIR}/hidl-gen/include)
set(HIDL_GEN_SOURCE_DIR ${CMAKE_BINARY_DIR}/hidl-gen/src)
file(GLOB_RECURSE HIDL_GEN_HAL_FILES CONFIGURE_DEPENDS
  ${KXMMI_SOURCE_ROOT}/platform/hidl-interfaces/*.hal ${KXMMI_SOURCE_ROOT}/hal/interfaces/*.hal)

set(HIDL_GEN_PACKAGES)
set(HIDL_GEN_SOURCES)
set(HIDL_GEN_HEADERS)

# hidl_gen_package(<package>@<version> <root dir of the package's root>)
# Appends the package's generated sources to HIDL_GEN_SOURCES.
function(hidl_gen_package fqname root_dir)
  string(REGEX MATCH "^([a-z.]+)@([0-9]+)\\.([0-9]+)$" _ ${fqname})
  set(package ${CMAKE_MATCH_1})
  set(ver ${CMAKE_MATCH_2}.${CMAKE_MATCH_3})
  string(REPLACE "." "/" package_path ${package})
  # Files sit under <root>/<package minus the root's prefix>/<version>/.
  string(REGEX REPLACE "^(android\\.hidl|vendor\\.tavrin\\.hardware)\\." "" sub ${package})
  string(REPLACE "." "/" sub_path ${sub})
  set(hal_dir ${root_dir}/${sub_path}/${ver})
  set(out_dir ${package_path}/${ver})
  file(GLOB hal_files ${hal_dir}/*.hal)
  set(headers)
  set(sources)
  foreach(hal ${hal_files})
    get_filename_component(name ${hal} NAME_WE)
    if(name STREQUAL "types")
      list(APPEND headers ${HIDL_GEN_INCLUDE_DIR}/${out_dir}/types.h ${HIDL_GEN_INCLUDE_DIR}/${out_dir}/hwtypes.h)
      list(APPEND sources ${HIDL_GEN_SOURCE_DIR}/${out_dir}/types.cpp)
    else()
      string(REGEX REPLACE "^I" "" base ${name})
      foreach(h I${base} IHw${base} BnHw${base} BpHw${base} Bs${base})
        list(APPEND headers ${HIDL_GEN_INCLUDE_DIR}/${out_dir}/${h}.h)
      endforeach()
      list(APPEND sources ${HIDL_GEN_SOURCE_DIR}/${out_dir}/${base}All.cpp)
    endif()
  endforeach()
  add_custom_command(
    OUTPUT ${headers} ${sources}
    COMMAND ${HIDL_GEN} ${HIDL_GEN_ROOTS} -o ${HIDL_GEN_INCLUDE_DIR} -Lc++-headers ${fqname}
    COMMAND ${HIDL_GEN} ${HIDL_GEN_ROOTS} -o ${HIDL_GEN_SOURCE_DIR} -Lc++-sources ${fqname}
    DEPENDS ${HIDL_GEN_HAL_FILES}
    COMMENT "hidl-gen ${fqname}"
    VERBATIM)
  set(HIDL_GEN_PACKAGES ${HIDL_GEN_PACKAGES} ${fqname} PARENT_SCOPE)
  set(HIDL_GEN_SOURCES ${HIDL_GEN_SOURCES} ${sources} PARENT_SCOPE)
  set(HIDL_GEN_HEADERS ${HIDL_GEN_HEADERS} ${headers} PARENT_SCOPE)
endfunction()

foreach(pkg android.hidl.base@1.0 android.hidl.manager@1.0)
  hidl_gen_package(${pkg} ${KXMMI_SOURCE_ROOT}/platform/hidl-interfaces)
endforeach()
foreach(pkg kxfactoryinterface@1.0 kxfactoryinterface@1.1 kxdisplay@1.0 kxdisplay@1.1 tp@1.0
            sensors@1.0 sensors@1.1 power@1.0 light@2.0 otherdevices@1.0)
  hidl_gen_package(vendor.tavrin.hardware.${pkg} ${KXMMI_SOURCE_ROOT}/hal/interfaces)
endforeach()

# Headers first: every target that includes them depends on this one.
add_custom_target(hidl_gen_headers DEPENDS ${HIDL_GEN_HEADERS} ${HIDL_GEN_SOURCES})
add_library(hidl_gen_interface INTERFACE)
# Generated code is not held to this tree's warnings (clang flags its missing overrides).
target_include_directories(hidl_gen_interface SYSTEM INTERFACE ${HIDL_GEN_INCLUDE_DIR})
add_dependencies(hidl_gen_interface hidl_gen_headers)

add_test(NAME hidl_gen_check
  COMMAND ${HIDL_GEN} ${HIDL_GEN_ROOTS} -Lcheck ${HIDL_GEN_PACKAGES})

# hidl_gen_impl(<package>@<version> <name> <out var>): the interface compiler's default
# implementation of the version's interface (every operation answers nothing), for services
# that serve only some operations. Sources go to <out var>; headers are found as
# "<last package component>/<name>.h" under HIDL_GEN_IMPL_DIR.
set(HIDL_GEN_IMPL_DIR ${CMAKE_BINARY_DIR}/hidl-gen/impl)
function(hidl_gen_impl fqname name out_var)
  string(REGEX MATCH "\\.([a-z]+)@" _ ${fqname})
  set(dir ${HIDL_GEN_IMPL_DIR}/${CMAKE_MATCH_1})
  add_custom_command(
    OUTPUT ${dir}/${name}.h ${dir}/${name}.cpp
    COMMAND ${HIDL_GEN} ${HIDL_GEN_ROOTS} -o ${dir} -Lc++-impl ${fqname}
    DEPENDS ${HIDL_GEN_HAL_FILES}
    COMMENT "hidl-gen -Lc++-impl ${fqname}"
    VERBATIM)
  set(${out_var} ${${out_var}} ${dir}/${name}.cpp PARENT_SCOPE)
endfunction()
