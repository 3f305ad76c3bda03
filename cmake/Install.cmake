# What `cmake --install` lays down: library, headers, tools, CMake package, pkg-config file.
include(CMakePackageConfigHelpers)

install(TARGETS fairlead EXPORT fairlead LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS he fairlead_tool RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES docs/man/he.1 docs/man/fairlead.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES tools/fairlead/completion.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
        RENAME fairlead)
install(DIRECTORY include/fairlead DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
install(EXPORT fairlead NAMESPACE fairlead:: FILE fairleadTargets.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/fairlead)

configure_package_config_file(cmake/fairleadConfig.cmake.in ${PROJECT_BINARY_DIR}/fairleadConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/fairlead)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/fairleadConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/fairleadConfig.cmake ${PROJECT_BINARY_DIR}/fairleadConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/fairlead)

file(RELATIVE_PATH FAIRLEAD_PREFIX_FROM_PC /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/fairlead.pc.in ${PROJECT_BINARY_DIR}/fairlead.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/fairlead.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
