# The Debian packages, one for each component, which `cpack -G DEB` makes: libovix, libovix-dev, ovix and python3-ovix.

# Below every revision of Debian's, should it have packages of its own one day.
set(CPACK_DEBIAN_PACKAGE_RELEASE 0ovix1)

foreach(pair IN ITEMS runtime:libovix development:libovix-dev tool:ovix python3:python3-ovix)
  string(REGEX MATCH "^([^:]+):(.+)$" pair ${pair})
  set(component ${CMAKE_MATCH_1})
  set(name ${CMAKE_MATCH_2})
  if((component STREQUAL "tool" AND NOT OVIX_TOOL) OR (component STREQUAL "python3" AND NOT TARGET ovix_python))
    continue()
  endif()
  list(APPEND CPACK_COMPONENTS_ALL ${component})
  string(TOUPPER ${component} COMPONENT)
  set(CPACK_DEBIAN_${COMPONENT}_PACKAGE_NAME ${name})
  set(CPACK_DEBIAN_${COMPONENT}_FILE_NAME DEB-DEFAULT)
  install(FILES packaging/copyright DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${name} COMPONENT ${component})
  set(compressed ${PROJECT_BINARY_DIR}/packaging/${name})
  file(MAKE_DIRECTORY ${compressed})
  configure_file(packaging/changelog.in ${PROJECT_BINARY_DIR}/packaging/changelog @ONLY)
  execute_process(COMMAND gzip -9nc ${PROJECT_SOURCE_DIR}/CHANGELOG.md OUTPUT_FILE ${compressed}/changelog.gz COMMAND_ERROR_IS_FATAL ANY)
  execute_process(COMMAND gzip -9nc ${PROJECT_BINARY_DIR}/packaging/changelog OUTPUT_FILE ${compressed}/changelog.Debian.gz COMMAND_ERROR_IS_FATAL ANY)
  install(FILES ${compressed}/changelog.gz ${compressed}/changelog.Debian.gz
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${name} COMPONENT ${component})
endforeach()

install(FILES packaging/libovix.lintian-overrides DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/lintian/overrides
  RENAME libovix COMPONENT runtime)

if(TARGET ovix_python)
  # The module by the libraries of libovix, not by those of a wheel; and what tells xarray of its engine.
  set(module lib/python3/dist-packages)
  file(RELATIVE_PATH toLibraries /${module}/ovix /${libraries})
  set_target_properties(ovix_python PROPERTIES INSTALL_RPATH $ORIGIN/${toLibraries})
  install(TARGETS ovix_python LIBRARY DESTINATION ${module}/ovix COMPONENT python3)
  install(DIRECTORY python/ovix ${PROJECT_BINARY_DIR}/python/ovix-${PROJECT_VERSION}.dist-info DESTINATION ${module}
    COMPONENT python3 PATTERN __pycache__ EXCLUDE)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ovix)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "the ovix maintainers <maintainers@ovix.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEBIAN_PACKAGE_SOURCE ovix)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})

set(this ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libovix (= ${this})")
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "libovix (= ${this})")
# The module is compiled for one Python.
if(TARGET ovix_python)
  find_package(Python 3 REQUIRED COMPONENTS Interpreter)
  math(EXPR after "${Python_VERSION_MINOR} + 1")
  set(CPACK_DEBIAN_PYTHON3_PACKAGE_DEPENDS
    "libovix (= ${this}), python3 (>= 3.${Python_VERSION_MINOR}~), python3 (<< 3.${after}), python3-numpy (>= 1:1.24)")
  set(CPACK_DEBIAN_PYTHON3_PACKAGE_SUGGESTS "python3-xarray, python3-dask, python3-zarr, python3-fsspec, python3-tqdm")
  set(CPACK_DEBIAN_PYTHON3_PACKAGE_CONTROL_EXTRA
    ${PROJECT_SOURCE_DIR}/packaging/python3/postinst ${PROJECT_SOURCE_DIR}/packaging/python3/prerm)
endif()
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PYTHON3_PACKAGE_SECTION python)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/triggers)

set(what "ovix turns the raw frames of thermal cameras into measurements: it decodes
them, corrects non-uniformity, merges presets and converts counts to radiance
and temperature with a status for every pixel. It writes and reads recordings.")
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "${what}\n\nThese are the shared libraries, for C++ and for C.")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "${what}\n\nThese are the headers and the files for CMake and pkg-config.")
set(CPACK_DEBIAN_TOOL_DESCRIPTION
  "${what}\n\nThis is the tool ovix with its manual and completion for bash, zsh and fish.")
set(CPACK_DEBIAN_PYTHON3_DESCRIPTION "${what}\n\nThis is the module ovix for Python 3.")
include(CPack)
