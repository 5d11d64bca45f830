# JUnit 5 tests under CTest, from Debian's junit5 package.
#
#   junit5_add_jar(TARGET SOURCES file... [INCLUDE_JARS target-or-path...])
#     compiles a test jar against the Jupiter API and params jars and the given jars (add_jar
#     targets or paths).
#   junit5_add_test(NAME JAR target [CLASSES class...] [INCLUDE_TAGS tag...] [EXCLUDE_TAGS tag...]
#                   [INCLUDE_JARS ...] [JVM_ARGS ...] [TIMEOUT s])
#     registers a CTest test that runs the platform's console launcher on the jar: the given
#     classes, else every test class the jar holds, narrowed by @Tag when tags are given. JVM_ARGS go to the test JVM (-Dkey=value is how
#     a test gets a path from the build). The launcher's tree and counts go to the test's output, its
#     XML report to junit-reports/NAME/ under the current binary directory; a failed or missing test
#     fails the CTest test.
include_guard(GLOBAL)
include(UseJava)

# Host jars, also in a cross build, whose other lookups are confined to the target's sysroot.
foreach(jar junit-jupiter-api junit-jupiter-params junit-platform-console-standalone opentest4j apiguardian-api)
  string(TOUPPER "JUNIT5_${jar}" var)
  string(REPLACE "-" "_" var "${var}")
  find_file(${var} ${jar}.jar PATHS /usr/share/java NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
  if(NOT ${var})
    message(FATAL_ERROR "${jar}.jar not found in /usr/share/java: junit5 is needed (./mmi installs it)")
  endif()
endforeach()

# The paths of jars given as add_jar targets or as files, in order.
function(_junit5_jar_paths out)
  set(paths)
  foreach(jar IN LISTS ARGN)
    if(TARGET ${jar})
      get_target_property(path ${jar} JAR_FILE)
      list(APPEND paths ${path})
    else()
      list(APPEND paths ${jar})
    endif()
  endforeach()
  set(${out} ${paths} PARENT_SCOPE)
endfunction()

function(junit5_add_jar target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;INCLUDE_JARS")
  add_jar(${target} SOURCES ${arg_SOURCES}
    INCLUDE_JARS ${arg_INCLUDE_JARS} ${JUNIT5_JUNIT_JUPITER_API} ${JUNIT5_JUNIT_JUPITER_PARAMS}
      ${JUNIT5_OPENTEST4J} ${JUNIT5_APIGUARDIAN_API}
    OUTPUT_DIR ${CMAKE_CURRENT_BINARY_DIR})
  # What the test JVM needs besides the launcher, which carries Jupiter itself.
  set_target_properties(${target} PROPERTIES JUNIT5_CLASSPATH "${arg_INCLUDE_JARS}")
endfunction()

function(junit5_add_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "JAR;TIMEOUT" "CLASSES;INCLUDE_TAGS;EXCLUDE_TAGS;INCLUDE_JARS;JVM_ARGS")
  if(NOT TARGET ${arg_JAR})
    message(FATAL_ERROR "junit5_add_test(${name}): JAR must name a junit5_add_jar target")
  endif()
  get_target_property(test_jar ${arg_JAR} JAR_FILE)
  get_target_property(jars ${arg_JAR} JUNIT5_CLASSPATH)
  _junit5_jar_paths(classpath ${test_jar} ${jars} ${arg_INCLUDE_JARS})
  string(REPLACE ";" ":" classpath "${classpath}")
  set(select --scan-class-path=${test_jar})
  if(arg_CLASSES)
    list(TRANSFORM arg_CLASSES PREPEND --select-class= OUTPUT_VARIABLE select)
  endif()
  list(TRANSFORM arg_INCLUDE_TAGS PREPEND --include-tag=)
  list(TRANSFORM arg_EXCLUDE_TAGS PREPEND --exclude-tag=)
  add_test(NAME ${name}
    COMMAND ${Java_JAVA_EXECUTABLE} ${arg_JVM_ARGS} -jar ${JUNIT5_JUNIT_PLATFORM_CONSOLE_STANDALONE}
      --disable-banner --disable-ansi-colors --include-engine=junit-jupiter --details=tree --fail-if-no-tests
      --class-path=${classpath} ${select} ${arg_INCLUDE_TAGS} ${arg_EXCLUDE_TAGS}
      --reports-dir=${CMAKE_CURRENT_BINARY_DIR}/junit-reports/${name})
  if(arg_TIMEOUT)
    set_tests_properties(${name} PROPERTIES TIMEOUT ${arg_TIMEOUT})
  endif()
endfunction()
