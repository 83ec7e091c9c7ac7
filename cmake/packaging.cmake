# Installing and packing.
#
#   cmake --install build/release --prefix DIR       program, man page and documents
#   cd build/package && cpack -G TGZ                 an archive of the same
#   cd build/package && cpack -G DEB                 the Debian package
#   cd build/package-windows && cpack -G ZIP         the archive for Windows
#
# ./package makes all three and sees to it that the bytes depend on the sources and the compilers alone. The component
# `program` is what people get; `debian` has the same files where Debian's rules want them.

include(GNUInstallDirs)

set(packagingFolder "${PROJECT_BINARY_DIR}/packaging")

# The day of the release is in the list of changes and nowhere else.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
    "${PROJECT_SOURCE_DIR}/CHANGELOG.md" "${PROJECT_SOURCE_DIR}/README.md" "${PROJECT_SOURCE_DIR}/LICENSE"
    "${PROJECT_SOURCE_DIR}/docs/libraries.txt")
string(REPLACE "." "\\." versionPattern "${PROJECT_VERSION}")
file(STRINGS "${PROJECT_SOURCE_DIR}/CHANGELOG.md" releaseLine REGEX "^## \\[${versionPattern}\\] - " LIMIT_COUNT 1)
if(NOT releaseLine MATCHES " - ([0-9][0-9][0-9][0-9]-[0-9][0-9]-[0-9][0-9])$")
    message(FATAL_ERROR "CHANGELOG.md has no line '## [${PROJECT_VERSION}] - YYYY-MM-DD' for this version")
endif()
set(BRENQUIL_RELEASE_DATE "${CMAKE_MATCH_1}")

# A program for other machines needs no library of theirs and tells nothing of this one: no symbols, no folders, no time
# in the header of the Windows program.
if(BRENQUIL_PACKAGE)
    target_compile_options(brenquil_options INTERFACE "-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.")
    target_link_options(brenquil PRIVATE -static -s)
    if(WIN32)
        target_link_options(brenquil PRIVATE -Wl,--no-insert-timestamp)
    endif()
endif()

# install_linked(<folder> <component> [EXCLUDE_FROM_ALL]): what README.md links to, in the places that it names.
function(install_linked folder component)
    install(DIRECTORY docs DESTINATION "${folder}" COMPONENT ${component} ${ARGN}
        FILES_MATCHING PATTERN "*.md" PATTERN "*.png")
    install(FILES CONTRIBUTING.md DESTINATION "${folder}" COMPONENT ${component} ${ARGN})
    install(FILES tools/analyse.py DESTINATION "${folder}/tools" COMPONENT ${component} ${ARGN})
endfunction()

if(WIN32)
    # One folder, texts that every editor there can show.
    install(TARGETS brenquil RUNTIME DESTINATION . COMPONENT program)
    foreach(pair "README.md README.txt" "CHANGELOG.md CHANGELOG.txt" "LICENSE LICENSE.txt"
            "docs/libraries.txt LIBRARIES.txt")
        separate_arguments(pair UNIX_COMMAND "${pair}")
        list(GET pair 0 from)
        list(GET pair 1 to)
        file(READ "${PROJECT_SOURCE_DIR}/${from}" text)
        string(REPLACE "\n" "\r\n" text "${text}")
        file(WRITE "${packagingFolder}/${to}" "${text}")
        install(FILES "${packagingFolder}/${to}" DESTINATION . COMPONENT program)
    endforeach()
    install_linked(. program)
else()
    configure_file("${PROJECT_SOURCE_DIR}/docs/brenquil.6.in" "${packagingFolder}/brenquil.6" @ONLY)
    install(TARGETS brenquil RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT program)
    install(FILES "${packagingFolder}/brenquil.6" DESTINATION "${CMAKE_INSTALL_MANDIR}/man6" COMPONENT program)
    install(FILES README.md CHANGELOG.md LICENSE docs/libraries.txt
        DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT program)
    install_linked("${CMAKE_INSTALL_DOCDIR}" program)
endif()

# The Debian package: games have a folder of their own, manuals and changes are compressed.
find_program(BRENQUIL_GZIP gzip)
mark_as_advanced(BRENQUIL_GZIP)
if(NOT WIN32 AND BRENQUIL_GZIP)
    # install_compressed(<file> <folder> <name>): installs the file as <name>.gz, with no time inside.
    function(install_compressed file folder name)
        execute_process(
            COMMAND "${BRENQUIL_GZIP}" -9nc "${file}"
            OUTPUT_FILE "${packagingFolder}/${name}.gz"
            COMMAND_ERROR_IS_FATAL ANY)
        install(FILES "${packagingFolder}/${name}.gz" DESTINATION "${folder}" COMPONENT debian EXCLUDE_FROM_ALL)
    endfunction()

    set(debianRelease 1)
    set(maintainer "The Brenquil developers <developers@brenquil.example.org>")
    # CMake takes the time from SOURCE_DATE_EPOCH where it is set.
    string(TIMESTAMP debianDate "%a, %d %b %Y %H:%M:%S +0000" UTC)
    configure_file("${PROJECT_SOURCE_DIR}/cmake/debian/changelog.in" "${packagingFolder}/changelog.Debian" @ONLY)

    install(TARGETS brenquil RUNTIME DESTINATION games COMPONENT debian EXCLUDE_FROM_ALL)
    install_compressed("${packagingFolder}/brenquil.6" share/man/man6 brenquil.6)
    install_compressed("${packagingFolder}/changelog.Debian" share/doc/brenquil changelog.Debian)
    install_compressed("${PROJECT_SOURCE_DIR}/CHANGELOG.md" share/doc/brenquil changelog)
    install(FILES README.md docs/libraries.txt cmake/debian/copyright
        DESTINATION share/doc/brenquil COMPONENT debian EXCLUDE_FROM_ALL)
    install_linked(share/doc/brenquil debian EXCLUDE_FROM_ALL)
    install(FILES cmake/debian/lintian-overrides RENAME brenquil
        DESTINATION share/lintian/overrides COMPONENT debian EXCLUDE_FROM_ALL)
endif()

string(TOLOWER "${CMAKE_SYSTEM_NAME}" systemName)
string(TOLOWER "${CMAKE_SYSTEM_PROCESSOR}" processorName)
if(processorName STREQUAL "amd64")
    set(processorName x86_64)
endif()

set(CPACK_PACKAGE_NAME brenquil)
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_VENDOR "The Brenquil developers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "chess engine for the UCI protocol")
set(CPACK_PACKAGE_HOMEPAGE_URL "https://brenquil.example.org")
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
set(CPACK_PACKAGE_FILE_NAME "brenquil-${PROJECT_VERSION}-${systemName}-${processorName}")
if(WIN32)
    set(CPACK_GENERATOR ZIP)
else()
    set(CPACK_GENERATOR TGZ DEB)
endif()
set(CPACK_MONOLITHIC_INSTALL ON)
set(CPACK_PROJECT_CONFIG_FILE "${PROJECT_SOURCE_DIR}/cmake/cpack_project.cmake")

if(processorName STREQUAL "x86_64")
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE amd64)
elseif(processorName STREQUAL "aarch64")
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE arm64)
endif()
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE "${debianRelease}")
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${maintainer}")
set(CPACK_DEBIAN_PACKAGE_SECTION games)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
# The program of the package is static and depends on nothing. Another build is asked what it needs.
if(BRENQUIL_PACKAGE)
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS OFF)
else()
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
endif()
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "polyglot, pychess | scid | xboard")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Brenquil plays and analyses standard chess and Chess960. It has no board of
its own: a chess program that speaks the Universal Chess Interface shows the
game and starts the engine.
.
It searches on up to 32 threads and can use opening books in the Polyglot
format and endgame tables of the kinds Syzygy and Nalimov.")
include(CPack)
