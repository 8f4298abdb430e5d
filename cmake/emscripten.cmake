# Builds for browsers with Debian's emscripten. Libraries' headers are found as on the system that it runs on.
include(/usr/share/emscripten/cmake/Modules/Platform/Emscripten.cmake)
