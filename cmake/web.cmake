# Toolchain: WebAssembly by Emscripten, for browsers and Node (Debian: emscripten, node-acorn).

find_program(BRENQUIL_EMCC NAMES emcc REQUIRED)
file(REAL_PATH "${BRENQUIL_EMCC}" emcc)
get_filename_component(EMSCRIPTEN_ROOT_PATH "${emcc}" DIRECTORY)
if(NOT EXISTS "${EMSCRIPTEN_ROOT_PATH}/cmake")
    set(EMSCRIPTEN_ROOT_PATH /usr/share/emscripten)
endif()
include("${EMSCRIPTEN_ROOT_PATH}/cmake/Modules/Platform/Emscripten.cmake")

# Vectors, and copying and filling by instruction: every browser since 2021 has them.
set(CMAKE_CXX_FLAGS_INIT "-msimd128 -mbulk-memory -flto")
if(BRENQUIL_WEB STREQUAL "web")
    string(APPEND CMAKE_CXX_FLAGS_INIT " -pthread")
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES BRENQUIL_WEB)

# Emscripten's own scripts find Debian's parser of JavaScript there.
set(CMAKE_CXX_LINKER_LAUNCHER "${CMAKE_COMMAND}" -E env "NODE_PATH=/usr/share/nodejs")
