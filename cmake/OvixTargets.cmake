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

# The public headers of a library: what its umbrella header needs of its own folder, found along the include lines.
function(ovix_public_headers result umbrella)
  string(REGEX MATCH "^[a-z]+/" folder ${umbrella})
  set(found)
  set(next ${umbrella})
  while(next)
    list(POP_FRONT next header)
    list(APPEND found ${header})
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${header})
    file(STRINGS ${PROJECT_SOURCE_DIR}/${header} lines REGEX "^#include \"${folder}")
    foreach(line IN LISTS lines)
      string(REGEX REPLACE "^#include \"([^\"]+)\".*" "\\1" included ${line})
      if(NOT included IN_LIST found AND NOT included IN_LIST next)
        list(APPEND next ${included})
      endif()
    endforeach()
  endwhile()
  list(TRANSFORM found PREPEND ${PROJECT_SOURCE_DIR}/)
  set(${result} ${found} PARENT_SCOPE)
endfunction()

# What all shared libraries are: everything hidden that is not exported, and `ovix::NAME` in the package.
function(ovix_shared target name)
  set_target_properties(${target} PROPERTIES
    CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON
    VERIFY_INTERFACE_HEADER_SETS ON
    BUILD_RPATH $ORIGIN INSTALL_RPATH $ORIGIN
    EXPORT_NAME ${name})
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:ovix_flags>)
  # What is deleted at process exit needs its code until then, also when a host has closed the library before.
  target_link_options(${target} PRIVATE -Wl,-z,nodelete)
  if(NOT OVIX_SANITIZE)
    set(exports ${PROJECT_SOURCE_DIR}/cmake/exports.map)
    target_link_options(${target} PRIVATE -Wl,--no-undefined -Wl,--version-script=${exports})
    set_target_properties(${target} PROPERTIES LINK_DEPENDS ${exports})
  endif()
endfunction()

# A library of C++ with exactly the file name NAME.so. Its umbrella header FOLDER/FOLDER.h and what that needs are
# installed under their places in the tree.
function(ovix_library target name)
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  cmake_path(GET CMAKE_CURRENT_SOURCE_DIR FILENAME folder)
  ovix_public_headers(headers ${folder}/${folder}.h)
  add_library(${target} SHARED ${sources})
  target_sources(${target} PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${headers})
  ovix_shared(${target} ${folder})
  set_target_properties(${target} PROPERTIES PREFIX "" OUTPUT_NAME ${name} SUFFIX .so)
  target_compile_features(${target} PUBLIC cxx_std_20)
endfunction()
