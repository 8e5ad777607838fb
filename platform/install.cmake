# What is installed of the platform library (component `development` for building against it) and
# of the inventory service.
install(TARGETS orb-platform
  EXPORT orb-gnss-targets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    COMPONENT runtime
    NAMELINK_COMPONENT development)
install(DIRECTORY include/orb-platform
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  COMPONENT development)

# The prefix is found from the file's own place, so that an installed tree can be moved.
file(RELATIVE_PATH PC_PREFIX
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(orb-platform.pc.in orb-platform.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/orb-platform.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
  COMPONENT development)

install(TARGETS orb-inventoryd
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  COMPONENT runtime)
install(FILES dbus/org.orb_gnss.Inventory1.xml
  DESTINATION ${CMAKE_INSTALL_DATADIR}/dbus-1/interfaces
  COMPONENT runtime)
install(FILES dbus/org.orb_gnss.Inventory1.conf
  DESTINATION ${CMAKE_INSTALL_DATADIR}/dbus-1/system.d
  COMPONENT runtime)
install(FILES inventoryd/inventory.example.toml
  DESTINATION ${CMAKE_INSTALL_DATADIR}/orb-gnss
  COMPONENT runtime)
install(FILES inventoryd/orb-inventoryd.sysusers.conf
  DESTINATION lib/sysusers.d
  RENAME orb-inventoryd.conf
  COMPONENT runtime)

# These two name the program by its full path, and the prefix is known only when installing. They are
# written where they go: several installations may run at once.
function(install_with_paths template destination name)
  install(CODE "
    set(BIN_DIR \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}\")
    set(DOC_DIR \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_DOCDIR}\")
    set(file \"\${CMAKE_INSTALL_PREFIX}/${destination}/${name}\")
    message(STATUS \"Installing: \$ENV{DESTDIR}\${file}\")
    configure_file(\"${CMAKE_CURRENT_SOURCE_DIR}/${template}\" \"\$ENV{DESTDIR}\${file}\" @ONLY
      FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
    list(APPEND CMAKE_INSTALL_MANIFEST_FILES \"\${file}\")"
    COMPONENT runtime)
endfunction()
install_with_paths(inventoryd/orb-inventoryd.service.in lib/systemd/system orb-inventoryd.service)
install_with_paths(dbus/org.orb_gnss.Inventory1.service.in
  ${CMAKE_INSTALL_DATADIR}/dbus-1/system-services org.orb_gnss.Inventory1.service)
