# What the library shows: its own names, and nothing of what the tool is made with.
execute_process(COMMAND ${nm} -DC ${library} OUTPUT_VARIABLE names RESULT_VARIABLE failed)
if(failed OR NOT names MATCHES "ovix::measure::CSource::Next")
  message(FATAL_ERROR "cannot read the names that ${library} shows")
endif()
if(names MATCHES "[^\n]*(fmt::|nlohmann)[^\n]*")
  message(FATAL_ERROR "${library} shows ${CMAKE_MATCH_0}")
endif()
