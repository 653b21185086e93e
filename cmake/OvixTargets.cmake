# What every target of the project is compiled with, and the shapes of its targets.

find_package(Threads REQUIRED)

add_library(ovix_flags INTERFACE)
target_compile_features(ovix_flags INTERFACE cxx_std_20)
target_compile_options(ovix_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow
  # A fused product and sum would make results differ from one processor to the next.
  -ffp-contract=off
  $<$<BOOL:${OVIX_WERROR}>:-Werror>)

if(OVIX_SANITIZE STREQUAL "address")
  set(sanitizers -fsanitize=address,undefined,float-cast-overflow -fno-sanitize-recover=all -fno-omit-frame-pointer)
elseif(OVIX_SANITIZE STREQUAL "thread")
  set(sanitizers -fsanitize=thread -fno-omit-frame-pointer)
elseif(NOT OVIX_SANITIZE STREQUAL "")
  message(FATAL_ERROR "OVIX_SANITIZE is ${OVIX_SANITIZE}: expected nothing, address or thread")
endif()
if(OVIX_FUZZ)
  list(APPEND sanitizers -fsanitize=fuzzer-no-link)
endif()
target_compile_options(ovix_flags INTERFACE ${sanitizers})
target_link_options(ovix_flags INTERFACE ${sanitizers})

# A shared library with exactly the file name NAME.so and everything hidden that is not exported.
# Its headers are installed under their place in the tree: those that are given, else all of its folder, as deep as it
# goes.
function(ovix_library target name)
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  set(headers ${ARGN})
  if(NOT headers)
    file(GLOB_RECURSE headers CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
    list(FILTER headers EXCLUDE REGEX "-inl\\.h$")  # pieces of source files, compiled once for each processor target
  endif()
  add_library(${target} SHARED ${sources})
  target_sources(${target} PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${headers})
  set_target_properties(${target} PROPERTIES
    PREFIX "" OUTPUT_NAME ${name} SUFFIX .so
    CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON
    VERIFY_INTERFACE_HEADER_SETS ON
    BUILD_RPATH $ORIGIN INSTALL_RPATH $ORIGIN)
  target_compile_features(${target} PUBLIC cxx_std_20)
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:ovix_flags>)
  # What is deleted at process exit needs its code until then, also when a host has closed the library before.
  target_link_options(${target} PRIVATE -Wl,-z,nodelete $<$<STREQUAL:${OVIX_SANITIZE},>:-Wl,--no-undefined>)
endfunction()
