# How every module, test, fuzz target and benchmark of Kelvox is built.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release)
endif()

find_program(KELVOX_CCACHE ccache)
if(KELVOX_CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${KELVOX_CCACHE})
endif()

# What all our own code is compiled with.
add_library(kelvox_options INTERFACE)
target_compile_options(kelvox_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # GCC 12 invents overlapping copies in std::string operator+ and uninitialised members in moved
  # variants when it optimises; clang, which builds the tidy preset, has no such doubts.
  target_compile_options(kelvox_options INTERFACE -Wno-restrict -Wno-maybe-uninitialized)
endif()
if(KELVOX_SANITIZE)
  list(JOIN KELVOX_SANITIZE "," kelvox_sanitize_list)
  target_compile_options(kelvox_options INTERFACE
    -fsanitize=${kelvox_sanitize_list} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(kelvox_options INTERFACE -fsanitize=${kelvox_sanitize_list})
endif()
if(KELVOX_FUZZ)
  target_compile_options(kelvox_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

# kelvox_add_module(<name> SOURCES ... HEADERS ... [PUBLIC ...] [PRIVATE ...])
# One library per folder of src/: kelvox::<name>. Headers are included as "<name>/<Header>.h";
# each is also compiled alone by the target all_verify_interface_header_sets.
function(kelvox_add_module name)
  cmake_parse_arguments(arg "" "" "SOURCES;HEADERS;PUBLIC;PRIVATE" ${ARGN})
  set(target kelvox_${name})
  if(arg_SOURCES)
    add_library(${target} STATIC ${arg_SOURCES})
    set(scope PUBLIC)
  else()
    add_library(${target} INTERFACE)
    set(scope INTERFACE)
  endif()
  add_library(kelvox::${name} ALIAS ${target})
  target_sources(${target} PUBLIC FILE_SET HEADERS
    BASE_DIRS ${PROJECT_SOURCE_DIR}/src FILES ${arg_HEADERS})
  set_target_properties(${target} PROPERTIES VERIFY_INTERFACE_HEADER_SETS ON)
  target_include_directories(${target} ${scope} ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(${target} ${scope} ${arg_PUBLIC})
  if(arg_SOURCES)
    target_link_libraries(${target} PRIVATE ${arg_PRIVATE} $<BUILD_INTERFACE:kelvox_options>)
  endif()
endfunction()

# kelvox_add_test(<module> SOURCES ... LINKS ...): the program test_<module>, its cases known to ctest.
# KELVOX_DATA in the environment names a folder of real files; cases that want it skip without.
function(kelvox_add_test module)
  if(NOT KELVOX_BUILD_TESTS)
    return()
  endif()
  cmake_parse_arguments(arg "" "" "SOURCES;LINKS" ${ARGN})
  find_package(GTest REQUIRED)
  include(GoogleTest)
  set(target test_${module})
  add_executable(${target} ${arg_SOURCES})
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(${target} PRIVATE ${arg_LINKS} GTest::gtest GTest::gtest_main kelvox_options)
  gtest_discover_tests(${target} DISCOVERY_MODE PRE_TEST
    PROPERTIES TIMEOUT 300 ENVIRONMENT "QT_QPA_PLATFORM=offscreen")
endfunction()

# kelvox_add_fuzzer(<name> LINKS ...): built from fuzz/<name>.cpp, which defines
# LLVMFuzzerTestOneInput. With KELVOX_FUZZ a libFuzzer program; in every other build the same file
# with a small main that replays fuzz/corpus/<name>/ as an ordinary test, so that it never rots.
function(kelvox_add_fuzzer name)
  cmake_parse_arguments(arg "" "" "LINKS" ${ARGN})
  set(target fuzz_${name})
  if(KELVOX_FUZZ)
    add_executable(${target} ${PROJECT_SOURCE_DIR}/fuzz/${name}.cpp)
    target_link_options(${target} PRIVATE -fsanitize=fuzzer)
  elseif(KELVOX_BUILD_TESTS)
    add_executable(${target} ${PROJECT_SOURCE_DIR}/fuzz/${name}.cpp
      ${PROJECT_SOURCE_DIR}/fuzz/ReplayMain.cpp)
    add_test(NAME fuzz.${name} COMMAND ${target} ${PROJECT_SOURCE_DIR}/fuzz/corpus/${name})
    set_tests_properties(fuzz.${name} PROPERTIES TIMEOUT 300)
  else()
    return()
  endif()
  target_link_libraries(${target} PRIVATE ${arg_LINKS} kelvox_options)
endfunction()

# kelvox_add_bench(<module> SOURCES ... LINKS ...): the program bench_<module>, never run by ctest.
function(kelvox_add_bench module)
  find_package(benchmark QUIET)
  if(NOT KELVOX_BUILD_BENCH OR NOT benchmark_FOUND)
    return()
  endif()
  cmake_parse_arguments(arg "" "" "SOURCES;LINKS" ${ARGN})
  set(target bench_${module})
  add_executable(${target} ${arg_SOURCES})
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(${target} PRIVATE ${arg_LINKS} benchmark::benchmark kelvox_options)
endfunction()
