# The engine as a dynamic library, a host library that supplies class project, and a small
# host that loads the engine at run time.

# The C library's own printf knows neither %lf to the last digit nor exponents of two digits.
add_compile_definitions(__USE_MINGW_ANSI_STDIO=1)
add_compile_options(-Wno-attributes)
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  add_compile_options(-msse2 -mfpmath=sse -mstackrealign)
endif()
# No run-time library beside the operating system's.
add_link_options(-static -static-libgcc -static-libstdc++)

add_library(vornhost SHARED host/run/project.cpp host/input/angle.cpp host/input/number.cpp)
target_include_directories(vornhost PUBLIC ${CMAKE_CURRENT_SOURCE_DIR} include)
target_compile_definitions(vornhost PRIVATE VORN_HOST_EXPORT INTERFACE VORN_HOST_IMPORT)

add_library(vorn SHARED ${VORN_SOURCES})
target_include_directories(vorn PUBLIC include PRIVATE src)
target_compile_options(vorn PRIVATE -fno-exceptions)
target_compile_definitions(vorn PRIVATE VORN_EXPORT)
target_link_libraries(vorn PRIVATE vornhost)
set_target_properties(vorn vornhost PROPERTIES PREFIX "")

add_executable(windows-host tests/windows/host.cpp tests/windows/networks.cpp)
target_include_directories(windows-host PRIVATE include)
target_link_libraries(windows-host PRIVATE vornhost)

enable_testing()
set(architecture ${CMAKE_SYSTEM_PROCESSOR})
add_test(NAME Windows.ExportsAndImports
  COMMAND ${CMAKE_SOURCE_DIR}/tests/windows/tables.sh ${architecture} ${CMAKE_BINARY_DIR})
if(architecture STREQUAL "x86_64")
  add_test(NAME Windows.ReportsAreTheSameBytes
    COMMAND ${CMAKE_SOURCE_DIR}/tests/windows/reports.sh ${CMAKE_BINARY_DIR} ${CMAKE_SOURCE_DIR}/build/release)
  set_tests_properties(Windows.ReportsAreTheSameBytes PROPERTIES SKIP_RETURN_CODE 77)
endif()
