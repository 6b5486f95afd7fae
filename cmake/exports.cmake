# Reads include/exports.list, the one list of what the library exports, and
# writes the linker's version script from it.
set(KSV_EXPORT_LIST ${PROJECT_SOURCE_DIR}/include/exports.list)
set(KSV_VERSION_SCRIPT ${PROJECT_BINARY_DIR}/ksv_comm.map)
set_property(DIRECTORY ${PROJECT_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
             ${KSV_EXPORT_LIST})

file(STRINGS ${KSV_EXPORT_LIST} lines REGEX "^[0-9]+ ")
set(script "{\n  global:\n")
foreach(line IN LISTS lines)
  string(REGEX REPLACE "^[0-9]+ +" "" name "${line}")
  string(APPEND script "    ${name};\n")
endforeach()
string(APPEND script "  local:\n    *;\n};\n")
file(CONFIGURE OUTPUT ${KSV_VERSION_SCRIPT} CONTENT "${script}" @ONLY)
