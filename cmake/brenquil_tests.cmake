# How tests are registered with ctest.
#
# Labels: every test has "unit" or "system"; "slow" keeps it out of ./test quick; "release-only" keeps it out of the
# builds that are many times slower (debug, sanitizers).
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

# brenquil_unit_tests(<folder>): one program unit_<room> from the sources in tests/unit/<folder>, with every case of it
# a test of its own. The macro BRENQUIL_TEST_FOLDER is the path of that folder, for files that lie beside the tests.
# The name of a suite carries what ctest has to know: one that ends in Slow is labelled slow, one that ends in
# ReleaseOnly slow and release-only; nothing runs beside the cases of one that ends in Serial.
function(brenquil_unit_tests folder)
    file(GLOB sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/${folder}/*.cpp")
    get_filename_component(room "${folder}" NAME)
    if(NOT sources)
        return()
    endif()
    set(program unit_${room})
    add_executable(${program} ${sources})
    target_link_libraries(${program} PRIVATE brenquil_${room} GTest::gtest_main)
    target_compile_definitions(${program} PRIVATE BRENQUIL_TEST_FOLDER="${CMAKE_CURRENT_SOURCE_DIR}/${folder}")

    brenquil_timeout(timeout 60)
    brenquil_timeout(slowTimeout 600)
    if(CMAKE_CROSSCOMPILING)
        # Starting the emulator for each case would take longer than the cases.
        add_test(NAME ${room}.all COMMAND ${program} "--gtest_filter=-*Slow*:*ReleaseOnly*" --gtest_brief=1)
        set_tests_properties(${room}.all PROPERTIES LABELS unit TIMEOUT ${slowTimeout}
            WORKING_DIRECTORY "${PROJECT_BINARY_DIR}" ENVIRONMENT "${brenquilTestEnvironment}"
            FIXTURES_REQUIRED emulator)
        return()
    endif()
    gtest_discover_tests(${program}
        DISCOVERY_MODE PRE_TEST
        DISCOVERY_TIMEOUT ${timeout}
        TEST_PREFIX "${room}."
        TEST_LIST ${program}_list
        WORKING_DIRECTORY "${PROJECT_BINARY_DIR}")

    # The cases are known only when ctest has asked the program for them. This script, which ctest reads next, gives
    # them their properties.
    set(propertiesFile "${CMAKE_CURRENT_BINARY_DIR}/${program}_properties.cmake")
    configure_file("${PROJECT_SOURCE_DIR}/cmake/unit_test_properties.cmake.in" "${propertiesFile}" @ONLY)
    set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES "${propertiesFile}")
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
        elseif(word STREQUAL "slow" OR word STREQUAL "release-only")
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
