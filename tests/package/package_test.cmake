# Driven by tests/package/CMakeLists.txt, which passes the variables.

function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY OUTPUT_VARIABLE output)
  set(output "${output}" PARENT_SCOPE)
endfunction()

# What was installed is moved before anything is built against it.
set(prefix ${work}/prefix)
file(REMOVE_RECURSE ${prefix} ${work}/installed ${work}/build ${work}/measuring ${work}/nonsense)
foreach(component IN ITEMS runtime development)
  run(${CMAKE_COMMAND} --install ${built} --config ${config} --prefix ${work}/installed --component ${component})
endforeach()
file(RENAME ${work}/installed ${prefix})

function(build from to)
  run(${CMAKE_COMMAND} -S ${from} -B ${to} -G ${generator}
    -D CMAKE_PREFIX_PATH=${prefix} -D CMAKE_CXX_COMPILER=${compiler} -D CMAKE_BUILD_TYPE=${config}
    "-D CMAKE_CXX_FLAGS=${flags}" ${ARGN})
  run(${CMAKE_COMMAND} --build ${to} --config ${config})
endfunction()

# A component that does not exist is an answer at once.
execute_process(COMMAND ${CMAKE_COMMAND} -S ${source}/consumer -B ${work}/nonsense -G ${generator} -D EXAMPLE=${example}
  -D CMAKE_PREFIX_PATH=${prefix} -D CMAKE_CXX_COMPILER=${compiler} -D COMPONENT=nonsense
  RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
if(status EQUAL 0 OR NOT output MATCHES "nonsense")
  message(FATAL_ERROR "find_package takes a component that does not exist:\n${output}")
endif()

build(${source}/consumer ${work}/build -D EXAMPLE=${example})

run(${work}/build/consumer)
if(output MATCHES "Toy")
  message(FATAL_ERROR "A plug-in that is not installed was found:\n${output}")
endif()
file(COPY ${work}/build/plugin_filter/ovix.reduce.example.so DESTINATION ${prefix}/${libraries})
run(${work}/build/consumer)
if(NOT output MATCHES "decoder Toy")
  message(FATAL_ERROR "The plug-in beside the installed library was not found:\n${output}")
endif()

# A program that knows the measuring layer alone. Compressed frames want the installed helper.
build(${source}/measuring ${work}/measuring)
string(REPEAT "0123" 3072 counts)  # two frames; each byte pair is 0x3130 or 0x3332
file(WRITE ${work}/counts.raw "${counts}")
run(${work}/measuring/measuring ${work}/counts.raw counts)
if(NOT output STREQUAL "frame 0 mean 12849.0\nframe 1 mean 12849.0\n")
  message(FATAL_ERROR "The mean counts are wrong:\n${output}")
endif()

# The same through pkg-config, and a program in C.
separate_arguments(flags)
function(build_by_pkg_config package source to)
  set(ENV{PKG_CONFIG_PATH} ${prefix}/${pkgconfig})
  run(pkg-config --cflags --libs ${package})
  separate_arguments(given UNIX_COMMAND "${output}")
  run(${compiler} ${flags} ${ARGN} ${source} -o ${to} ${given})
endfunction()
build_by_pkg_config(ovix ${source}/measuring/main.cpp ${work}/by_pkg_config -std=c++20)
run(${work}/by_pkg_config ${work}/counts.raw counts)
if(NOT output MATCHES "^frame 0 mean 12849.0\n")
  message(FATAL_ERROR "The program built by pkg-config does not measure:\n${output}")
endif()
build_by_pkg_config(ovix-c ${source}/version.c ${work}/version -x c)
run(${work}/version)

if(EXISTS ${built}/bin/ovix)
  run(${built}/bin/ovix synth --pixel-type "R7X IR (MJLS)" --size 64x48 --count 3 --overwrite -o ${work}/compressed.raw)
  run(${work}/measuring/measuring ${work}/compressed.raw "R7X IR (MJLS)")
  if(NOT output MATCHES "frame 2 mean [1-9]")
    message(FATAL_ERROR "Compressed frames are not measured:\n${output}")
  endif()
endif()

if(NOT sanitized)
  include(${source}/interface/check.cmake)
endif()
