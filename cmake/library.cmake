# The libraries that others link.
include(cmake/exports.cmake)
find_package(Threads REQUIRED)

# ksv_add_library(name SOVERSION number EXPORTS list DESCRIPTION text OBJECTS object...
#                 [TARGET target] [ON library])
# Of these objects the shared library NAME, which exports what the list names and nothing else, and
# the archive of the same name: the targets TARGET and TARGET_static, TARGET being NAME unless
# a program has that name. Others know them as ksv::NAME and ksv::NAME_static, and get them by
# find_package, pkg-config and as a part of their own build alike. A library that stands ON
# another one calls what that exports, and has common/ in itself besides.
function(ksv_add_library name)
  cmake_parse_arguments(PARSE_ARGV 1 library "" "SOVERSION;EXPORTS;DESCRIPTION;TARGET;ON" "OBJECTS")
  if(NOT library_TARGET)
    set(library_TARGET ${name})
  endif()
  ksv_write_exports(${name} ${PROJECT_SOURCE_DIR}/${library_EXPORTS})
  ksv_add_shared_library(${library_TARGET} ${name} ${library_SOVERSION} ${library_OBJECTS})
  ksv_add_archive(${library_TARGET}_static ${name} ${library_OBJECTS})
  if(library_ON)
    ksv_stand_on(${library_TARGET} ${library_ON})
    set_target_properties(${library_TARGET} PROPERTIES KSV_STANDS_ON "${library_ON}")
  endif()
  set_property(GLOBAL APPEND PROPERTY KSV_LIBRARIES ${library_TARGET})
  set_target_properties(${library_TARGET} PROPERTIES KSV_DESCRIPTION "${library_DESCRIPTION}")
endfunction()

# The other library comes first, so that what it exports is taken from it. Installed side by side,
# they find each other wherever that is.
function(ksv_stand_on target other)
  if(NOT TARGET ksv_common_archive)
    add_library(ksv_common_archive STATIC EXCLUDE_FROM_ALL $<TARGET_OBJECTS:ksv_common>)
    target_link_libraries(ksv_common_archive PRIVATE Threads::Threads ${CMAKE_DL_LIBS})
  endif()
  target_link_libraries(${target} PRIVATE ${other} ksv_common_archive)
  target_link_libraries(${target}_static PUBLIC ${other}_static)
  if(NOT WIN32)
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN")
  endif()
endfunction()

function(ksv_add_shared_library target name soversion)
  set(exports ${PROJECT_BINARY_DIR}/${name})
  add_library(${target} SHARED ${ARGN})
  ksv_show_library(${target} ${name} ${name})
  # None of ours is needed for linking against it.
  target_link_libraries(${target} PRIVATE ksv_linked)
  if(WIN32)
    set_target_properties(${target} PROPERTIES PREFIX "")
    target_sources(${target} PRIVATE ${exports}.def)
  else()
    set_target_properties(${target} PROPERTIES VERSION ${soversion}.${PROJECT_VERSION}
                          SOVERSION ${soversion} LINK_DEPENDS ${exports}.map)
    target_link_options(${target} PRIVATE -Wl,--version-script=${exports}.map -Wl,--no-undefined)
  endif()
endfunction()

function(ksv_add_archive target name)
  add_library(${target} STATIC ${ARGN})
  ksv_show_library(${target} ${name} ${name}_static)
  if(NOT KSV_BUILD_STATIC)
    set_target_properties(${target} PROPERTIES EXCLUDE_FROM_ALL ON)
  endif()
endfunction()

# What those see who link it.
function(ksv_show_library target file name)
  add_library(ksv::${name} ALIAS ${target})
  set_target_properties(${target} PROPERTIES OUTPUT_NAME ${file} EXPORT_NAME ${name})
  target_include_directories(${target} PUBLIC
                             $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
                             $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/ksv_comm>)
  target_link_libraries(${target} PRIVATE Threads::Threads ${CMAKE_DL_LIBS})
endfunction()
