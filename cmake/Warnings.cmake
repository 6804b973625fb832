# Warnings for matgraph's own targets. -Werror stays PRIVATE, so it never reaches a
# host's build.
function(matgraph_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic)
  # GCC 12 reports -Wrestrict inside std::string's operator+ at -O2 and above, where no
  # overlap can happen (a known false positive of that release).
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(${target} PRIVATE -Wno-restrict)
  endif()
  if(MATGRAPH_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
