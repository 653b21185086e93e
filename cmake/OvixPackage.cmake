# What is installed. `find_package(ovix)` gives ovix::core, ovix::reduce, ovix::measure and, for C, ovix::c; ovix.pc and
# ovix-c.pc the same to others. All of it may be moved.
#
# Components: "runtime" with the libraries, "development" with all that programs build against, and "tool".

include(CMakePackageConfigHelpers)

# Libraries that bear no version in their names stand in a folder of their own, which is where plug-ins go, too.
set(libraries ${CMAKE_INSTALL_LIBDIR}/ovix)
set(package ${CMAKE_INSTALL_LIBDIR}/cmake/ovix)

install(TARGETS ovix_core ovix_reduce ovix_measure EXPORT ovixTargets
  LIBRARY DESTINATION ${libraries} COMPONENT runtime
  FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ovix COMPONENT development)
install(TARGETS ovix_c EXPORT ovixTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
  FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ovix COMPONENT development)
install(TARGETS ovix_decode RUNTIME DESTINATION ${libraries} COMPONENT runtime)
if(OVIX_TOOL)
  install(TARGETS ovix RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tool)
  install(TARGETS ovix_nexus LIBRARY DESTINATION ${libraries} COMPONENT tool)
endif()

install(EXPORT ovixTargets NAMESPACE ovix:: DESTINATION ${package} COMPONENT development)
configure_package_config_file(cmake/ovixConfig.cmake.in ${PROJECT_BINARY_DIR}/ovixConfig.cmake INSTALL_DESTINATION ${package})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/ovixConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/ovixConfig.cmake ${PROJECT_BINARY_DIR}/ovixConfigVersion.cmake
  DESTINATION ${package} COMPONENT development)

# A package for pkg-config knows its place in the prefix and not the prefix.
file(RELATIVE_PATH toPrefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
foreach(name IN ITEMS ovix ovix-c)
  configure_file(cmake/${name}.pc.in ${PROJECT_BINARY_DIR}/${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endforeach()
