# The tests of a GoogleTest program as tests of ctest: shares of them, each run in as few
# processes as can be, since starting one takes longer than most tests.
find_package(Python3 3.10 REQUIRED COMPONENTS Interpreter)

set(KSV_RUN_SHARE ${CMAKE_CURRENT_LIST_DIR}/../scripts/testing/run_share.py)
set(KSV_OWN_PROCESS ${CMAKE_CURRENT_LIST_DIR}/own_process.txt)

# What a test may take, in seconds: more where it is emulated or its branches are counted.
if(KSV_COVERAGE OR (CMAKE_CROSSCOMPILING AND NOT WIN32))
  set(KSV_TEST_SECONDS 900)
else()
  set(KSV_TEST_SECONDS 300)
endif()

# ksv_add_shares(program [SHARES count] [SERIAL filter] [COST seconds] [LABEL label])
# SHARES says over how many tests of ctest the tests are dealt out. Those that SERIAL names run
# while no other test does. Of programs that run side by side those of the highest COST start first.
function(ksv_add_shares program)
  cmake_parse_arguments(PARSE_ARGV 1 option "" "SHARES;SERIAL;COST;LABEL" "")
  if(NOT option_SHARES)
    set(option_SHARES 1)
  endif()
  if(NOT option_COST)
    set(option_COST 0)
  endif()
  set(properties TIMEOUT 3600 COST ${option_COST})
  if(option_LABEL)
    list(APPEND properties LABELS ${option_LABEL})
  endif()
  set(others *)
  if(option_SERIAL)
    set(others -${option_SERIAL})
    ksv_add_share(${program} ${program}.alone 1/1 ${option_SERIAL})
    set_tests_properties(${program}.alone PROPERTIES ${properties} RUN_SERIAL TRUE)
  endif()
  foreach(number RANGE 1 ${option_SHARES})
    set(name ${program}.${number}_of_${option_SHARES})
    ksv_add_share(${program} ${name} ${number}/${option_SHARES} ${others})
    set_tests_properties(${name} PROPERTIES ${properties})
  endforeach()
endfunction()

function(ksv_add_share program name share filter)
  add_test(NAME ${name}
           COMMAND ${Python3_EXECUTABLE} -B ${KSV_RUN_SHARE} --share ${share} --only=${filter}
                   --own-process ${KSV_OWN_PROCESS} --seconds ${KSV_TEST_SECONDS}
                   --results ${PROJECT_BINARY_DIR}/test_results/${name}.json
                   -- ${CMAKE_CROSSCOMPILING_EMULATOR} $<TARGET_FILE:${program}>)
endfunction()
