# The programs that measurements need beside the filter: the floor, the empty program and the launcher. The benchmarks
# and the guard among the tests share them.
include_guard(GLOBAL)

add_executable(bench_floor ${PROJECT_SOURCE_DIR}/bench/floor.cpp)
klov_compile_options(bench_floor)
target_compile_options(bench_floor PRIVATE -Wno-deprecated-declarations)
target_include_directories(bench_floor PRIVATE ${CUPS_INCLUDE_DIRS})
target_link_libraries(bench_floor PRIVATE ${CUPS_LIBRARIES})

add_executable(bench_empty ${PROJECT_SOURCE_DIR}/bench/empty.c)
klov_tool_options(bench_empty)
# It calls nothing of libcups and loads it all the same.
target_link_options(bench_empty PRIVATE -Wl,--no-as-needed)
target_link_libraries(bench_empty PRIVATE ${CUPS_LIBRARIES})

add_executable(bench_measure ${PROJECT_SOURCE_DIR}/bench/measure.c)
klov_tool_options(bench_measure)
target_compile_definitions(bench_measure PRIVATE _GNU_SOURCE)

set_target_properties(bench_floor bench_empty bench_measure PROPERTIES
  RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bench POSITION_INDEPENDENT_CODE ON)
