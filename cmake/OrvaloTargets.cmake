# One place for the language level, the warnings and the sanitizers of every target of ours.
add_library(orvalo_flags INTERFACE)
target_compile_features(orvalo_flags INTERFACE cxx_std_20)
target_include_directories(orvalo_flags INTERFACE ${PROJECT_SOURCE_DIR}/src)
target_compile_definitions(orvalo_flags INTERFACE QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII)
target_compile_options(orvalo_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor
                       -Woverloaded-virtual -Wimplicit-fallthrough -Wformat=2
                       # g++ 12 sees uninitialised members in empty optionals when it optimises.
                       $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>
                       $<$<BOOL:${ORVALO_WERROR}>:-Werror>)
if(ORVALO_SANITIZE)
  target_compile_options(orvalo_flags INTERFACE -fsanitize=${ORVALO_SANITIZE} -fno-omit-frame-pointer
                         -fno-sanitize-recover=all)
  target_link_options(orvalo_flags INTERFACE -fsanitize=${ORVALO_SANITIZE})
endif()

# What is installed resists what a fault in it would let in: full RELRO, checked library calls, stack protection, control-flow
# enforcement, an address of its own at each start.
if(CMAKE_BUILD_TYPE STREQUAL Release AND NOT ORVALO_SANITIZE)
  set(CMAKE_POSITION_INDEPENDENT_CODE ON)
  target_compile_options(orvalo_flags INTERFACE -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2 -fstack-protector-strong
                         -fstack-clash-protection $<$<STREQUAL:${CMAKE_SYSTEM_PROCESSOR},x86_64>:-fcf-protection>)
  target_link_options(orvalo_flags INTERFACE -Wl,-z,relro,-z,now)
  include(CheckPIESupported)
  check_pie_supported(LANGUAGES CXX)
endif()

set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)

find_program(CCACHE ccache)
if(CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
endif()

# orvalo_room(NAME SOURCES ... LINKS ... [PRIVATE_LINKS ...]): one folder of src/, one static library "orvalo_NAME".
function(orvalo_room name)
  cmake_parse_arguments(ROOM "" "" "SOURCES;LINKS;PRIVATE_LINKS" ${ARGN})
  add_library(orvalo_${name} STATIC ${ROOM_SOURCES})
  target_link_libraries(orvalo_${name} PUBLIC orvalo_flags ${ROOM_LINKS} PRIVATE ${ROOM_PRIVATE_LINKS})
endfunction()

# orvalo_test(NAME SOURCES ... LINKS ...): one GoogleTest program "NAME_test", its cases known to ctest one by one.
function(orvalo_test name)
  cmake_parse_arguments(TEST "" "TIMEOUT" "SOURCES;LINKS" ${ARGN})
  if(NOT TEST_TIMEOUT)
    set(TEST_TIMEOUT 120)
  endif()
  add_executable(${name}_test ${TEST_SOURCES})
  target_link_libraries(${name}_test PRIVATE orvalo_flags orvalo_test_support ${TEST_LINKS} GTest::gmock GTest::gtest_main)
  gtest_discover_tests(${name}_test DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT ${TEST_TIMEOUT})
endfunction()
