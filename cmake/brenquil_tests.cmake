# How tests are registered with ctest.
#
# Labels: every test has "unit" or "system". Of the others,
#
#   slow           keeps it out of ./test quick and of all builds but release
#   release-only   keeps it out of the builds that are many times slower (debug, sanitizers)
#   sanitized      keeps it out of the builds debug and release-clang: it looks for crashes, hangs and lost lines, in release
#                  and where a sanitizer sees more of them
#   once           keeps it out of all builds but release: what it checks does not depend on the build
#   proof          keeps it out of all stages but ./test proofs: long, exhaustive, with a short form elsewhere
#
# Environment: BRENQUIL_ENGINE is the program under test, BRENQUIL_SYSTEM the system that it is built for (Linux or
# Windows), BRENQUIL_DATA the folder of shared test data when there is one beside the repository,
# BRENQUIL_TIMEOUT_FACTOR the slowness of this build for a test that waits.
#
# A cross build runs its tests by the emulator that its toolchain file names; tests/CMakeLists.txt prepares that.

set(brenquilTestEnvironment
    "BRENQUIL_TIMEOUT_FACTOR=${BRENQUIL_TIMEOUT_FACTOR}" "BRENQUIL_SYSTEM=${CMAKE_SYSTEM_NAME}")
if(IS_DIRECTORY "${PROJECT_SOURCE_DIR}/../shared/data")
    get_filename_component(sharedData "${PROJECT_SOURCE_DIR}/../shared/data" REALPATH)
    list(APPEND brenquilTestEnvironment "BRENQUIL_DATA=${sharedData}")
endif()

# brenquil_timeout(<variable> <seconds>): the time limit of a test in this build.
function(brenquil_timeout variable seconds)
    math(EXPR scaled "${seconds} * ${BRENQUIL_TIMEOUT_FACTOR}")
    set(${variable} ${scaled} PARENT_SCOPE)
endfunction()

# brenquil_unit_tests(<folder> [PARTS <folder>...]): one program unit_<room> from the sources in tests/unit/<folder> and
# in the folders below it that PARTS names, as brenquil_room does. The target unit_tests builds all programs. The macro
# BRENQUIL_TEST_FOLDER is the path of tests/unit/<folder>, for files that lie beside the tests.
#
# A test is compiled once and run once, so its compiling counts for more than its running: *_test.cpp is not optimised,
# shares one precompiled header with all others, and is joined with some of its room. The sources beside it, where tests
# have their logic, are optimised like the engine.
#
# A file with cases that start threads has the line
#     // ctest: threads
# near its top: ./test tsan compiles these and no others. A case of another file that starts one fails
# (tests/unit/thread_watch.cpp).
#
# The cases of a program share a process, and the names of their suites divide them among the tests of ctest:
#
#   <room>.proofs    suites that end in Proof; label proof
#   <room>.slow      suites that end in Slow; label slow
#   <room>.serial    suites that end in Serial: nothing runs beside them
#   <room>.reference suites of the second search: long, and on one thread
#   <room>.unit      all others
function(brenquil_unit_tests folder)
    cmake_parse_arguments(PARSE_ARGV 1 argument "" "" "PARTS")
    set(sources)
    foreach(part IN ITEMS . LISTS argument_PARTS)
        file(GLOB found CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/${folder}/${part}/*.cpp")
        list(APPEND sources ${found})
    endforeach()
    get_filename_component(room "${folder}" NAME)
    if(NOT sources)
        return()
    endif()
    set(program unit_${room})
    # ThreadSanitizer learns nothing where there is one thread.
    if(BRENQUIL_SANITIZE STREQUAL "thread")
        set(threaded)
        foreach(source IN LISTS sources)
            set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${source}")
            file(STRINGS "${source}" marked REGEX "^// ctest: threads$" LIMIT_COUNT 1)
            if(marked OR NOT source MATCHES "_test\\.cpp$")
                list(APPEND threaded "${source}")
            endif()
        endforeach()
        set(sources ${threaded})
        if(NOT sources MATCHES "_test\\.cpp")
            return()
        endif()
    endif()
    set(helpers ${sources})
    list(FILTER sources INCLUDE REGEX "_test\\.cpp$")
    list(FILTER helpers EXCLUDE REGEX "_test\\.cpp$")
    add_executable(${program} ${sources})
    add_dependencies(unit_tests ${program})
    target_link_libraries(${program} PRIVATE brenquil_${room} GTest::gtest_main)
    target_compile_definitions(${program} PRIVATE BRENQUIL_TEST_FOLDER="${CMAKE_CURRENT_SOURCE_DIR}/${folder}")
    target_compile_options(${program} PRIVATE -O0)
    target_precompile_headers(${program} REUSE_FROM brenquil_test_headers)
    if(TARGET brenquil_thread_watch)
        target_link_libraries(${program} PRIVATE brenquil_thread_watch)
    endif()
    set_target_properties(${program} PROPERTIES UNITY_BUILD ON)
    if(helpers)
        add_library(${program}_helpers OBJECT ${helpers})
        target_link_libraries(${program}_helpers PRIVATE brenquil_${room} GTest::gtest)
        target_compile_definitions(${program}_helpers PRIVATE
            BRENQUIL_TEST_FOLDER="${CMAKE_CURRENT_SOURCE_DIR}/${folder}")
        target_link_libraries(${program} PRIVATE ${program}_helpers)
    endif()

    brenquil_timeout(timeout 900)
    brenquil_timeout(slowTimeout 1200)
    if(CMAKE_CROSSCOMPILING)
        # Asking the program in the emulator takes longer than the cases.
        add_test(NAME ${room}.unit COMMAND ${program} "--gtest_filter=-*Slow.*:*Proof.*" --gtest_brief=1)
        set_tests_properties(${room}.unit PROPERTIES LABELS unit TIMEOUT ${slowTimeout}
            WORKING_DIRECTORY "${PROJECT_BINARY_DIR}" ENVIRONMENT "${brenquilTestEnvironment}"
            FIXTURES_REQUIRED emulator)
        return()
    endif()

    # Which of them have cases is known only when the program has been built, so ctest asks it by this script.
    set(script "${CMAKE_CURRENT_BINARY_DIR}/${program}_tests.cmake")
    configure_file("${PROJECT_SOURCE_DIR}/cmake/unit_tests.cmake.in" "${script}" @ONLY)
    set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES "${script}")
endfunction()

# brenquil_system_test(<file>): a Python program that drives the engine over pipes. A comment line near its top,
#     # ctest: slow release-only serial timeout=600
# names its labels, its time limit in seconds (120 when absent), and with "serial" that nothing else may run beside it.
function(brenquil_system_test file)
    get_filename_component(name "${file}" NAME_WE)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${file}")

    set(labels system)
    set(seconds 120)
    set(serial OFF)
    file(STRINGS "${file}" header REGEX "^# ctest:" LIMIT_COUNT 1)
    string(REGEX REPLACE "^# ctest:" "" header "${header}")
    separate_arguments(words UNIX_COMMAND "${header}")
    foreach(word IN LISTS words)
        if(word MATCHES "^timeout=([0-9]+)$")
            set(seconds ${CMAKE_MATCH_1})
        elseif(word STREQUAL "serial")
            set(serial ON)
        elseif(word MATCHES "^(slow|release-only|sanitized|once|proof)$")
            list(APPEND labels ${word})
        else()
            message(FATAL_ERROR "${file}: unknown word '${word}' in the line '# ctest:'")
        endif()
    endforeach()

    brenquil_timeout(timeout ${seconds})
    # By its path: in front of a target of its own, CMake would put the emulator.
    add_test(NAME system.${name} COMMAND "${Python3_EXECUTABLE}" -B "${file}")
    set_tests_properties(system.${name} PROPERTIES
        LABELS "${labels}" TIMEOUT ${timeout} RUN_SERIAL ${serial} FIXTURES_REQUIRED emulator
        ENVIRONMENT "BRENQUIL_ENGINE=${brenquilEngine};${brenquilTestEnvironment}")
endfunction()
