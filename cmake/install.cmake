# What an installation consists of, in components: runtime, development, command and mail (cli/), data
# and texts (charsets/), and licences. All of it can be moved as a whole.
include(CMakePackageConfigHelpers)

set(KSV_PACKAGE_DIRECTORY ${CMAKE_INSTALL_LIBDIR}/cmake/ksv)
set(KSV_CHARSET_DESTINATION ${CMAKE_INSTALL_DATADIR}/ksv_comm/charset)

# Where an installed file's directory is, as seen from the prefix.
function(ksv_below_prefix variable directory)
  file(RELATIVE_PATH relative ${CMAKE_INSTALL_PREFIX} ${directory})
  set(${variable} ${relative} PARENT_SCOPE)
endfunction()

function(ksv_install_library target)
  install(TARGETS ${target} EXPORT ksv_shared
          RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
          LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime
                  NAMELINK_COMPONENT development
          ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
  if(KSV_BUILD_STATIC)
    install(TARGETS ${target}_static EXPORT ksv_static
            ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
  endif()
  ksv_install_pkgconfig(${target})
endfunction()

# The C++ libraries that a program in C has to name when it links the archive.
function(ksv_find_languages_libraries variable)
  set(libraries ${CMAKE_CXX_IMPLICIT_LINK_LIBRARIES})
  list(REMOVE_ITEM libraries ${CMAKE_C_IMPLICIT_LINK_LIBRARIES})
  list(REMOVE_DUPLICATES libraries)
  set(${variable} ${libraries} PARENT_SCOPE)
endfunction()

function(ksv_install_pkgconfig target)
  set(directory ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
  file(RELATIVE_PATH to_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
  string(REGEX REPLACE "/$" "" to_prefix "${to_prefix}")
  ksv_below_prefix(libraries ${CMAKE_INSTALL_FULL_LIBDIR})
  ksv_below_prefix(headers ${CMAKE_INSTALL_FULL_INCLUDEDIR}/ksv_comm)
  ksv_below_prefix(charsets ${CMAKE_INSTALL_FULL_DATADIR}/ksv_comm/charset)
  get_target_property(name ${target} OUTPUT_NAME)
  get_target_property(description ${target} KSV_DESCRIPTION)
  ksv_find_languages_libraries(private)
  get_target_property(requires ${target} KSV_STANDS_ON)
  get_target_property(needed ${target} KSV_LIBRARIES_OF_ARCHIVE)
  if(NOT requires)
    set(requires "")
  endif()
  if(needed)
    list(PREPEND private ${needed})
  endif()
  list(TRANSFORM private PREPEND -l)
  list(APPEND private ${CMAKE_THREAD_LIBS_INIT})
  foreach(library IN LISTS CMAKE_DL_LIBS)
    list(APPEND private -l${library})
  endforeach()
  list(JOIN private " " private)
  configure_file(cmake/library.pc.in ${PROJECT_BINARY_DIR}/${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${directory} COMPONENT development)
endfunction()

function(ksv_install_package)
  install(EXPORT ksv_shared NAMESPACE ksv:: FILE ksv-shared-targets.cmake
          DESTINATION ${KSV_PACKAGE_DIRECTORY} COMPONENT development)
  if(KSV_BUILD_STATIC)
    install(EXPORT ksv_static NAMESPACE ksv:: FILE ksv-static-targets.cmake
            DESTINATION ${KSV_PACKAGE_DIRECTORY} COMPONENT development)
  endif()
  ksv_find_languages_libraries(KSV_LANGUAGES_LIBRARIES)
  get_property(targets GLOBAL PROPERTY KSV_LIBRARIES)
  set(KSV_STATIC_TARGETS)
  foreach(target IN LISTS targets)
    get_target_property(name ${target} OUTPUT_NAME)
    list(APPEND KSV_STATIC_TARGETS ksv::${name}_static)
  endforeach()
  list(JOIN KSV_STATIC_TARGETS " " KSV_STATIC_TARGETS)
  list(JOIN KSV_LANGUAGES_LIBRARIES " " KSV_LANGUAGES_LIBRARIES)
  configure_package_config_file(cmake/ksv-config.cmake.in
                                ${PROJECT_BINARY_DIR}/cmake/ksv-config.cmake
                                INSTALL_DESTINATION ${KSV_PACKAGE_DIRECTORY}
                                PATH_VARS KSV_CHARSET_DESTINATION)
  write_basic_package_version_file(${PROJECT_BINARY_DIR}/cmake/ksv-config-version.cmake
                                   COMPATIBILITY SameMajorVersion)
  install(FILES ${PROJECT_BINARY_DIR}/cmake/ksv-config.cmake
                ${PROJECT_BINARY_DIR}/cmake/ksv-config-version.cmake
          DESTINATION ${KSV_PACKAGE_DIRECTORY} COMPONENT development)
endfunction()

get_property(libraries GLOBAL PROPERTY KSV_LIBRARIES)
foreach(library IN LISTS libraries)
  ksv_install_library(${library})
endforeach()
ksv_install_package()
install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ksv_comm COMPONENT development
        FILES_MATCHING PATTERN "*.h" PATTERN "*.hpp")
install(FILES LICENSE docs/licences.md docs/notices.txt
        DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT licences)
install(DIRECTORY LICENSES DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT licences)
