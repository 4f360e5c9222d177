# Run by CPack on the files of all packages. The loader finds libraries below /usr by itself.
file(GLOB programs ${CPACK_TEMPORARY_DIRECTORY}/*/usr/bin/*)
foreach(program IN LISTS programs)
  file(RPATH_REMOVE FILE ${program})
endforeach()
