# What tests and fuzz targets share: their side of the operating system, slow readings of what
# the library does fast, and writers of files. None of it needs GoogleTest. All of it runs long,
# so that it is optimised even where tests are not.
include_guard(GLOBAL)

function(ksv_add_model name)
  list(TRANSFORM ARGN PREPEND ${PROJECT_SOURCE_DIR}/tests/)
  add_library(${name} STATIC EXCLUDE_FROM_ALL ${ARGN})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
  target_link_libraries(${name} PRIVATE ksv_options)
  # GCC 12 sees overlapping copies in "literal" + std::string, where there are none.
  target_compile_options(${name} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
endfunction()

ksv_add_model(ksv_test_platform system/system.cpp system/system_${KSV_PLATFORM}.cpp)
ksv_add_model(ksv_document_writers ole/compound_writer.cpp ole/property_set_writer.cpp)
ksv_add_model(ksv_document_reader ole/reference_reader.cpp)
ksv_add_model(ksv_slow_common common/slow_cutting.cpp common/slow_log_format.cpp)
ksv_add_model(ksv_slow_detection detect/ranges.cpp detect/slow_check.cpp detect/slow_detection.cpp
              detect/slow_scorers.cpp)
