# Gives a Windows program the properties that the Explorer shows. Does nothing elsewhere.
function(zorvik_version_resource ZORVIK_TARGET ZORVIK_DESCRIPTION)
  if(WIN32)
    set(resource ${CMAKE_CURRENT_BINARY_DIR}/${ZORVIK_TARGET}.rc)
    configure_file(${CMAKE_SOURCE_DIR}/cmake/version.rc.in ${resource} @ONLY)
    target_sources(${ZORVIK_TARGET} PRIVATE ${resource})
  endif()
endfunction()
