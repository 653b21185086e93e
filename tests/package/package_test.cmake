# Driven by tests/package/CMakeLists.txt, which passes the variables.

function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY OUTPUT_VARIABLE output)
  set(output "${output}" PARENT_SCOPE)
endfunction()

set(prefix ${work}/prefix)
file(REMOVE_RECURSE ${prefix} ${work}/build)
run(${CMAKE_COMMAND} --install ${built} --config ${config} --prefix ${prefix} --component library)
run(${CMAKE_COMMAND} -S ${source} -B ${work}/build -G ${generator}
  -D CMAKE_PREFIX_PATH=${prefix} -D CMAKE_CXX_COMPILER=${compiler} -D CMAKE_BUILD_TYPE=${config}
  "-D CMAKE_CXX_FLAGS=${flags}" -D EXAMPLE=${example})
run(${CMAKE_COMMAND} --build ${work}/build --config ${config})

run(${work}/build/measure_consumer)
run(${work}/build/consumer)
if(output MATCHES "Toy")
  message(FATAL_ERROR "A plug-in that is not installed was found:\n${output}")
endif()
file(COPY ${work}/build/plugin_filter/ovix.reduce.example.so DESTINATION ${prefix}/${libraries})
run(${work}/build/consumer)
if(NOT output MATCHES "decoder Toy")
  message(FATAL_ERROR "The plug-in beside the installed library was not found:\n${output}")
endif()
