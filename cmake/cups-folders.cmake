# Where CUPS looks for filters, driver files and MIME files.

# CUPS reads one fixed place, whatever the prefix of the rest is; DESTDIR stages both.
find_program(KLOV_CUPS_CONFIG cups-config)
function(klov_cups_folder variable option fallback what)
  set(folder ${fallback})
  if(KLOV_CUPS_CONFIG)
    execute_process(COMMAND ${KLOV_CUPS_CONFIG} ${option} OUTPUT_VARIABLE answer OUTPUT_STRIP_TRAILING_WHITESPACE
      RESULT_VARIABLE result)
    if(result EQUAL 0 AND answer)
      set(folder ${answer})
    endif()
  endif()
  set(${variable} ${folder} CACHE PATH "${what}")
endfunction()
klov_cups_folder(KLOV_CUPS_SERVERBIN --serverbin /usr/lib/cups "Folder of CUPS that holds filter/")
klov_cups_folder(KLOV_CUPS_DATADIR --datadir /usr/share/cups "Folder of CUPS that holds drv/")
