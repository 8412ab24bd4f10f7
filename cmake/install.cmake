# What `cmake --install` puts in place, as two components. `runtime`: the programs, and what those who
# use them read. `development`: the library that editors in C++ link, for find_package(zorvik).
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS zorvik_mcp zorvik_editor_check zorvik_sample_editor
  DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
install(FILES docs/bridge.md docs/clients.md DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs COMPONENT runtime)
install(FILES docs/world_editor/MCP.md
  DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs/world_editor COMPONENT runtime)
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT runtime
  USE_SOURCE_PERMISSIONS PATTERN __pycache__ EXCLUDE)

# What an editor needs, and what these include.
set(public_headers
  authoring/catalog.h
  authoring/protocols.h
  authoring/validate.h
  core/editor_registry.h
  core/file_write.h
  core/json.h
  core/json/memory.h
  core/local_pipe/client.h
  core/local_pipe/lines.h
  core/local_pipe/server.h
  core/platform/wait.h
  core/process.h
  core/win32.h)
# An editor may well have a `core/json.h` of its own, so ours are included as `zorvik/core/json.h`
# there, by each other too.
foreach(header ${public_headers})
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${header})
  file(READ ${header} text)
  string(REPLACE "#include \"" "#include \"zorvik/" text "${text}")
  file(WRITE ${CMAKE_BINARY_DIR}/include/zorvik/${header} "${text}")
endforeach()
install(DIRECTORY ${CMAKE_BINARY_DIR}/include/zorvik DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  COMPONENT development)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/zorvik)
install(TARGETS zorvik_core zorvik_authoring EXPORT zorvik
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT zorvik NAMESPACE zorvik:: FILE zorvik-config.cmake DESTINATION ${package_dir}
  COMPONENT development)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/zorvik-config-version.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/zorvik-config-version.cmake DESTINATION ${package_dir}
  COMPONENT development)
