# klov_filter_test(NAME SOURCES...): one GoogleTest program against the filter's own objects (all but its entry) and the
# library's, with the kit for everything that prints.
include_guard(GLOBAL)

add_library(printing_kit OBJECT ${CMAKE_CURRENT_LIST_DIR}/kit.cpp ${CMAKE_CURRENT_LIST_DIR}/reference.cpp)
klov_tool_options(printing_kit)
target_include_directories(printing_kit PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include ${CUPS_INCLUDE_DIRS})

function(klov_filter_test name)
  add_executable(${name} ${ARGN})
  klov_tool_options(${name})
  # CUPS marks PPDs and the first page header as things of the past.
  target_compile_options(${name} PRIVATE -Wno-deprecated-declarations)
  target_link_libraries(${name} PRIVATE printing_kit filter_objects klov_objects ${CUPS_LIBRARIES}
    bounded_output GTest::gtest GTest::gtest_main)
  target_link_options(${name} PRIVATE -Wl,--wrap=write)
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60)
endfunction()
