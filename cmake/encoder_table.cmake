# klov_encoder_table(FILE): writes ROW(name) for every command encoder that the public headers declare, for tests that
# leave none out.
function(klov_encoder_table file)
  set(table)
  foreach(family printing layout graphics status barcode card control)
    file(READ ${PROJECT_SOURCE_DIR}/include/klov/${family}.h header)
    string(REPLACE ";" "@" header "${header}")
    string(REGEX MATCHALL
      "KLOV_API int32_t klov_cmd_[A-Za-z0-9_]+\\([^@]*uint32_t cap,[ \n]*uint32_t \\*len\\)" declarations "${header}")
    foreach(declaration ${declarations})
      string(REGEX MATCH "klov_cmd_[A-Za-z0-9_]+" name "${declaration}")
      string(APPEND table "ROW(${name})\n")
    endforeach()
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/include/klov/${family}.h)
  endforeach()
  file(CONFIGURE OUTPUT ${file} CONTENT "${table}" @ONLY)
endfunction()
