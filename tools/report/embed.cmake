# Turns text files into a C++ source that holds them: cmake -DOUTPUT=... -DFILES=name=path;name=path... -P embed.cmake
# Each one becomes `const std::string_view name` in namespace tool::asset; several files of one name are joined.
set(names)
foreach(entry IN LISTS FILES)
  string(REGEX MATCH "^([^=]+)=(.+)$" matched "${entry}")
  set(name ${CMAKE_MATCH_1})
  file(READ "${CMAKE_MATCH_2}" text)
  # A page of its own has no file that maps a minified script to its source.
  string(REGEX REPLACE "\n//# sourceMappingURL=[^\n]*" "" text "${text}")
  string(APPEND text_of_${name} "${text}")
  list(APPEND names ${name})
endforeach()
list(REMOVE_DUPLICATES names)

set(source "#include \"tools/report_assets.h\"\n\nnamespace tool::asset {\n")
foreach(name IN LISTS names)
  string(APPEND source "\nconst std::string_view ${name} = R\"asset(${text_of_${name}})asset\";\n")
endforeach()
file(WRITE "${OUTPUT}" "${source}\n}  // namespace tool::asset\n")
