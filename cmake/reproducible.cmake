# A release build of the same sources by the same compiler is the same files, wherever and whenever
# it is made: neither the paths of the trees nor the time get into it.
foreach(tree IN ITEMS ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR})
  target_compile_options(ksv_options INTERFACE $<$<CONFIG:Release>:-ffile-prefix-map=${tree}/=>)
endforeach()
if(WIN32)
  target_link_options(ksv_options INTERFACE -Wl,--no-insert-timestamp)
endif()
# Where one of our libraries finds another while it is not installed: as seen from itself. The path of
# the tree would stay in what tells one build from another (the build ID), even where it is taken out on installing.
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
