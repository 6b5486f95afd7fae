# The reference converter, and the test that holds the library against it.
ksv_add_test_program(differential_tests
  ${CMAKE_CURRENT_LIST_DIR}/differential_generate.cpp
  ${CMAKE_CURRENT_LIST_DIR}/differential_harness.cpp
  ${CMAKE_CURRENT_LIST_DIR}/differential_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/reference/composition.cpp
  ${CMAKE_CURRENT_LIST_DIR}/reference/converter_api.cpp
  ${CMAKE_CURRENT_LIST_DIR}/reference/decoders.cpp
  ${CMAKE_CURRENT_LIST_DIR}/reference/driver.cpp
  ${CMAKE_CURRENT_LIST_DIR}/reference/encoders.cpp
  ${CMAKE_CURRENT_LIST_DIR}/reference/euc_jp.cpp
  ${CMAKE_CURRENT_LIST_DIR}/reference/iso_2022_jp.cpp
  ${CMAKE_CURRENT_LIST_DIR}/reference/oasys.cpp
  ${CMAKE_CURRENT_LIST_DIR}/reference/pre_conversion.cpp
  ${CMAKE_CURRENT_LIST_DIR}/reference/rule_directory.cpp
  ${CMAKE_CURRENT_LIST_DIR}/reference/rules.cpp
  ${CMAKE_CURRENT_LIST_DIR}/reference/shift_jis_codes.cpp
  ${CMAKE_CURRENT_LIST_DIR}/reference/unicode_encoders.cpp)
target_include_directories(differential_tests PRIVATE ${CMAKE_CURRENT_LIST_DIR})
target_compile_definitions(differential_tests
  PRIVATE KSV_TEST_CHARSET_DIRECTORY="${KSV_TEST_CHARSET_DIRECTORY}")
add_dependencies(differential_tests ksv_charset)
ksv_add_shares(differential_tests SHARES 4 COST 100)

# All of it runs long.
get_target_property(sources differential_tests SOURCES)
ksv_optimise(${sources})
