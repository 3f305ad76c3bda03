# How a program of this build is run: here, or as another architecture's, inside the private device root.
set(FAIRLEAD_RUNNER "" CACHE STRING "Command that lets programs of another architecture start here")
set(FAIRLEAD_CHECKER "" CACHE STRING "Command that a test program runs under, in the private device root")
set(DEVICE_ROOT ${PROJECT_SOURCE_DIR}/tools/device-root)
set(IN_DEVICE_ROOT ${FAIRLEAD_RUNNER} ${DEVICE_ROOT})
set(TEST_TIMEOUT 120)
if(FAIRLEAD_RUNNER OR FAIRLEAD_CHECKER)
  set(TEST_TIMEOUT 600)  # takes several times as long
endif()
set(ADOPTING "")
if(FAIRLEAD_RUNNER)
  set(ADOPTING ${CMAKE_CURRENT_LIST_DIR}/support/adopting)  # for programs that wait for the end of daemons
endif()

# device_script(NAME SCRIPT ARG...): a shell script as a test, run inside the private device root; exit 77 means skipped,
# and the script's output tells why.
function(device_script name script)
  add_test(NAME ${name} COMMAND ${IN_DEVICE_ROOT} ${CMAKE_CURRENT_SOURCE_DIR}/${script} ${ARGN})
  set_tests_properties(${name} PROPERTIES TIMEOUT ${TEST_TIMEOUT} SKIP_RETURN_CODE 77)
endfunction()
