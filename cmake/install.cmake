# cmake --install: filter and driver file where CUPS looks for them, library, headers, tools and manual pages where
# Debian does. Components: driver, tools, library, development (and preview and
# python, which the virtual printer and the Python package install by themselves).

include(CMakePackageConfigHelpers)

if(KLOV_FILTER)
  install(TARGETS rastertoklov RUNTIME DESTINATION ${KLOV_CUPS_SERVERBIN}/filter COMPONENT driver)
  install(FILES ${PROJECT_BINARY_DIR}/ppd/klov.drv ${PROJECT_BINARY_DIR}/ppd/klov-zh_CN.po
    DESTINATION ${KLOV_CUPS_DATADIR}/drv COMPONENT driver)
  # After an upgrade the cups package refreshes the PPDs of the queues that this file names.
  install(FILES ${PROJECT_SOURCE_DIR}/packaging/printer-driver-klov.ppd-updater
    DESTINATION ${KLOV_CUPS_DATADIR}/ppd-updaters COMPONENT driver)
  install(TARGETS klovstatus RUNTIME DESTINATION ${KLOV_CUPS_SERVERBIN}/monitor COMPONENT driver)
  install(TARGETS commandtoklov RUNTIME DESTINATION ${KLOV_CUPS_SERVERBIN}/filter COMPONENT driver)
  install(FILES ${PROJECT_SOURCE_DIR}/talk/klovstatus.8 ${PROJECT_SOURCE_DIR}/talk/commandtoklov.8
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man8 COMPONENT driver)
  install(TARGETS klovctl COMPONENT tools)
  install(FILES ${PROJECT_SOURCE_DIR}/talk/klovctl.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
  install(FILES ${PROJECT_SOURCE_DIR}/talk/klovctl.bash
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME klovctl COMPONENT tools)
  install(FILES ${PROJECT_BINARY_DIR}/ppd/rastertoklov.8 DESTINATION ${CMAKE_INSTALL_MANDIR}/man8 COMPONENT driver)
endif()

install(TARGETS klov EXPORT klovTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development)
install(TARGETS klov_static EXPORT klovTargets ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/klov DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development
  FILES_MATCHING PATTERN "*.h" PATTERN "*.hpp")

install(EXPORT klovTargets NAMESPACE klov:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/klov COMPONENT development)
configure_package_config_file(${PROJECT_SOURCE_DIR}/packaging/klovConfig.cmake.in
  ${PROJECT_BINARY_DIR}/klovConfig.cmake INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/klov)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/klovConfigVersion.cmake COMPATIBILITY SameMajorVersion)
configure_file(${PROJECT_SOURCE_DIR}/packaging/klov.pc.in ${PROJECT_BINARY_DIR}/klov.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/klovConfig.cmake ${PROJECT_BINARY_DIR}/klovConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/klov COMPONENT development)
install(FILES ${PROJECT_BINARY_DIR}/klov.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
