# What `cmake --install` lays down, in three components: "runtime", the library; "tools", the programs with manual pages
# and completion; "development", headers, CMake package, pkg-config file and documentation.
include(CMakePackageConfigHelpers)
set(fairlead_cmake_folder ${CMAKE_INSTALL_LIBDIR}/cmake/fairlead)

install(TARGETS fairlead EXPORT fairlead
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development)

install(TARGETS he fairlead_tool RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
install(FILES docs/man/he.1 docs/man/fairlead.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
install(FILES tools/fairlead/completion.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
        RENAME fairlead COMPONENT tools)

install(DIRECTORY include/fairlead DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development
        FILES_MATCHING PATTERN "*.h")
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development FILES_MATCHING PATTERN "*.md"
        PATTERN man EXCLUDE)
install(EXPORT fairlead NAMESPACE fairlead:: FILE fairleadTargets.cmake DESTINATION ${fairlead_cmake_folder}
        COMPONENT development)

configure_package_config_file(cmake/fairleadConfig.cmake.in ${PROJECT_BINARY_DIR}/fairleadConfig.cmake
  INSTALL_DESTINATION ${fairlead_cmake_folder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/fairleadConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/fairleadConfig.cmake ${PROJECT_BINARY_DIR}/fairleadConfigVersion.cmake
        DESTINATION ${fairlead_cmake_folder} COMPONENT development)

file(RELATIVE_PATH FAIRLEAD_PREFIX_FROM_PC /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/fairlead.pc.in ${PROJECT_BINARY_DIR}/fairlead.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/fairlead.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
