# The objects compiled for AVX2 must not define anything that the linker could take in place of the same
# function of another object, or a processor without AVX2 would run it.
#   NM       the program nm
#   OBJECTS  the library's object files
list(FILTER OBJECTS INCLUDE REGEX "_avx2")
list(LENGTH OBJECTS count)
if(count EQUAL 0)
  message(FATAL_ERROR "found no object for AVX2")
endif()
execute_process(COMMAND ${NM} --defined-only ${OBJECTS} OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)

# Lower case letters are local symbols, except for weak (v, w) and unique (u) ones.
string(REGEX MATCHALL "[^\n]* [A-Zuvw] [^\n]*" shared "${symbols}")
list(FILTER shared EXCLUDE REGEX "kAvx2Kernels|hal_weld_avx2|DW.ref.__gxx_personality_v0")
list(FILTER shared EXCLUDE REGEX " _ZT[IS]") # descriptions of types, which are no code
if(shared)
  message(FATAL_ERROR "symbols that other objects may share: ${shared}")
endif()
