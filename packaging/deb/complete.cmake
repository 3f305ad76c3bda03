# Run by cpack between installing the components into their staging folders and packing those: adds what Debian wants in
# every package, and compresses manual pages. gzip without name and time, so that equal content makes equal packages.
if(NOT CPACK_GENERATOR STREQUAL "DEB")
  return()
endif()
find_program(gzip gzip REQUIRED)

foreach(pair ${CPACK_FAIRLEAD_PACKAGES})
  string(REGEX MATCH "(.*)=(.*)" pair ${pair})
  set(share ${CPACK_TEMPORARY_DIRECTORY}/${CMAKE_MATCH_1}/usr/share)
  set(documents ${share}/doc/${CMAKE_MATCH_2})

  file(COPY ${CPACK_FAIRLEAD_DEB_FOLDER}/copyright DESTINATION ${documents}
       FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
  configure_file(${CPACK_FAIRLEAD_DEB_FOLDER}/changelog ${documents}/changelog.Debian @ONLY
       FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)

  file(GLOB manuals ${share}/man/man*/*.[0-9])
  execute_process(COMMAND ${gzip} -9n ${documents}/changelog.Debian ${manuals} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
