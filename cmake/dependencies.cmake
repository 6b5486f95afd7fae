# What only the command and the tests need, as Debian packages it. A cross build
# takes the headers and sources of the building machine: a package's own
# configuration would put all of /usr/include before the target's headers.
function(ksv_header_only_package target directory)
  find_path(include_directory NAMES ${directory} PATHS /usr/include NO_CACHE REQUIRED
            NO_CMAKE_FIND_ROOT_PATH)
  set(staged ${PROJECT_BINARY_DIR}/host_headers)
  file(MAKE_DIRECTORY ${staged})
  file(CREATE_LINK ${include_directory}/${directory} ${staged}/${directory} SYMBOLIC)
  add_library(${target} INTERFACE IMPORTED GLOBAL)
  target_include_directories(${target} SYSTEM INTERFACE ${staged})
endfunction()

if(KSV_BUILD_COMMAND AND CMAKE_CROSSCOMPILING)
  ksv_header_only_package(CLI11::CLI11 CLI)
  ksv_header_only_package(nlohmann_json::nlohmann_json nlohmann)
elseif(KSV_BUILD_COMMAND)
  find_package(CLI11 REQUIRED)
  find_package(nlohmann_json REQUIRED)
endif()

if(KSV_BUILD_TESTS AND CMAKE_CROSSCOMPILING)
  set(INSTALL_GTEST OFF)
  set(BUILD_GMOCK OFF)
  set(BUILD_SHARED_LIBS OFF)
  add_subdirectory(/usr/src/googletest ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
  # Its headers are the system's: what compilers say of them is not about us.
  get_target_property(headers gtest INTERFACE_INCLUDE_DIRECTORIES)
  set_target_properties(gtest gtest_main PROPERTIES
                        INTERFACE_SYSTEM_INCLUDE_DIRECTORIES "${headers}")
elseif(KSV_BUILD_TESTS)
  find_package(GTest REQUIRED)
endif()

# What takes mails apart, for the module of that job. Debian has it for no other machine than the
# building one.
set(has_mail OFF)
if(KSV_BUILD_COMMAND AND NOT WIN32 AND NOT CMAKE_CROSSCOMPILING)
  find_package(PkgConfig QUIET)
  if(PKG_CONFIG_FOUND)
    pkg_check_modules(KSV_GMIME QUIET IMPORTED_TARGET gmime-3.0>=3.2)
    set(has_mail ${KSV_GMIME_FOUND})
  endif()
endif()
option(KSV_BUILD_MAIL "Build the module that reads mails (needs GMime 3)" ${has_mail})
if(KSV_BUILD_MAIL AND NOT has_mail)
  message(FATAL_ERROR "GMime 3 is not found, which reads mails: install its headers and pkg-config "
          "(Debian: libgmime-3.0-dev pkg-config), or build without it (-DKSV_BUILD_MAIL=OFF)")
endif()

# Normalization is the system's own on Windows, and utf8proc's elsewhere. For another Linux machine its
# archive is linked in, which Debian installs beside that of the building machine; without one, texts
# are not normalized there.
add_library(ksv_normalization_library INTERFACE)
set(KSV_NORMALIZATION ON)
if(WIN32)
  target_link_libraries(ksv_normalization_library INTERFACE normaliz)
elseif(KSV_BUILD_KIT)
  if(CMAKE_CROSSCOMPILING)
    find_library(KSV_UTF8PROC libutf8proc.a PATHS /usr/lib/${KSV_MACHINE}-linux-gnu
                 NO_CMAKE_FIND_ROOT_PATH)
    ksv_header_only_package(ksv_utf8proc_headers utf8proc.h)
    target_link_libraries(ksv_normalization_library INTERFACE ksv_utf8proc_headers)
  else()
    find_library(KSV_UTF8PROC utf8proc)
    find_library(KSV_UTF8PROC_ARCHIVE libutf8proc.a)
    find_path(KSV_UTF8PROC_HEADERS utf8proc.h)
    target_include_directories(ksv_normalization_library SYSTEM INTERFACE ${KSV_UTF8PROC_HEADERS})
  endif()
  if(KSV_UTF8PROC)
    target_link_libraries(ksv_normalization_library INTERFACE ${KSV_UTF8PROC})
  elseif(CMAKE_CROSSCOMPILING)
    message(STATUS "No utf8proc for the target: texts are not normalized there")
    set(KSV_NORMALIZATION OFF)
  else()
    message(FATAL_ERROR "utf8proc is not found, which normalizes text: install its headers and "
            "library (Debian: libutf8proc-dev), or build without libksv (-DKSV_BUILD_KIT=OFF)")
  endif()
endif()

# For programs that are done in a millisecond, an eighth of which one more shared library takes.
add_library(ksv_normalization_archive INTERFACE)
if(KSV_UTF8PROC_ARCHIVE)
  target_link_libraries(ksv_normalization_archive INTERFACE ${KSV_UTF8PROC_ARCHIVE})
else()
  target_link_libraries(ksv_normalization_archive INTERFACE ksv_normalization_library)
endif()
