# Compares the demangled dynamic symbols that the shared library defines with the list
# of the exported API.
execute_process(COMMAND nm -D --defined-only -C ${LIBRARY}
                OUTPUT_VARIABLE symbols RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "nm failed on ${LIBRARY}")
endif()
string(REPLACE "\n" ";" lines "${symbols}")
set(actual)
foreach(line IN LISTS lines)
  string(REGEX REPLACE "^[0-9a-f]+ [A-Za-z] " "" name "${line}")
  if(NOT name STREQUAL "" AND NOT name MATCHES "^(_init|_fini|__bss_start|_edata|_end)$"
     AND NOT name MATCHES "^__(asan|ubsan|tsan|sanitizer)")
    list(APPEND actual "${name}")
  endif()
endforeach()
list(SORT actual)
list(REMOVE_DUPLICATES actual)
file(STRINGS ${EXPECTED} expected)
list(SORT expected)
if(NOT actual STREQUAL expected)
  string(REPLACE ";" "\n" actualText "${actual}")
  message(FATAL_ERROR "Exported symbols differ from ${EXPECTED}; the library exports:\n${actualText}")
endif()
