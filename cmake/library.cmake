# ksv_comm: the exported library, and the same objects as a static archive for
# tests, benchmarks and fuzzers that look inside.
include(cmake/exports.cmake)

find_package(Threads REQUIRED)
set(KSV_OBJECTS $<TARGET_OBJECTS:ksv_common> $<TARGET_OBJECTS:ksv_cconv>
    $<TARGET_OBJECTS:ksv_detect> $<TARGET_OBJECTS:ksv_ole_reader> $<TARGET_OBJECTS:ksv_ole>)

add_library(ksv_comm SHARED ${KSV_OBJECTS})
target_include_directories(ksv_comm PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
                           $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/ksv_comm>)
target_link_libraries(ksv_comm PRIVATE ksv_options Threads::Threads ${CMAKE_DL_LIBS})
if(WIN32)
  set_target_properties(ksv_comm PROPERTIES PREFIX "")
  target_sources(ksv_comm PRIVATE ${KSV_MODULE_DEFINITION})
else()
  set_target_properties(ksv_comm PROPERTIES VERSION ${KSV_ABI_VERSION}.${PROJECT_VERSION}
                        SOVERSION ${KSV_ABI_VERSION} LINK_DEPENDS ${KSV_VERSION_SCRIPT})
  target_link_options(ksv_comm PRIVATE -Wl,--version-script=${KSV_VERSION_SCRIPT}
                      -Wl,--no-undefined)
endif()

add_library(ksv_internal STATIC EXCLUDE_FROM_ALL ${KSV_OBJECTS})
target_include_directories(ksv_internal PUBLIC ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR})
target_link_libraries(ksv_internal PUBLIC ksv_options Threads::Threads ${CMAKE_DL_LIBS})

install(TARGETS ksv_comm LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ksv_comm
        FILES_MATCHING PATTERN "*.h")
