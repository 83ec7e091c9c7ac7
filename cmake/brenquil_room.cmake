# brenquil_room(<room> [<room it may include>...] [PARTS <folder>...])
#
# Declares the static library brenquil_<room> from the sources of the current folder and links it to the rooms
# below it. These links are the one-way arrows of the architecture; the test architecture.includes holds every include
# against them. The sources are globbed with CONFIGURE_DEPENDS, so that a new file needs no edit of a list that several
# people would change at once; the build tool looks again before each build.
#
# Sources for one system or one processor family carry its name at the end and are left out elsewhere:
# _linux, _windows, _x86, and _generic for any processor that is not x86.
#
# A large room shows its parts as folders: PARTS names them, and their files belong to the room like those beside its
# CMakeLists.txt.
#
# The builds for the browser (_web both, _single the one without threads) begin from the sources for Linux: there
# x_web.cpp or x_single.cpp takes the place of x_linux.cpp or, where there is none, of x.cpp.
#
# main.cpp never belongs to a library: a room's tests link the library and bring a main function of their own.
#
# A room that has only headers becomes an interface library; nothing else changes for those who link it.
function(brenquil_room room)
    cmake_parse_arguments(PARSE_ARGV 1 argument "" "" "PARTS")
    set(sources)
    set(headers)
    foreach(folder IN ITEMS . LISTS argument_PARTS)
        file(GLOB found CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/${folder}/*.cpp")
        list(APPEND sources ${found})
        file(GLOB found CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/${folder}/*.h")
        list(APPEND headers ${found})
    endforeach()
    list(FILTER sources EXCLUDE REGEX "/main\\.cpp$")

    if(WIN32)
        list(FILTER sources EXCLUDE REGEX "_linux\\.cpp$")
    else()
        list(FILTER sources EXCLUDE REGEX "_windows\\.cpp$")
    endif()
    if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|amd64)$")
        list(FILTER sources EXCLUDE REGEX "_generic\\.cpp$")
    else()
        list(FILTER sources EXCLUDE REGEX "_x86\\.cpp$")
    endif()

    foreach(kind web single)
        set(own ${sources})
        list(FILTER own INCLUDE REGEX "_${kind}\\.cpp$")
        list(FILTER sources EXCLUDE REGEX "_${kind}\\.cpp$")
        if(BRENQUIL_WEB STREQUAL kind OR (BRENQUIL_WEB STREQUAL "single" AND kind STREQUAL "web"))
            foreach(source IN LISTS own)
                string(REGEX REPLACE "_${kind}\\.cpp$" "" subject "${source}")
                if("${subject}_linux.cpp" IN_LIST sources)
                    list(REMOVE_ITEM sources "${subject}_linux.cpp")
                else()
                    list(REMOVE_ITEM sources "${subject}.cpp")
                endif()
            endforeach()
            list(APPEND sources ${own})
        endif()
    endforeach()

    set(library brenquil_${room})
    if(sources)
        add_library(${library} STATIC ${sources})
        set(scope PUBLIC)
    else()
        add_library(${library} INTERFACE)
        set(scope INTERFACE)
    endif()
    target_link_libraries(${library} ${scope} brenquil_options)
    # Everybody who opens a page loads the program: what no search waits for is built for size.
    if(BRENQUIL_WEB AND sources AND NOT room MATCHES "^(platform|board|eval|search)$")
        target_compile_options(${library} PRIVATE -Os)
    endif()
    if(room IN_LIST profiledRooms)
        target_compile_options(${library} PRIVATE ${profileFlags})
    endif()
    foreach(lower IN LISTS argument_UNPARSED_ARGUMENTS)
        target_link_libraries(${library} ${scope} brenquil_${lower})
    endforeach()

    # Where the sources of a room are joined, clang-tidy finds them included.
    if(sources)
        set_target_properties(${library} PROPERTIES
            UNITY_BUILD_CODE_BEFORE_INCLUDE "// NOLINTNEXTLINE(bugprone-suspicious-include)")
    endif()

    # Objects with static storage are never destroyed: the program ends while its searches go on looking at them. Clang
    # names each one with a destructor that has something to do.
    if(sources AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        target_compile_options(${library} PRIVATE -Wexit-time-destructors)
    endif()

    # A header includes what it uses. One that a source includes first is compiled as if it were alone wherever that
    # source is; the target all_verify_interface_header_sets does so with the others.
    set(loneHeaders ${headers})
    list(TRANSFORM loneHeaders REPLACE "/\\./" "/")
    foreach(source IN LISTS sources)
        file(STRINGS "${source}" first REGEX "^#" LIMIT_COUNT 1)
        if(first MATCHES "^#include \"([^\"]+)\"$")
            list(REMOVE_ITEM loneHeaders "${PROJECT_SOURCE_DIR}/src/${CMAKE_MATCH_1}")
        endif()
    endforeach()
    if(loneHeaders)
        target_sources(${library} ${scope} FILE_SET HEADERS BASE_DIRS "${PROJECT_SOURCE_DIR}/src" FILES ${loneHeaders})
        set_target_properties(${library} PROPERTIES VERIFY_INTERFACE_HEADER_SETS ON)
    endif()
endfunction()
