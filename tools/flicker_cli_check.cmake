# Runs TOOL with ARGS ('|'-separated) and checks its exit status (EXPECT_STATUS ok or fail) and
# that its combined output matches the regular expression EXPECT.
string(REPLACE "|" ";" args "${ARGS}")
execute_process(COMMAND ${TOOL} ${args} RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err)
set(all "${out}${err}")
message("exit status ${status}\n${all}")
if(EXPECT_STATUS STREQUAL "ok" AND NOT status EQUAL 0)
  message(FATAL_ERROR "expected success")
elseif(EXPECT_STATUS STREQUAL "fail" AND status EQUAL 0)
  message(FATAL_ERROR "expected a failure exit status")
endif()
if(NOT all MATCHES "${EXPECT}")
  message(FATAL_ERROR "output does not match: ${EXPECT}")
endif()
