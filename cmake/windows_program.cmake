# The program for 64-bit Windows: one file that needs nothing beside the operating system.
enable_language(RC)

# The C library's own printf knows neither %lf to the last digit nor exponents of two digits.
add_compile_definitions(__USE_MINGW_ANSI_STDIO=1)
add_link_options(-static -static-libgcc -static-libstdc++)

# The compiler keeps the stack at multiples of 16 only and moves vectors of 4 and 8 numbers to and from it as if it
# stood at theirs. The assembler makes these moves ones that serve any address.
set_source_files_properties(src/numerics/tiles.cpp PROPERTIES
  COMPILE_OPTIONS -Wa,-muse-unaligned-vector-move COMPILE_DEFINITIONS VORN_UNALIGNED_MOVES)

include(cmake/header_libraries.cmake)
