# kg_import_gate(<target>)
#
# The build of <target> fails when it imports what Windows 98 SE does not have.
function(kg_import_gate target)
  set(gate ${CMAKE_SOURCE_DIR}/scripts/import-gate)
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND ${CMAKE_COMMAND} -E env OBJDUMP=${CMAKE_OBJDUMP} ${gate} $<TARGET_FILE:${target}>
    COMMENT "Checking what ${target} imports" VERBATIM)
  # Linked anew, and so looked at anew, when the lists change.
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS
    ${gate} ${CMAKE_SOURCE_DIR}/cmake/imports-allowed.txt ${CMAKE_SOURCE_DIR}/cmake/imports-harmless.txt)
endfunction()
