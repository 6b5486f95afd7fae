# Reads include/exports.list, the one list of what the library exports, and
# writes from it what the linker takes: a version script, and for Windows a
# module definition with the ordinals.
set(KSV_EXPORT_LIST ${PROJECT_SOURCE_DIR}/include/exports.list)
set(KSV_VERSION_SCRIPT ${PROJECT_BINARY_DIR}/ksv_comm.map)
set(KSV_MODULE_DEFINITION ${PROJECT_BINARY_DIR}/ksv_comm.def)
set_property(DIRECTORY ${PROJECT_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
             ${KSV_EXPORT_LIST})

file(STRINGS ${KSV_EXPORT_LIST} lines REGEX "^[0-9]+ ")
set(script "{\n  global:\n")
set(definition "LIBRARY ksv_comm\nEXPORTS\n")
foreach(line IN LISTS lines)
  string(REGEX REPLACE "^([0-9]+) +(.*)$" "\\1;\\2" export "${line}")
  list(GET export 0 ordinal)
  list(GET export 1 name)
  string(APPEND script "    ${name};\n")
  string(APPEND definition "  ${name} @${ordinal}\n")
endforeach()
string(APPEND script "  local:\n    *;\n};\n")
file(CONFIGURE OUTPUT ${KSV_VERSION_SCRIPT} CONTENT "${script}" @ONLY)
file(CONFIGURE OUTPUT ${KSV_MODULE_DEFINITION} CONTENT "${definition}" @ONLY)
