# What the command does when memory, a system call or the process itself fails: samples of the
# walks that scripts/walk_faults does whole. What the sanitizers need, tracing takes from them.
if(WIN32 OR KSV_SANITIZE)
  return()
endif()
find_package(Python3 3.11 REQUIRED COMPONENTS Interpreter)

add_library(failing_malloc MODULE ${CMAKE_CURRENT_LIST_DIR}/failing_malloc.c)
set_target_properties(failing_malloc PROPERTIES PREFIX "" C_VISIBILITY_PRESET default)

add_test(NAME faults.command
         COMMAND Python3::Interpreter -B ${CMAKE_CURRENT_LIST_DIR}/faults_test.py
                 $<TARGET_FILE:ksv> ${KSV_TEST_CHARSET_DIRECTORY} $<TARGET_FILE:failing_malloc>)
set_tests_properties(faults.command PROPERTIES SKIP_RETURN_CODE 77)

foreach(kind IN ITEMS calls heap memory kill)
  add_test(NAME faults.command.${kind}
           COMMAND Python3::Interpreter -B ${CMAKE_CURRENT_LIST_DIR}/walk.py
                   --command $<TARGET_FILE:ksv> --charset ${KSV_TEST_CHARSET_DIRECTORY}
                   --preload $<TARGET_FILE:failing_malloc>
                   --kind ${kind} --sample 1 --seed 1)
  set_tests_properties(faults.command.${kind} PROPERTIES SKIP_RETURN_CODE 77)
endforeach()
