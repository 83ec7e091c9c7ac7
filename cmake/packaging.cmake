# Installing and packing.
#
#   cmake --install build/release --prefix DIR       program, man page and documents
#   cd build/package && cpack -G TGZ                 an archive of the same
#   cd build/package && cpack -G DEB                 the Debian package
#   cd build/package-windows && cpack -G ZIP         the archive for Windows
#
# ./package makes them all and sees to it that the bytes depend on the sources and the compilers alone. The component
# `program` is what people get; `debian` has the same files where Debian's rules want them.

include(GNUInstallDirs)

set(packagingFolder "${PROJECT_BINARY_DIR}/packaging")

string(TOLOWER "${CMAKE_SYSTEM_NAME}" systemName)
string(TOLOWER "${CMAKE_SYSTEM_PROCESSOR}" processorName)
if(processorName STREQUAL "amd64")
    set(processorName x86_64)
endif()

# The day of the release is in the list of changes and nowhere else.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
    "${PROJECT_SOURCE_DIR}/CHANGELOG.md" "${PROJECT_SOURCE_DIR}/README.md" "${PROJECT_SOURCE_DIR}/LICENSE"
    "${PROJECT_SOURCE_DIR}/docs/libraries.txt" "${PROJECT_SOURCE_DIR}/docs/front-ends.md"
    "${PROJECT_SOURCE_DIR}/docs/clients.md")
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
    target_link_options(brenquil-tables PRIVATE -static -s)
    if(WIN32)
        target_link_options(brenquil PRIVATE -Wl,--no-insert-timestamp)
        target_link_options(brenquil-tables PRIVATE -Wl,--no-insert-timestamp)
    endif()
endif()

# The same program for newer processors, which the packages carry beside the other; built in a folder of its own.
set(BRENQUIL_V3_PROGRAM "" CACHE FILEPATH "The program for x86-64-v3 that is packed as brenquil-v3; empty: none")

# The program by the name under which it talks strict UCI, for front ends that have no field for arguments: a link, and
# where archives have none a copy.
set(BRENQUIL_STRICT_NAME "brenquil-strict${CMAKE_EXECUTABLE_SUFFIX}")
if(NOT WIN32)
    file(MAKE_DIRECTORY "${packagingFolder}")
    file(CREATE_LINK brenquil "${packagingFolder}/${BRENQUIL_STRICT_NAME}" SYMBOLIC)
endif()

# install_program(<folder> <component> [EXCLUDE_FROM_ALL])
function(install_program folder component)
    install(TARGETS brenquil RUNTIME DESTINATION "${folder}" COMPONENT ${component} ${ARGN})
    if(WIN32)
        install(PROGRAMS "$<TARGET_FILE:brenquil>" RENAME "${BRENQUIL_STRICT_NAME}"
            DESTINATION "${folder}" COMPONENT ${component} ${ARGN})
    else()
        install(FILES "${packagingFolder}/${BRENQUIL_STRICT_NAME}"
            DESTINATION "${folder}" COMPONENT ${component} ${ARGN})
    endif()
    if(BRENQUIL_V3_PROGRAM)
        install(PROGRAMS "${BRENQUIL_V3_PROGRAM}" RENAME "brenquil-v3${CMAKE_EXECUTABLE_SUFFIX}"
            DESTINATION "${folder}" COMPONENT ${component} ${ARGN})
    endif()
endfunction()

# cut_sources_only(<variable>): drops what stands between the two remarks from a text. It is for people who have the
# sources.
function(cut_sources_only variable)
    set(begin "<!-- sources only -->\n")
    set(end "<!-- end -->\n")
    set(text "${${variable}}")
    string(LENGTH "${end}" endLength)
    string(FIND "${text}" "${begin}" from)
    while(NOT from EQUAL -1)
        string(FIND "${text}" "${end}" to)
        if(to LESS from)
            message(FATAL_ERROR "README.md: a part for people with the sources has no end")
        endif()
        string(SUBSTRING "${text}" 0 ${from} before)
        math(EXPR to "${to} + ${endLength}")
        string(SUBSTRING "${text}" ${to} -1 text)
        string(REGEX REPLACE "^\n" "" text "${text}")  # the empty line before is enough
        string(PREPEND text "${before}")
        string(FIND "${text}" "${begin}" from)
    endwhile()
    set(${variable} "${text}" PARENT_SCOPE)
endfunction()

if(processorName STREQUAL "x86_64")
    string(CONCAT packageProcessors
        "It runs on every x86-64 processor and counts bits by instruction where there\n"
        "is one. Beside it lies `brenquil-v3`, the same program for processors from about 2013 on (x86-64-v3: AVX2 and "
        "BMI2), where\nit is some percent faster; elsewhere it ends at once.")
else()
    set(packageProcessors "It runs on every 64-bit ARM processor.")
endif()

# write_package_documents(<folder> <readme> <changes> <licence> <libraries> <program>): the documents for people who only
# use the engine, as they have neither sources nor tools: README.md from where it tells of front ends to its last
# section, with a beginning and an end of its own, and docs/. The names are those of the package.
function(write_package_documents folder readme packageChanges packageLicence packageLibraries packageProgram)
    file(READ "${PROJECT_SOURCE_DIR}/README.md" text)
    string(FIND "${text}" "## In a front end\n" from)
    string(FIND "${text}" "## More\n" to REVERSE)
    if(from EQUAL -1 OR to LESS from)
        message(FATAL_ERROR "README.md has no sections 'In a front end' to 'More'")
    endif()
    math(EXPR length "${to} - ${from}")
    string(SUBSTRING "${text}" ${from} ${length} text)
    cut_sources_only(text)
    string(REPLACE "`tools/solve_epd.py`" "a tool in the sources" text "${text}")
    foreach(part head end)
        configure_file("${PROJECT_SOURCE_DIR}/cmake/package_readme_${part}.md.in" "${folder}/part" @ONLY)
        file(READ "${folder}/part" ${part})
        file(REMOVE "${folder}/part")
    endforeach()
    file(WRITE "${folder}/${readme}" "${head}${text}${end}")

    file(REMOVE_RECURSE "${folder}/docs")
    foreach(name front-ends.md clients.md)
        file(READ "${PROJECT_SOURCE_DIR}/docs/${name}" text)
        string(REPLACE "[README.md](../README.md)" "[${readme}](../${readme})" text "${text}")
        file(WRITE "${folder}/docs/${name}" "${text}")
    endforeach()
    # Pictures of front ends. Those of the page belong to docs/web.md and the drawn ones to what is for the sources only.
    file(COPY "${PROJECT_SOURCE_DIR}/docs/images" DESTINATION "${folder}/docs"
        FILES_MATCHING PATTERN "*.png" PATTERN "images/web" EXCLUDE)
endfunction()

if(WIN32)
    # One folder, texts that every editor there can show.
    install_program(. program)
    install(TARGETS brenquil-tables RUNTIME DESTINATION . COMPONENT program OPTIONAL)
    set(documents "${packagingFolder}/windows")
    write_package_documents("${documents}" README.txt CHANGELOG.txt LICENSE.txt LIBRARIES.txt
        "It is `brenquil.exe` and may stand in any folder in which you may write.")
    file(COPY_FILE "${PROJECT_SOURCE_DIR}/CHANGELOG.md" "${documents}/CHANGELOG.txt")
    file(COPY_FILE "${PROJECT_SOURCE_DIR}/LICENSE" "${documents}/LICENSE.txt")
    file(COPY_FILE "${PROJECT_SOURCE_DIR}/docs/libraries.txt" "${documents}/LIBRARIES.txt")
    foreach(name README.txt CHANGELOG.txt LICENSE.txt LIBRARIES.txt)
        file(READ "${documents}/${name}" text)
        string(REPLACE "\n" "\r\n" text "${text}")
        file(WRITE "${documents}/${name}" "${text}")
        install(FILES "${documents}/${name}" DESTINATION . COMPONENT program)
    endforeach()
    install(DIRECTORY "${documents}/docs" DESTINATION . COMPONENT program)
else()
    configure_file("${PROJECT_SOURCE_DIR}/docs/brenquil.6.in" "${packagingFolder}/brenquil.6" @ONLY)
    configure_file("${PROJECT_SOURCE_DIR}/docs/brenquil-tables.6.in" "${packagingFolder}/brenquil-tables.6" @ONLY)
    install_program("${CMAKE_INSTALL_BINDIR}" program)
    install(TARGETS brenquil-tables RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT program OPTIONAL)
    install(FILES "${packagingFolder}/brenquil.6" "${packagingFolder}/brenquil-tables.6"
        DESTINATION "${CMAKE_INSTALL_MANDIR}/man6" COMPONENT program)
    write_package_documents("${packagingFolder}/linux" README.md CHANGELOG.md LICENSE libraries.txt
        "It is `bin/brenquil` and may stand anywhere.")
    install(FILES CHANGELOG.md LICENSE docs/libraries.txt
        DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT program)
    install(DIRECTORY "${packagingFolder}/linux/" DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT program)
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

    install_program(games debian EXCLUDE_FROM_ALL)
    install(TARGETS brenquil-tables RUNTIME DESTINATION games COMPONENT debian EXCLUDE_FROM_ALL OPTIONAL)
    install_compressed("${packagingFolder}/brenquil.6" share/man/man6 brenquil.6)
    install_compressed("${packagingFolder}/brenquil-tables.6" share/man/man6 brenquil-tables.6)
    # The same program by another name has the same page.
    set(otherNames brenquil-strict)
    if(BRENQUIL_V3_PROGRAM)
        list(APPEND otherNames brenquil-v3)
    endif()
    foreach(name IN LISTS otherNames)
        file(CREATE_LINK brenquil.6.gz "${packagingFolder}/${name}.6.gz" SYMBOLIC)
        install(FILES "${packagingFolder}/${name}.6.gz" DESTINATION share/man/man6
            COMPONENT debian EXCLUDE_FROM_ALL)
    endforeach()
    install_compressed("${packagingFolder}/changelog.Debian" share/doc/brenquil changelog.Debian)
    install_compressed("${PROJECT_SOURCE_DIR}/CHANGELOG.md" share/doc/brenquil changelog)
    string(CONCAT debianProgram
        "It is `/usr/games/brenquil`.\n\n"
        "The folder `/usr/games` is in the search path of users and not in that of root, who is the user in most "
        "containers: give\nthe whole path there, or put `/usr/games` into `PATH`.")
    write_package_documents("${packagingFolder}/debian" README.md changelog.gz copyright libraries.txt
        "${debianProgram}")
    # XBoard and its like find engines here by themselves; the strict dialect is the one in which they may ponder.
    install(FILES cmake/debian/brenquil.eng DESTINATION share/games/plugins/uci
        COMPONENT debian EXCLUDE_FROM_ALL)
    install(FILES docs/libraries.txt cmake/debian/copyright
        DESTINATION share/doc/brenquil COMPONENT debian EXCLUDE_FROM_ALL)
    install(DIRECTORY "${packagingFolder}/debian/" DESTINATION share/doc/brenquil COMPONENT debian EXCLUDE_FROM_ALL)
    install(FILES cmake/debian/lintian-overrides RENAME brenquil
        DESTINATION share/lintian/overrides COMPONENT debian EXCLUDE_FROM_ALL)
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
