# What every target of the project shares, and one function per sort of target.

add_library(halvern_options INTERFACE)
target_compile_features(halvern_options INTERFACE cxx_std_20)
target_include_directories(halvern_options INTERFACE ${PROJECT_SOURCE_DIR}/src)
# Results must not depend on the processor: a product and a sum are rounded one after the other.
target_compile_options(halvern_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wformat=2
  -Wno-missing-field-initializers -Wnon-virtual-dtor -Woverloaded-virtual -ffp-contract=off)
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  # Designated initialisers leave the rest at their defaults on purpose.
  target_compile_options(halvern_options INTERFACE -Wno-missing-designated-field-initializers
                         -Wno-unknown-warning-option)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # GCC 12 raises a false alarm inside std::string's operator+. Its pass that notes what functions
  # write loses stores: at -O1 a line header's interval, which it takes for overwritten. Without the
  # flag LineHeader.ListsADefinitionFiveSlotsALine fails at -O1.
  target_compile_options(halvern_options INTERFACE -Wno-restrict -fno-ipa-modref)
  if(HALVERN_PRECOMPILE)
    # More of them: what is precompiled no longer counts as the system's own.
    target_compile_options(halvern_options INTERFACE -Wno-array-bounds -Wno-stringop-overflow
                           -Wno-stringop-overread)
  endif()
endif()
if(HALVERN_WARNINGS_AS_ERRORS)
  target_compile_options(halvern_options INTERFACE -Werror)
endif()
if(WIN32)
  target_compile_definitions(halvern_options INTERFACE
    __USE_MINGW_ANSI_STDIO=1 NOMINMAX WIN32_LEAN_AND_MEAN _FILE_OFFSET_BITS=64)
else()
  target_compile_definitions(halvern_options INTERFACE _FILE_OFFSET_BITS=64)
endif()

# halvern_library(ROOM SOURCES file... USES room...)
# One room: the static library halvern_ROOM of the folder src/ROOM. USES names the rooms it may
# include; the architecture test holds every #include against it.
function(halvern_library room)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "SOURCES;USES")
  add_library(halvern_${room} STATIC ${ARG_SOURCES})
  target_link_libraries(halvern_${room} PUBLIC halvern_options)
  foreach(used IN LISTS ARG_USES)
    target_link_libraries(halvern_${room} PUBLIC halvern_${used})
  endforeach()
  if(HALVERN_PRECOMPILE AND room STREQUAL "platform")
    target_precompile_headers(halvern_platform PRIVATE <algorithm> <array> <cmath> <filesystem>
                              <functional> <memory> <optional> <span> <string> <vector>)
  elseif(HALVERN_PRECOMPILE AND NOT room STREQUAL "numerics")  # it has files with flags of their own
    target_precompile_headers(halvern_${room} REUSE_FROM halvern_platform)
  endif()
  string(REPLACE ";" " " uses "${ARG_USES}")
  set_property(GLOBAL APPEND PROPERTY HALVERN_ROOMS "${room}: ${uses}")
endfunction()

# halvern_test(ROOM SOURCES file... [LINKS target...])
# The tests of one room: tests/ROOM, one executable.
function(halvern_test room)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "SOURCES;LINKS")
  add_executable(${room}_test ${ARG_SOURCES})
  target_link_libraries(${room}_test PRIVATE halvern_test_support ${ARG_LINKS} GTest::gmock
                        GTest::gtest_main)
  # GoogleMock's headers are most of what a test compiles: parsed once for all of them.
  target_precompile_headers(${room}_test REUSE_FROM halvern_test_headers)
  gtest_discover_tests(${room}_test DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300)
endfunction()

# halvern_fuzz(NAME [USES room...]): fuzz/NAME.cpp, linked with libFuzzer.
function(halvern_fuzz name)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "USES")
  add_executable(fuzz_${name} ${name}.cpp)
  if(NOT TARGET fuzz_targets)
    add_custom_target(fuzz_targets)
  endif()
  add_dependencies(fuzz_targets fuzz_${name})
  target_link_options(fuzz_${name} PRIVATE -fsanitize=fuzzer)
  target_link_libraries(fuzz_${name} PRIVATE halvern_options)
  foreach(used IN LISTS ARG_USES)
    target_link_libraries(fuzz_${name} PRIVATE halvern_${used})
  endforeach()
endfunction()
