# The exported CMake package and the pkg-config file.

set(ORB_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/orb-gnss)

configure_package_config_file(cmake/orb-gnss-config.cmake.in
  ${PROJECT_BINARY_DIR}/orb-gnss-config.cmake
  INSTALL_DESTINATION ${ORB_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/orb-gnss-config-version.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/orb-gnss-config.cmake
    ${PROJECT_BINARY_DIR}/orb-gnss-config-version.cmake
  DESTINATION ${ORB_CMAKE_DIR} COMPONENT development)
install(EXPORT orb-gnss-targets
  NAMESPACE orb-gnss::
  DESTINATION ${ORB_CMAKE_DIR} COMPONENT development)

# The prefix is found from the file's own place, so that an installed tree can be moved.
file(RELATIVE_PATH PC_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/orb-gnss.pc.in ${PROJECT_BINARY_DIR}/orb-gnss.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/orb-gnss.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

add_subdirectory(docs)

# Who brings up a board changes a copy of the rule in /etc/udev/rules.d.
install(FILES packaging/system/60-orb-gnss.rules DESTINATION lib/udev/rules.d COMPONENT runtime)
install(FILES packaging/system/orb-gnss.logrotate
  DESTINATION ${CMAKE_INSTALL_SYSCONFDIR}/logrotate.d RENAME orb-gnss COMPONENT runtime)
