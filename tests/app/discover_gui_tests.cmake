# Run after every build of the GUI test program: writes one CTest test per test function, so that
# the long end-to-end functions run beside each other, each on an X server of its own. A class
# whose name begins with "Accessibility" runs on an accessibility bus of its own as well
# (BUS_RUNNER), so that the toolkit's accessibility bridge is active in it.
#   cmake -DPROGRAM=... -DRUNNER=... -DBUS_RUNNER=... -DOUTPUT=... -P discover_gui_tests.cmake
execute_process(COMMAND ${PROGRAM} --classes OUTPUT_VARIABLE classes RESULT_VARIABLE failed)
if(failed)
  message(FATAL_ERROR "${PROGRAM} --classes failed")
endif()
string(REPLACE "\n" ";" classes "${classes}")
set(ENV{QT_QPA_PLATFORM} offscreen)
set(content "")
foreach(class IN LISTS classes)
  if(class STREQUAL "")
    continue()
  endif()
  execute_process(COMMAND ${PROGRAM} ${class} -functions
                  OUTPUT_VARIABLE functions RESULT_VARIABLE failed ERROR_QUIET)
  if(failed)
    message(FATAL_ERROR "${PROGRAM} ${class} -functions failed")
  endif()
  set(runner "bash [=[${RUNNER}]=]")
  if(class MATCHES "^Accessibility")
    set(runner "bash [=[${BUS_RUNNER}]=] ${runner}")
  endif()
  string(REPLACE "()" "" functions "${functions}")
  string(REPLACE "\n" ";" functions "${functions}")
  foreach(function IN LISTS functions)
    if(function STREQUAL "")
      continue()
    endif()
    string(APPEND content
      "add_test([=[${class}.${function}]=] ${runner} [=[${PROGRAM}]=] ${class} ${function})\n"
      "set_tests_properties([=[${class}.${function}]=] PROPERTIES TIMEOUT 180)\n")
  endforeach()
endforeach()
file(WRITE ${OUTPUT} "${content}")
