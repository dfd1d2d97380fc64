# Install rules: headers, libraries, module, catalogues, shell, routine layer, CMake package, pkg-config file.
include(CMakePackageConfigHelpers)

install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(TARGETS zent_shared zent_static EXPORT zent-targets
  LIBRARY DESTINATION lib ARCHIVE DESTINATION lib)
install(TARGETS orv_zent LIBRARY DESTINATION lib)
install(TARGETS orv RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
# The library looks for its catalogues in /usr/lib/ and /usr/local/lib/ when no variable tells otherwise.
install(FILES ${CMAKE_BINARY_DIR}/zenterr.bin ${CMAKE_BINARY_DIR}/zents_e.bin DESTINATION lib)
install(DIRECTORY orv/ DESTINATION share/orv FILES_MATCHING PATTERN "*.orv")
install(DIRECTORY examples/ DESTINATION share/doc/zent/examples FILES_MATCHING PATTERN "*.orv" PATTERN "*.c")

install(EXPORT zent-targets NAMESPACE zent:: DESTINATION lib/cmake/zent)
configure_package_config_file(cmake/zent-config.cmake.in ${CMAKE_BINARY_DIR}/zent-config.cmake
  INSTALL_DESTINATION lib/cmake/zent)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/zent-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/zent-config.cmake ${CMAKE_BINARY_DIR}/zent-config-version.cmake DESTINATION lib/cmake/zent)

configure_file(cmake/zent.pc.in ${CMAKE_BINARY_DIR}/zent.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/zent.pc DESTINATION lib/pkgconfig)
