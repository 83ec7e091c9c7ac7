# What every target of the project is compiled and linked with: the interface library brenquil_options.
# Targets that are not ours (GoogleTest, Google Benchmark) never see it.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

add_library(brenquil_options INTERFACE)
target_include_directories(brenquil_options INTERFACE "${PROJECT_SOURCE_DIR}/src")

# -Wconversion includes -Wsign-conversion under Clang and not under GCC. Signed squares index tables everywhere,
# so the sign part is left out on both.
target_compile_options(brenquil_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Werror)

# GCC 12 sees overlapping copies in the string class of its own library where there are none (its bug 105651), as soon as
# it optimises without looking across translation units.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(brenquil_options INTERFACE -Wno-restrict)
endif()

# The stable sort of GCC 12's library asks for its buffer by a function that the standard has deprecated, and newer
# versions of Clang report that as ours.
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang" AND CMAKE_CXX_COMPILER_VERSION VERSION_GREATER_EQUAL 15)
    target_compile_options(brenquil_options INTERFACE -Wno-deprecated-declarations)
endif()

# Indices of tables are 64-bit words everywhere, and memory is counted in 32 bits there.
if(BRENQUIL_WEB)
    target_compile_options(brenquil_options INTERFACE -Wno-shorten-64-to-32)
endif()

# The static score is rounded step by step in double precision, and the search depends on each point of it. A fused
# multiply-add would round once less, on the processors that have it.
target_compile_options(brenquil_options INTERFACE -ffp-contract=off)

find_package(Threads REQUIRED)
target_link_libraries(brenquil_options INTERFACE Threads::Threads)

# The optimised presets ask for -O2 and no vectors. With GCC 12 the search takes 4 % longer with -O3, and 2 % longer with
# vectors: it has no long loops, and fields that are written one by one and read as a vector stall the processor.
if(BRENQUIL_LTO)
    include(CheckIPOSupported)
    check_ipo_supported(RESULT ltoWorks OUTPUT ltoMessage LANGUAGES CXX)
    if(ltoWorks)
        set(CMAKE_INTERPROCEDURAL_OPTIMIZATION ON)
        # The tests link the same objects without it; see tests/CMakeLists.txt.
        if(BRENQUIL_TESTS AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND NOT CMAKE_CROSSCOMPILING)
            target_compile_options(brenquil_options INTERFACE -ffat-lto-objects)
        endif()
    else()
        message(WARNING "Link-time optimisation does not work here; building without it: ${ltoMessage}")
    endif()
endif()

# A program at a fixed address indexes a table in one instruction; a position-independent one needs a second one
# for the table's address. The tables of attacks and keys are read in every node. A target with the property
# BRENQUIL_STATIC holds its libraries as well, where there are static ones; before version 2.34 of the GNU C library a
# static program lost its threads.
if(CMAKE_BUILD_TYPE STREQUAL "Release" AND CMAKE_SYSTEM_NAME STREQUAL "Linux")
    include(CheckCXXSourceCompiles)
    set(CMAKE_REQUIRED_LINK_OPTIONS -static)
    check_cxx_source_compiles("
        #include <thread>
        #if defined(__GLIBC__) && !__GLIBC_PREREQ(2, 34)
        #error
        #endif
        int main() { std::thread([] {}).join(); }" BRENQUIL_CAN_BE_STATIC)
    unset(CMAKE_REQUIRED_LINK_OPTIONS)
    target_compile_options(brenquil_options INTERFACE -fno-pie)
    target_link_options(brenquil_options INTERFACE
        "$<IF:$<AND:$<BOOL:${BRENQUIL_CAN_BE_STATIC}>,$<BOOL:$<TARGET_PROPERTY:BRENQUIL_STATIC>>>,-static,-no-pie>")
endif()

if(BRENQUIL_ARCH)
    target_compile_options(brenquil_options INTERFACE -march=${BRENQUIL_ARCH})
    target_link_options(brenquil_options INTERFACE -march=${BRENQUIL_ARCH})
    # 64-bit Windows aligns the stack to 16 bytes, and GCC stores wider vectors there as if it were 32 (its bug 54412).
    if(WIN32)
        target_compile_options(brenquil_options INTERFACE -Wa,-muse-unaligned-vector-move)
        target_link_options(brenquil_options INTERFACE -Wa,-muse-unaligned-vector-move)
    endif()
endif()

if(BRENQUIL_SANITIZE)
    target_compile_options(brenquil_options INTERFACE
        -fsanitize=${BRENQUIL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(brenquil_options INTERFACE -fsanitize=${BRENQUIL_SANITIZE})
    # libFuzzer leaves by _Exit as well, and looks for leaks itself.
    if(BRENQUIL_SANITIZE MATCHES "address" AND NOT BRENQUIL_FUZZ)
        target_link_options(brenquil_options INTERFACE -Wl,--wrap=_Exit)
        add_library(brenquil_leak_check_exit STATIC "${PROJECT_SOURCE_DIR}/cmake/leak_check_exit.cpp")
        target_link_libraries(brenquil_options INTERFACE brenquil_leak_check_exit)
    endif()
endif()

# The rooms are instrumented for the fuzzer, or it would be blind; only the fuzz programs link its main function. It sees
# which ways are taken and how often. It also sees the texts that are compared, and not the numbers: to be told of each
# comparison took a quarter to two thirds of the time, and most are of squares, bits and places, not of bytes of an input.
if(BRENQUIL_FUZZ)
    target_compile_options(brenquil_options INTERFACE -fsanitize=fuzzer-no-link -fno-sanitize-coverage=trace-cmp)
    target_link_options(brenquil_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

if(BRENQUIL_COVERAGE)
    target_compile_options(brenquil_options INTERFACE --coverage)
    target_link_options(brenquil_options INTERFACE --coverage)
endif()
if(BRENQUIL_COVERAGE OR BRENQUIL_PROFILE STREQUAL "generate")
    # Optimised across translation units, the program asks for the function when the libraries have been looked through.
    target_link_options(brenquil_options INTERFACE -Wl,--wrap=_Exit,--undefined=__wrap__Exit)
    add_library(brenquil_coverage_exit STATIC "${PROJECT_SOURCE_DIR}/cmake/coverage_exit.cpp")
    set_target_properties(brenquil_coverage_exit PROPERTIES INTERPROCEDURAL_OPTIMIZATION OFF)
    target_link_libraries(brenquil_options INTERFACE brenquil_coverage_exit)
endif()

# The two halves of a profile-guided build use the same build folder: the counts lie beside the object files. Only the
# rooms that gain by a profile are built with it: by one of its own, the search takes 2 to 4 % longer (GCC 12).
set(profiledRooms board eval)
if(BRENQUIL_PROFILE STREQUAL "generate")
    set(profileFlags -fprofile-generate -fprofile-update=atomic)
    target_link_options(brenquil_options INTERFACE ${profileFlags})
elseif(BRENQUIL_PROFILE STREQUAL "use")
    # What the training run never reached keeps its normal optimisation. What a profile switches on beside its counts
    # makes the code larger; without that a search takes 3 % less time.
    set(profileFlags -fprofile-use -fprofile-partial-training
        -fno-unroll-loops -fno-peel-loops -fno-tracer -fno-ipa-cp-clone -fno-split-loops -fno-unswitch-loops)
endif()
