# Run after every build of the GUI test program: writes one CTest test per test function (per row
# of a data-driven one), so that the long end-to-end functions run beside each other, each on an X
# server of its own. A class whose name begins with "Accessibility" runs on an accessibility bus of
# its own as well (BUS_RUNNER), so that the toolkit's accessibility bridge is active in it.
#   cmake -DPROGRAM=... -DRUNNER=... -DBUS_RUNNER=... -DOUTPUT=... -P discover_gui_tests.cmake
execute_process(COMMAND ${PROGRAM} --classes OUTPUT_VARIABLE classes RESULT_VARIABLE failed)
if(failed)
  message(FATAL_ERROR "${PROGRAM} --classes failed")
endif()
string(REPLACE "\n" ";" classes "${classes}")
set(ENV{QT_QPA_PLATFORM} offscreen)
# Warnings would land in the middle of the listing.
set(ENV{QT_LOGGING_RULES} "*.warning=false;default.warning=false")
set(content "")
foreach(class IN LISTS classes)
  if(class STREQUAL "")
    continue()
  endif()
  # One line per function, or per row of a data-driven function: "Class function [row]", the
  # class named with its namespace.
  execute_process(COMMAND ${PROGRAM} ${class} -datatags
                  OUTPUT_VARIABLE lines RESULT_VARIABLE failed ERROR_QUIET)
  if(failed)
    message(FATAL_ERROR "${PROGRAM} ${class} -datatags failed")
  endif()
  set(runner "bash [=[${RUNNER}]=]")
  if(class MATCHES "^Accessibility")
    set(runner "bash [=[${BUS_RUNNER}]=] ${runner}")
  endif()
  string(REPLACE "\n" ";" lines "${lines}")
  foreach(line IN LISTS lines)
    if(NOT line MATCHES "^([A-Za-z0-9_]+::)*${class} ([^ ]+)( (.+))?$")
      continue()
    endif()
    set(function "${CMAKE_MATCH_2}")
    if(CMAKE_MATCH_4)
      set(function "${function}:${CMAKE_MATCH_4}")
    endif()
    string(APPEND content
      "add_test([=[${class}.${function}]=] ${runner} [=[${PROGRAM}]=] ${class} [=[${function}]=])\n"
      "set_tests_properties([=[${class}.${function}]=] PROPERTIES TIMEOUT 180)\n")
  endforeach()
endforeach()
file(WRITE ${OUTPUT} "${content}")
