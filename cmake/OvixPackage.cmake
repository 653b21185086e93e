# The installed package: `find_package(ovix)` gives ovix::core, ovix::reduce and ovix::measure.

include(CMakePackageConfigHelpers)

# Two components: "library" with all that programs build against, and "tool".
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME library)

install(TARGETS ovix_core ovix_reduce ovix_measure EXPORT ovixTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ovix)
install(EXPORT ovixTargets NAMESPACE ovix:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/ovix)
if(OVIX_TOOL)
  install(TARGETS ovix RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tool)
endif()

configure_package_config_file(cmake/ovixConfig.cmake.in ${PROJECT_BINARY_DIR}/ovixConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/ovix)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/ovixConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/ovixConfig.cmake ${PROJECT_BINARY_DIR}/ovixConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/ovix)
