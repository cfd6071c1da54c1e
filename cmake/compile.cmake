# One set of compiler and linker flags for every target of the project.

include(CheckPIESupported)
check_pie_supported()
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)

set(klov_warnings -Wall -Wextra -Wconversion -Wshadow)
if(KLOV_WERROR)
  list(APPEND klov_warnings -Werror)
endif()

# The same bytes from any build folder.
add_compile_options(-ffile-prefix-map=${PROJECT_SOURCE_DIR}=. -ffile-prefix-map=${PROJECT_BINARY_DIR}=./build)

if(KLOV_SANITIZE)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Instrumented code confuses g++'s search for uninitialized values.
    list(APPEND klov_warnings -Wno-maybe-uninitialized)
  endif()
  add_compile_options(-fsanitize=${KLOV_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${KLOV_SANITIZE})
else()
  add_compile_options(-fstack-protector-strong $<$<CONFIG:Release,RelWithDebInfo>:-D_FORTIFY_SOURCE=3>)
endif()
add_link_options(-Wl,-z,relro -Wl,-z,now -Wl,--as-needed)

# Product code: no exceptions, no RTTI, no libstdc++ at run time.
function(klov_compile_options target)
  target_compile_features(${target} PRIVATE cxx_std_20 c_std_11)
  # Traces and raster files beyond 2 GB on 32-bit machines too.
  target_compile_definitions(${target} PRIVATE _FILE_OFFSET_BITS=64)
  target_compile_options(${target} PRIVATE ${klov_warnings}
    $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti -fno-threadsafe-statics>)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS ON
    CXX_VISIBILITY_PRESET hidden C_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
endfunction()

# Tests, tools and benchmarks: ordinary C++20 with the same warnings.
function(klov_tool_options target)
  target_compile_features(${target} PRIVATE cxx_std_20 c_std_11)
  # g++ 12 sees overlapping copies inside std::string that are not there (its bug 105651).
  target_compile_options(${target} PRIVATE ${klov_warnings}
    $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-restrict>)
endfunction()
