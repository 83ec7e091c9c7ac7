# Read by cpack for each kind of package, before it collects the files: the Debian package has a component of its own.
if(CPACK_GENERATOR STREQUAL "DEB")
    list(TRANSFORM CPACK_INSTALL_CMAKE_PROJECTS REPLACE "^ALL$" debian)
endif()
