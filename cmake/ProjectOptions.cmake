# Options, language level, optimisation and warnings of every target in the project.
include(GNUInstallDirs)

option(ZELWELD_BUILD_TOOLS "Build the programs zelweld and zelweld_demo" ${PROJECT_IS_TOP_LEVEL})
option(ZELWELD_BUILD_TESTS "Build the tests" ${PROJECT_IS_TOP_LEVEL})
option(ZELWELD_BUILD_EXAMPLES "Build the examples" ${PROJECT_IS_TOP_LEVEL})
option(ZELWELD_BUILD_BENCHMARKS "Build the benchmarks" ${PROJECT_IS_TOP_LEVEL})
option(ZELWELD_BUILD_PYTHON "Build the Python module zelweld" OFF)
option(ZELWELD_WERROR "Turn warnings into errors" OFF)
option(ZELWELD_SANITIZE "Build with the address and undefined-behaviour sanitizers" OFF)
option(ZELWELD_SANITIZE_THREAD "Build with the thread sanitizer" OFF)
option(ZELWELD_BUILD_FUZZERS "Build the fuzz targets (clang; best with ZELWELD_SANITIZE)" OFF)
option(ZELWELD_COVERAGE "Count which lines run" OFF)
option(ZELWELD_PRECOMPILE "Read the large headers once a target: sooner built, but a missing include goes unseen" OFF)

# zelweld_precompile(TARGET HEADER...)
function(zelweld_precompile target)
  if(ZELWELD_PRECOMPILE)
    target_precompile_headers(${target} PRIVATE ${ARGN})
  endif()
endfunction()

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_CXX_FLAGS_RELEASE "-O3 -DNDEBUG")

# Same input, same bits: no contraction into fused multiply-add, on any processor.
add_compile_options(-ffp-contract=off)

# Build paths stay out of the binaries.
add_compile_options(-ffile-prefix-map=${PROJECT_BINARY_DIR}=build -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.)
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)

# Hardened, as tests/checks/hardening.sh holds: stack canaries, checked C library calls where optimisation makes them
# possible, import tables read-only before the program starts, no executable stack, programs at random addresses.
add_compile_options(-fstack-protector-strong)
if(NOT ZELWELD_SANITIZE AND NOT ZELWELD_SANITIZE_THREAD) # sanitizers watch the unchecked calls
  add_compile_options($<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE$<SEMICOLON>-D_FORTIFY_SOURCE=2>)
endif()
add_link_options(LINKER:-z,relro,-z,now,-z,noexecstack)
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion)
if(ZELWELD_WERROR)
  add_compile_options(-Werror)
endif()

if(ZELWELD_COVERAGE)
  # Barely optimised, so that every line is still there; counted across the threads of a test.
  add_compile_options(--coverage -O1 -fprofile-update=atomic)
  add_link_options(--coverage)
endif()

if(ZELWELD_SANITIZE)
  # float-cast-overflow is not part of "undefined": a NaN or huge value cast to an integer.
  set(sanitizers -fsanitize=address,undefined,float-cast-overflow)
  add_compile_options(${sanitizers} -fno-sanitize-recover=all -fno-omit-frame-pointer -O1 -g1)
  add_compile_definitions(_GLIBCXX_ASSERTIONS)
  # With sanitizers g++ 12 takes std::regex for uninitialised; the build without them keeps this warning.
  add_compile_options($<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  add_link_options(${sanitizers})
endif()
if(ZELWELD_SANITIZE_THREAD)
  add_compile_options(-fsanitize=thread -fno-omit-frame-pointer -O2 -g1)
  add_link_options(-fsanitize=thread)
endif()

if(ZELWELD_BUILD_FUZZERS)
  add_compile_options(-fsanitize=fuzzer-no-link)
  add_link_options(-fsanitize=fuzzer-no-link)
endif()
