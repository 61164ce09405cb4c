# The program for browsers: WebAssembly, with exceptions as browsers know them, its files in memory.
add_compile_options(-fwasm-exceptions)
add_link_options(-fwasm-exceptions)
include(cmake/header_libraries.cmake)
