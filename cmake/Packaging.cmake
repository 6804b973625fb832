# What `cmake --install` puts in place for hosts: the shared library (with its SONAME),
# the public headers, a CMake package that find_package(matgraph CONFIG) finds and that
# gives the target matgraph::matgraph, and a pkg-config file matgraph.pc.
#
# Only the library is in the export set. A program of ours that is installed too (the
# command-line tool) is installed with its own install(TARGETS ... RUNTIME DESTINATION
# ${CMAKE_INSTALL_BINDIR}) and no EXPORT: it links internal targets that hosts never see.
include(CMakePackageConfigHelpers)

# The headers carry the version as macros (mat/Version.h); they must agree with the
# version of the project, which names the package and the SONAME.
file(STRINGS ${PROJECT_SOURCE_DIR}/include/mat/Version.h versionLines
     REGEX "^#define MATGRAPH_VERSION_(MAJOR|MINOR|PATCH) ")
set(headerVersion)
foreach(part MAJOR MINOR PATCH)
  string(REGEX MATCH "MATGRAPH_VERSION_${part} ([0-9]+)" found "${versionLines}")
  list(APPEND headerVersion ${CMAKE_MATCH_1})
endforeach()
list(JOIN headerVersion "." headerVersion)
if(NOT headerVersion VERSION_EQUAL PROJECT_VERSION)
  message(FATAL_ERROR "include/mat/Version.h says ${headerVersion}, project() says "
                      "${PROJECT_VERSION}: change both together")
endif()

set(MATGRAPH_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/matgraph)

install(TARGETS matgraph EXPORT matgraphTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/mat DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT matgraphTargets NAMESPACE matgraph:: DESTINATION ${MATGRAPH_PACKAGE_DIR})

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/matgraphConfig.cmake.in
  ${PROJECT_BINARY_DIR}/packaging/matgraphConfig.cmake
  INSTALL_DESTINATION ${MATGRAPH_PACKAGE_DIR})
# Before 1.0 a new minor version may break hosts (the SONAME stays 0), so a request for
# 0.1 accepts 0.1.x only; from 1.0 on, any later version of the same major one.
if(PROJECT_VERSION_MAJOR EQUAL 0)
  set(compatibility SameMinorVersion)
else()
  set(compatibility SameMajorVersion)
endif()
write_basic_package_version_file(${PROJECT_BINARY_DIR}/packaging/matgraphConfigVersion.cmake
  COMPATIBILITY ${compatibility})
install(FILES ${PROJECT_BINARY_DIR}/packaging/matgraphConfig.cmake
              ${PROJECT_BINARY_DIR}/packaging/matgraphConfigVersion.cmake
        DESTINATION ${MATGRAPH_PACKAGE_DIR})

# matgraph.pc names absolute directories, so it is written when installing, once the
# prefix is known: `cmake --install --prefix DIR` may install somewhere else than the
# prefix the build was configured with.
foreach(kind LIBDIR INCLUDEDIR)
  if(IS_ABSOLUTE "${CMAKE_INSTALL_${kind}}")
    set(pkgConfig${kind} "${CMAKE_INSTALL_${kind}}")
  else()
    set(pkgConfig${kind} "\${prefix}/${CMAKE_INSTALL_${kind}}")
  endif()
endforeach()
set(pkgConfigFile ${PROJECT_BINARY_DIR}/packaging/matgraph.pc)
install(CODE "
  set(MATGRAPH_PC_PREFIX \"\${CMAKE_INSTALL_PREFIX}\")
  set(MATGRAPH_PC_LIBDIR [[${pkgConfigLIBDIR}]])
  set(MATGRAPH_PC_INCLUDEDIR [[${pkgConfigINCLUDEDIR}]])
  set(PROJECT_DESCRIPTION [[${PROJECT_DESCRIPTION}]])
  set(PROJECT_VERSION [[${PROJECT_VERSION}]])
  configure_file([[${PROJECT_SOURCE_DIR}/cmake/matgraph.pc.in]] [[${pkgConfigFile}]] @ONLY)
")
install(FILES ${pkgConfigFile} DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
