# Installs the library, its public headers, a pkg-config file and a CMake package.
include(CMakePackageConfigHelpers)

target_include_directories(vqxml_deps SYSTEM INTERFACE "$<INSTALL_INTERFACE:${VQXML_XSEC_PREFIX}/include>")

install(TARGETS vqxml vqxml_deps EXPORT vqxmlTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY include/vqxml DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT vqxmlTargets NAMESPACE vqxml:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vqxml)

configure_package_config_file(cmake/vqxmlConfig.cmake.in
  ${PROJECT_BINARY_DIR}/vqxmlConfig.cmake INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vqxml)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vqxmlConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/vqxmlConfig.cmake ${PROJECT_BINARY_DIR}/vqxmlConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vqxml)

# The .pc file finds its prefix from its own place, so an installed tree can move.
file(RELATIVE_PATH VQXML_PC_TO_PREFIX "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
configure_file(cmake/vqxml.pc.in ${PROJECT_BINARY_DIR}/vqxml.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/vqxml.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
