# ksv_write_exports(name list): reads the one list of what a library exports, and writes from it
# what the linker takes: a version script, NAME.map, and for Windows a module definition with
# the ordinals, NAME.def, both at the top of the build tree.
function(ksv_write_exports name list)
  set_property(DIRECTORY ${PROJECT_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${list})
  file(STRINGS ${list} lines REGEX "^[0-9]+ ")
  set(script "{\n  global:\n")
  set(definition "LIBRARY ${name}\nEXPORTS\n")
  foreach(line IN LISTS lines)
    string(REGEX REPLACE "^([0-9]+) +(.*)$" "\\1;\\2" export "${line}")
    list(GET export 0 ordinal)
    list(GET export 1 function)
    string(APPEND script "    ${function};\n")
    string(APPEND definition "  ${function} @${ordinal}\n")
  endforeach()
  string(APPEND script "  local:\n    *;\n};\n")
  file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/${name}.map CONTENT "${script}" @ONLY)
  file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/${name}.def CONTENT "${definition}" @ONLY)
endfunction()
