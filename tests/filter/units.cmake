# The unit programs of the filter's room and of the scheduler's messages. One source a line.
include(${PROJECT_SOURCE_DIR}/tests/printops/filter_test.cmake)

klov_filter_test(filter_unit_tests
  ${CMAKE_CURRENT_LIST_DIR}/document_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/foreign_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/header_dump_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/messages_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/number_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/option_dump_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/options_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/page_size_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/page_stream.cpp
  ${CMAKE_CURRENT_LIST_DIR}/page_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ppd_text.cpp
  ${CMAKE_CURRENT_LIST_DIR}/raster_input_test.cpp
)

# Blocks of memory are counted here, and made to run out.
klov_filter_test(filter_memory_tests
  ${CMAKE_CURRENT_LIST_DIR}/device_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/page_memory_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/page_stream.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ppd_text.cpp
  ${CMAKE_CURRENT_LIST_DIR}/wrapped_memory.cpp
)
target_link_options(filter_memory_tests PRIVATE -Wl,--wrap=calloc -Wl,--wrap=free)
