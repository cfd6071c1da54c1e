# libklov as a shared and a static library.

add_library(klov SHARED $<TARGET_OBJECTS:klov_objects>)
# A program may have functions of its own called cpystr or format_error: the library's calls stay inside it.
target_link_options(klov PRIVATE -Wl,-Bsymbolic-functions)
add_library(klov::klov ALIAS klov)
target_include_directories(klov PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:include>)
set_target_properties(klov PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} LINKER_LANGUAGE CXX)

add_library(klov_static STATIC $<TARGET_OBJECTS:klov_objects>)
target_include_directories(klov_static PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:include>)
set_target_properties(klov_static PROPERTIES OUTPUT_NAME klov LINKER_LANGUAGE CXX)
