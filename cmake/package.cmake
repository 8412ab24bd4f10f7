# The target `package`: one archive that a user unpacks anywhere. What is linked into the programs
# from the compiler's runtime comes with its licence.
install(TARGETS zorvik_mcp zorvik_editor_check zorvik_sample_editor DESTINATION .)
install(FILES README.md DESTINATION .)
install(FILES docs/bridge.md DESTINATION docs)
install(FILES docs/world_editor/MCP.md DESTINATION docs/world_editor)

if(WIN32)
  set(runtime_packages gcc-mingw-w64-base mingw-w64-common)
  set(CPACK_GENERATOR ZIP)
else()
  set(runtime_packages gcc-12-base libc6)
  set(CPACK_GENERATOR TGZ)
endif()
foreach(package ${runtime_packages})
  install(FILES /usr/share/doc/${package}/copyright DESTINATION licenses
    RENAME ${package}.txt OPTIONAL)
endforeach()

string(TOLOWER ${CMAKE_SYSTEM_NAME} system)
set(CPACK_PACKAGE_FILE_NAME zorvik_mcp-${PROJECT_VERSION}-${system}-x86_64)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
include(CPack)
