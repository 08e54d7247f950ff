# Run by cpack between installing and packing: what Debian wants compressed is, and what the build
# of messages leaves behind in Python's folders is not packed.
file(GLOB_RECURSE entries LIST_DIRECTORIES true ${CPACK_TEMPORARY_DIRECTORY}/*)
foreach(entry IN LISTS entries)
  if(entry MATCHES "/changelog.Debian$|/man/man1/[^/]*[.]1$")
    execute_process(COMMAND gzip --best --no-name ${entry} RESULT_VARIABLE status)
    if(NOT status EQUAL 0)
      message(FATAL_ERROR "cannot compress ${entry}")
    endif()
  elseif(entry MATCHES "/__pycache__$")
    file(REMOVE_RECURSE ${entry})
  endif()
endforeach()
