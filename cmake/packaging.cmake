# Archives by CPack: what programs need, and what the packed charset file was made of in an archive
# of its own. With SOURCE_DATE_EPOCH set, the same bytes come of the same files.
set(CPACK_PACKAGE_NAME ksv_comm)
set(CPACK_PACKAGE_VENDOR "The ksv_comm developers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")

if(WIN32)
  set(CPACK_GENERATOR ZIP)
  set(suffix zip)
else()
  set(CPACK_GENERATOR TGZ)
  set(suffix tar.gz)
endif()
string(TOLOWER ${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR} system)
set(CPACK_PACKAGE_FILE_NAME ksv_comm-${PROJECT_VERSION}-${system})
set(KSV_ARCHIVE ${CPACK_PACKAGE_FILE_NAME}.${suffix})
set(CPACK_STRIP_FILES ON)
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_SOURCE_DIR}/cmake/archive_time.cmake)
# Whatever the mask of who builds.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
set(CPACK_COMPONENT_INCLUDE_TOPLEVEL_DIRECTORY ON)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_COMPONENTS_ALL runtime development command data licences texts)
if(KSV_BUILD_MAIL)
  list(APPEND CPACK_COMPONENTS_ALL mail)
endif()
foreach(component IN ITEMS RUNTIME DEVELOPMENT COMMAND MAIL DATA LICENCES)
  set(CPACK_COMPONENT_${component}_GROUP main)
endforeach()
set(CPACK_COMPONENT_TEXTS_GROUP texts)
set(CPACK_ARCHIVE_MAIN_FILE_NAME ${CPACK_PACKAGE_FILE_NAME})
set(CPACK_ARCHIVE_TEXTS_FILE_NAME ksv_comm-${PROJECT_VERSION}-texts)

include(CPack)
