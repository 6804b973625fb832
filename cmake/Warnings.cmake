# Warnings for matgraph's own targets. -Werror stays PRIVATE, so it never reaches a
# host's build.
function(matgraph_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic)
  if(MATGRAPH_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
