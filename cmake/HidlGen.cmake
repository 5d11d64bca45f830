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
set(HIDL_GEN_GENERATED)
set(HIDL_GEN_HEADERS)
# The generated sources are compiled in a few bundles, each including several of them, rather
# than one by one: they all parse the same large transport headers, and a first build of
# ./mmi run waits on them. Two interfaces of one package define the same static functions, so
# they never share a bundle; hence as many bundles as the largest package has interfaces, and
# at least two, for two cores.
set(HIDL_GEN_BUNDLE_COUNT 2)
set(HIDL_GEN_PACKAGE_INDEX 0)

# hidl_gen_package(<package>@<version> <root dir of the package's root>)
# Appends the package's generated sources to HIDL_GEN_GENERATED and to the bundles' lists
# (HIDL_GEN_BUNDLE_<n>).
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
  set(slot ${HIDL_GEN_PACKAGE_INDEX})  # the bundle of the package's next file
  set(inline_values)
  foreach(hal ${hal_files})
    get_filename_component(name ${hal} NAME_WE)
    if(name STREQUAL "types")
      list(APPEND headers ${HIDL_GEN_INCLUDE_DIR}/${out_dir}/types.h ${HIDL_GEN_INCLUDE_DIR}/${out_dir}/hwtypes.h)
      # Debian's hidl-gen writes an enumeration's value table without the `inline` that later
      # generators add; clang then gives every unit that includes it its own strong definition.
      set(inline_values COMMAND sed -i "s/^template<> constexpr /template<> inline constexpr /"
        ${HIDL_GEN_INCLUDE_DIR}/${out_dir}/types.h)
      set(source ${HIDL_GEN_SOURCE_DIR}/${out_dir}/types.cpp)
    else()
      string(REGEX REPLACE "^I" "" base ${name})
      foreach(h I${base} IHw${base} BnHw${base} BpHw${base} Bs${base})
        list(APPEND headers ${HIDL_GEN_INCLUDE_DIR}/${out_dir}/${h}.h)
      endforeach()
      set(source ${HIDL_GEN_SOURCE_DIR}/${out_dir}/${base}All.cpp)
    endif()
    list(APPEND sources ${source})
    math(EXPR bundle "${slot} % ${HIDL_GEN_BUNDLE_COUNT}")
    math(EXPR slot "${slot} + 1")
    set(HIDL_GEN_BUNDLE_${bundle} ${HIDL_GEN_BUNDLE_${bundle}} ${source} PARENT_SCOPE)
    set(HIDL_GEN_BUNDLE_${bundle} ${HIDL_GEN_BUNDLE_${bundle}} ${source})
  endforeach()
  # Interface files sort before types.hal, so a package's interfaces take consecutive bundles.
  set(interfaces ${hal_files})
  list(FILTER interfaces EXCLUDE REGEX "/types\\.hal$")
  list(LENGTH interfaces count)
  if(count GREATER HIDL_GEN_BUNDLE_COUNT)
    message(FATAL_ERROR "${fqname}: more interfaces than HIDL_GEN_BUNDLE_COUNT, which must grow")
  endif()
  math(EXPR next "${HIDL_GEN_PACKAGE_INDEX} + 1")
  set(HIDL_GEN_PACKAGE_INDEX ${next} PARENT_SCOPE)
  add_custom_command(
    OUTPUT ${headers} ${sources}
    COMMAND ${HIDL_GEN} ${HIDL_GEN_ROOTS} -o ${HIDL_GEN_INCLUDE_DIR} -Lc++-headers ${fqname}
    ${inline_values}
    COMMAND ${HIDL_GEN} ${HIDL_GEN_ROOTS} -o ${HIDL_GEN_SOURCE_DIR} -Lc++-sources ${fqname}
    DEPENDS ${HIDL_GEN_HAL_FILES}
    COMMENT "hidl-gen ${fqname}"
    VERBATIM)
  set(HIDL_GEN_PACKAGES ${HIDL_GEN_PACKAGES} ${fqname} PARENT_SCOPE)
  set(HIDL_GEN_GENERATED ${HIDL_GEN_GENERATED} ${sources} PARENT_SCOPE)
  set(HIDL_GEN_HEADERS ${HIDL_GEN_HEADERS} ${headers} PARENT_SCOPE)
endfunction()

foreach(pkg android.hidl.base@1.0 android.hidl.manager@1.0)
  hidl_gen_package(${pkg} ${KXMMI_SOURCE_ROOT}/platform/hidl-interfaces)
endforeach()
foreach(pkg kxfactoryinterface@1.0 kxfactoryinterface@1.1 kxdisplay@1.0 kxdisplay@1.1 tp@1.0
            sensors@1.0 sensors@1.1 power@1.0 light@2.0 otherdevices@1.0)
  hidl_gen_package(vendor.tavrin.hardware.${pkg} ${KXMMI_SOURCE_ROOT}/hal/interfaces)
endforeach()

# bundle_sources(<file> <source>...): writes <file>, which compiles each source in turn (each
# defines its own LOG_TAG); rewritten only when it changes, so a reconfigure rebuilds nothing.
function(bundle_sources file)
  set(content "// Generated by cmake/HidlGen.cmake: generated interface code compiled as one unit.\n")
  foreach(source ${ARGN})
    string(APPEND content "#undef LOG_TAG\n#include \"${source}\"\n")
  endforeach()
  file(CONFIGURE OUTPUT ${file} CONTENT "${content}" @ONLY)
endfunction()

# HIDL_GEN_SOURCES: what a target compiles for the generated interface code.
set(HIDL_GEN_SOURCES)
math(EXPR last "${HIDL_GEN_BUNDLE_COUNT} - 1")
foreach(n RANGE ${last})
  bundle_sources(${CMAKE_BINARY_DIR}/hidl-gen/bundle-${n}.cpp ${HIDL_GEN_BUNDLE_${n}})
  list(APPEND HIDL_GEN_SOURCES ${CMAKE_BINARY_DIR}/hidl-gen/bundle-${n}.cpp)
endforeach()

# Headers and sources first: every target that includes them depends on this one.
add_custom_target(hidl_gen_headers DEPENDS ${HIDL_GEN_HEADERS} ${HIDL_GEN_GENERATED})
add_library(hidl_gen_interface INTERFACE)
# Generated code is not held to this tree's warnings (clang flags its missing overrides).
target_include_directories(hidl_gen_interface SYSTEM INTERFACE ${HIDL_GEN_INCLUDE_DIR})
add_dependencies(hidl_gen_interface hidl_gen_headers)

add_test(NAME hidl_gen_check
  COMMAND ${HIDL_GEN} ${HIDL_GEN_ROOTS} -Lcheck ${HIDL_GEN_PACKAGES})

# hidl_gen_impl(<package>@<version> <name> <out var>): the interface compiler's default
# implementation of the version's interface (every operation answers nothing), for services
# that serve only some operations. Headers are found as "<last package component>/<name>.h"
# under HIDL_GEN_IMPL_DIR. The sources of all the calls in one folder compile as one bundle
# (they parse the same interface headers), which the first call adds to <out var>.
# Generated while configuring (hidl-gen takes milliseconds) and again when a .hal file changes:
# as a build step it would wait for every library its target links, and with it the simulated
# device's first compile, on which the first ./mmi run waits.
set(HIDL_GEN_IMPL_DIR ${CMAKE_BINARY_DIR}/hidl-gen/impl)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${HIDL_GEN_HAL_FILES})
function(hidl_gen_impl fqname name out_var)
  string(REGEX MATCH "\\.([a-z]+)@" _ ${fqname})
  set(dir ${HIDL_GEN_IMPL_DIR}/${CMAKE_MATCH_1})
  execute_process(
    COMMAND ${HIDL_GEN} ${HIDL_GEN_ROOTS} -o ${dir}.new -Lc++-impl ${fqname}
    RESULT_VARIABLE status ERROR_VARIABLE err)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "hidl-gen -Lc++-impl ${fqname} failed: ${err}")
  endif()
  # Copied only when changed, so a reconfigure rebuilds nothing.
  file(MAKE_DIRECTORY ${dir})
  foreach(file ${name}.h ${name}.cpp)
    file(COPY_FILE ${dir}.new/${file} ${dir}/${file} ONLY_IF_DIFFERENT)
  endforeach()
  file(REMOVE_RECURSE ${dir}.new)
  get_property(sources DIRECTORY PROPERTY HIDL_GEN_IMPL_SOURCES)
  set_property(DIRECTORY APPEND PROPERTY HIDL_GEN_IMPL_SOURCES ${dir}/${name}.cpp)
  if(NOT sources)
    # Written at the end of the folder, once every call is known.
    cmake_language(DEFER CALL _hidl_gen_impl_bundle)
    set(${out_var} ${${out_var}} ${HIDL_GEN_IMPL_DIR}/bundle.cpp PARENT_SCOPE)
  endif()
endfunction()

function(_hidl_gen_impl_bundle)
  get_property(sources DIRECTORY PROPERTY HIDL_GEN_IMPL_SOURCES)
  bundle_sources(${HIDL_GEN_IMPL_DIR}/bundle.cpp ${sources})
endfunction()
