# Fails unless every program in examples/guide/ appears whole in the host guide, right
# after its marker, and the guide has no other C++ block. Usage:
#   cmake -DGUIDE=docs/host-guide.md -DSOURCE_DIR=<repository> -P CheckGuideCodeBlocks.cmake
# A marker is the line "<!-- guide-sample: examples/guide/<name>.cpp -->"; the next line
# opens a ```cpp block that holds the file byte for byte.
#
# With -DUPDATE=ON the script first copies each program into the block after its marker
# (making the block if there is none): edit the program, then run
#   cmake -DGUIDE=docs/host-guide.md -DSOURCE_DIR=. -DUPDATE=ON -P tests/docs/CheckGuideCodeBlocks.cmake
get_filename_component(SOURCE_DIR "${SOURCE_DIR}" ABSOLUTE)
file(READ ${GUIDE} guide)
file(GLOB samples RELATIVE ${SOURCE_DIR} ${SOURCE_DIR}/examples/guide/*.cpp)
list(SORT samples)

if(UPDATE)
  foreach(sample IN LISTS samples)
    set(marker "<!-- guide-sample: ${sample} -->\n")
    string(FIND "${guide}" "${marker}" markerAt)
    if(markerAt EQUAL -1)
      continue()
    endif()
    file(READ ${SOURCE_DIR}/${sample} code)
    string(LENGTH "${marker}" markerLength)
    math(EXPR restAt "${markerAt} + ${markerLength}")
    string(SUBSTRING "${guide}" 0 ${markerAt} before)
    string(SUBSTRING "${guide}" ${restAt} -1 rest)
    string(FIND "${rest}" "```cpp\n" openAt)
    if(openAt EQUAL 0)  # drop the old block, up to and including its closing fence
      string(FIND "${rest}" "\n```\n" closeAt)
      math(EXPR afterAt "${closeAt} + 5")
      string(SUBSTRING "${rest}" ${afterAt} -1 rest)
    endif()
    set(guide "${before}${marker}```cpp\n${code}```\n${rest}")
  endforeach()
  file(WRITE ${GUIDE} "${guide}")
endif()

set(problems "")
foreach(sample IN LISTS samples)
  file(READ ${SOURCE_DIR}/${sample} code)
  set(marker "<!-- guide-sample: ${sample} -->\n")
  string(FIND "${guide}" "${marker}" markerAt)
  if(markerAt EQUAL -1)
    string(APPEND problems "  ${sample}: no marker \"${marker}\" in the guide\n")
    continue()
  endif()
  string(FIND "${guide}" "${marker}```cpp\n${code}```\n" blockAt)
  if(blockAt EQUAL -1)
    string(APPEND problems "  ${sample}: the block after its marker differs from the file\n")
  endif()
endforeach()

# Every C++ block of the guide is one of the samples, so none goes unchecked.
string(REGEX MATCHALL "\n```cpp\n" blocks "${guide}")
string(REGEX MATCHALL "<!-- guide-sample: [^ ]+ -->" markers "${guide}")
list(LENGTH blocks blockCount)
list(LENGTH markers markerCount)
list(LENGTH samples sampleCount)
if(NOT blockCount EQUAL sampleCount OR NOT markerCount EQUAL sampleCount)
  string(APPEND problems "  ${blockCount} C++ blocks and ${markerCount} markers in the guide, "
                         "${sampleCount} programs in examples/guide/\n")
endif()

if(problems)
  message(FATAL_ERROR "${GUIDE} and examples/guide/ disagree:\n${problems}"
                      "Copy each program whole into the block after its marker, or run this\n"
                      "script with -DUPDATE=ON to do it.")
endif()
message(STATUS "${sampleCount} guide samples match their blocks")
