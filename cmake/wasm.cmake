# Builds for browsers with the distribution's emscripten, whose libraries are there compiled.
include(/usr/share/emscripten/cmake/Modules/Platform/Emscripten.cmake)
