# What `cmake --workflow --preset deb` makes: libfairlead1, libfairlead-dev and fairlead-tools, one for each component.
set(library libfairlead${PROJECT_VERSION_MAJOR})
set(development libfairlead-dev)
set(tools fairlead-tools)
set(deb_folder ${PROJECT_SOURCE_DIR}/packaging/deb)

set(CPACK_PACKAGE_CONTACT "The fairlead developers <fairlead@localhost>" CACHE STRING
    "Who answers for the packages: name and mail address")
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME fairlead)
set(CPACK_PACKAGE_VENDOR fairlead)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")   # each package has its own
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS ${deb_folder}/complete.cmake)
set(CPACK_FAIRLEAD_PACKAGES runtime=${library} development=${development} tools=${tools})
set(CPACK_FAIRLEAD_DEB_FOLDER ${deb_folder})

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime development tools)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
# What is needed at run time is asked of the files, and that is libc6; the tools find the library in the build folder.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(exact_library "${library} (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")

# By this list packages of other programs depend on the oldest library that has all they use.
file(READ ${PROJECT_SOURCE_DIR}/abi/exports exports)
string(REGEX MATCHALL "[A-Za-z0-9_]+@FAIRLEAD_[0-9.]+" exports "${exports}")
set(nodes ${exports})
list(TRANSFORM nodes REPLACE ".*@(.*)" "\\1@\\1")
list(REMOVE_DUPLICATES nodes)
list(APPEND nodes ${exports})
list(TRANSFORM nodes REPLACE "(.*@FAIRLEAD_)(.*)" " \\1\\2 \\2\n")
list(JOIN nodes "" nodes)
file(CONFIGURE OUTPUT symbols CONTENT "libfairlead.so.${PROJECT_VERSION_MAJOR} ${library} #MINVER#\n${nodes}")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS abi/exports)

set(about "fairlead carries configuration and calls to the objects of a network device: by
adapter modules, by scripts, or straight to its configuration files. It has no
daemon, and libc is all it needs at run time.
.
This package has")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${library})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
# The trigger has ldconfig run. The scripts do not exist: naming them keeps cpack from writing some that do the same.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
  ${PROJECT_BINARY_DIR}/symbols ${deb_folder}/triggers ${deb_folder}/postinst ${deb_folder}/postrm)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "control plane of an embedded network device - library
${about} the shared library.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME ${development})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${exact_library}")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "control plane of an embedded network device - development
${about} the headers, the files by which pkg-config and CMake find
the library, and the documentation for those who write adapters and programs.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME ${tools})
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${exact_library}")
set(CPACK_DEBIAN_TOOLS_DESCRIPTION "control plane of an embedded network device - tools
${about} the request tool \"he\" and the control tool \"fairlead\"
with its completion for bash.")

include(CPack)
