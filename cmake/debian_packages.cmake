# Debian packages of the four components, by CPack:
#   libzepbmp1      runtime       the shared library
#   libzepbmp-dev   development   headers, static library, CMake package, .pc file, documents, examples
#   zepbmp-tools    tools         zepbmp-transition
#   zepbmp-frei0r   frei0r        plug-ins for video editors
# Configured with ZEPBMP_DEBIAN_PACKAGES, which scripts/package sets; times are those of SOURCE_DATE_EPOCH.
if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr" OR NOT ZEPBMP_TOOLS OR NOT ZEPBMP_FREI0R)
    message(FATAL_ERROR "Debian packages hold the tools and the plug-ins and lie in /usr: "
        "configure with -D CMAKE_INSTALL_PREFIX=/usr -D ZEPBMP_TOOLS=ON -D ZEPBMP_FREI0R=ON")
endif()
if(NOT DEFINED ENV{SOURCE_DATE_EPOCH})
    message(FATAL_ERROR "set SOURCE_DATE_EPOCH to the time that the packages carry, in seconds since 1970")
endif()
find_program(ZEPBMP_GZIP gzip REQUIRED)
find_program(ZEPBMP_HELP2MAN help2man REQUIRED DOC "Makes the manual page (package help2man)")
find_program(ZEPBMP_SHLIBDEPS dpkg-shlibdeps REQUIRED DOC "Finds the packages that a program needs (package dpkg-dev)")

set(ZEPBMP_DEBIAN_REVISION 1 CACHE STRING "The Debian revision, counted from 1 for every version")
set(ZEPBMP_DEBIAN_MAINTAINER "zepbmp authors <authors@zepbmp.invalid>" CACHE STRING "Who answers for the packages")
set(ZEPBMP_DEBIAN_VERSION ${PROJECT_VERSION}-${ZEPBMP_DEBIAN_REVISION})
set(library_package libzepbmp${PROJECT_VERSION_MAJOR})
set(packages ${library_package} libzepbmp-dev zepbmp-tools zepbmp-frei0r)
set(components runtime development tools frei0r)

# ---------------------------------------------------------------- documents

set(debian ${PROJECT_BINARY_DIR}/debian)

# Debian's form of a licence: every line indented, an empty one is a dot.
file(READ LICENSE license)
string(FIND "${license}" "Permission is hereby granted" place)
string(REGEX MATCH "Copyright \\(c\\) ([^\n]+)" copyright_line "${license}")
if(place EQUAL -1 OR NOT copyright_line)
    message(FATAL_ERROR "LICENSE is not the text that cmake/debian/copyright.in names")
endif()
set(ZEPBMP_DEBIAN_COPYRIGHT ${CMAKE_MATCH_1})
string(SUBSTRING "${license}" ${place} -1 license)
string(STRIP "${license}" license)
string(REPLACE "\n\n" "\n.\n" license "${license}")
string(REPLACE "\n" "\n " license " ${license}")
set(ZEPBMP_DEBIAN_LICENSE "${license}")
configure_file(cmake/debian/copyright.in ${debian}/copyright @ONLY)

string(TIMESTAMP ZEPBMP_DEBIAN_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC)
configure_file(cmake/debian/changelog.in ${debian}/changelog.Debian @ONLY)

# compress(file output) at configure time; the output holds neither name nor time.
function(compress file output)
    execute_process(COMMAND ${ZEPBMP_GZIP} -9nc ${file} OUTPUT_FILE ${output} COMMAND_ERROR_IS_FATAL ANY)
endfunction()
compress(${debian}/changelog.Debian ${debian}/changelog.Debian.gz)
compress(${PROJECT_SOURCE_DIR}/CHANGELOG.md ${debian}/changelog.gz)
set_property(DIRECTORY ${PROJECT_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS CHANGELOG.md LICENSE)

foreach(package component IN ZIP_LISTS packages components)
    install(FILES ${debian}/copyright ${debian}/changelog.gz ${debian}/changelog.Debian.gz
        DESTINATION share/doc/${package} COMPONENT ${component})
endforeach()
install(FILES docs/compatibility.md docs/polygons.md docs/rectangles.md docs/rounding.md
    DESTINATION share/doc/libzepbmp-dev COMPONENT development)
install(DIRECTORY examples/c examples/cpp DESTINATION share/doc/libzepbmp-dev/examples COMPONENT development
    FILES_MATCHING PATTERN "*.c" PATTERN "*.h" PATTERN "*.cpp" PATTERN "*.hpp" PATTERN "*_win32.c" EXCLUDE)
install(FILES docs/transition.md docs/cluster.md DESTINATION share/doc/zepbmp-tools COMPONENT tools)
install(FILES docs/frei0r.md DESTINATION share/doc/zepbmp-frei0r COMPONENT frei0r)

# The manual page is what the program tells of itself. The program is a target of a folder that CMake reads later.
cmake_language(DEFER CALL zepbmp_manual_page)
function(zepbmp_manual_page)
    set(page ${PROJECT_BINARY_DIR}/debian/zepbmp-transition.1.gz)
    add_custom_command(OUTPUT ${page} DEPENDS zepbmp-transition VERBATIM
        COMMAND ${ZEPBMP_HELP2MAN} --no-info --section 1 --name "joins two videos by a transition"
                --output zepbmp-transition.1 $<TARGET_FILE:zepbmp-transition>
        COMMAND ${ZEPBMP_GZIP} -9nf zepbmp-transition.1
        WORKING_DIRECTORY ${PROJECT_BINARY_DIR}/debian)
    add_custom_target(manual_page ALL DEPENDS ${page})
    install(FILES ${page} DESTINATION share/man/man1 COMPONENT tools)
endfunction()

# ---------------------------------------------------------------- packages

# For the packages of programs that use the library: what they depend on, by the symbols that they use.
file(STRINGS ${zepbmp_map} symbols REGEX "^ +bmp_[a-z_]+;$")
list(TRANSFORM symbols REPLACE "^ +(bmp_[a-z_]+);$" " \\1@ZEPBMP_1 1.0.0")
list(JOIN symbols "\n" symbols)
file(CONFIGURE OUTPUT debian/symbols @ONLY CONTENT "libzepbmp.so.1 ${library_package} #MINVER#
* Build-Depends-Package: libzepbmp-dev
 ZEPBMP_1@ZEPBMP_1 1.0.0
@symbols@
")
file(CONFIGURE OUTPUT debian/shlibs @ONLY CONTENT "libzepbmp 1 ${library_package} (>= 1.0.0)\n")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zepbmp)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_COMPONENTS_ALL ${components})
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debian/strip.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debian/finish.cmake)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has its own
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${ZEPBMP_DEBIAN_REVISION})
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${ZEPBMP_DEBIAN_MAINTAINER})
set(CPACK_DEBIAN_PACKAGE_SOURCE zepbmp)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)

set(what "zepbmp clears, copies, blits, blends, de-interlaces and resamples video frames
in memory, draws soft shapes into weight maps and maps frames onto polygons.
The result is the same to the last bit on every processor.")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${library_package})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
    ${debian}/shlibs ${debian}/symbols ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "raster operations on video frames - shared library
${what}
.
This package holds the shared library.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libzepbmp-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${library_package} (= ${ZEPBMP_DEBIAN_VERSION})")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "raster operations on video frames - development files
${what}
.
This package holds the headers, the static library, what CMake and pkg-config
need to find it, documents and examples.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME zepbmp-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION video)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "raster operations on video frames - programs
${what}
.
This package holds zepbmp-transition, which joins two videos by a dissolve, a
soft shape, a picture that flies in, a turning cube and other transitions, and
scripts that render them on a Slurm cluster.")

set(CPACK_DEBIAN_FREI0R_PACKAGE_NAME zepbmp-frei0r)
set(CPACK_DEBIAN_FREI0R_PACKAGE_SECTION video)
set(CPACK_DEBIAN_FREI0R_PACKAGE_SHLIBDEPS ON)
set(CPACK_COMPONENT_FREI0R_DESCRIPTION "raster operations on video frames - frei0r plug-ins
${what}
.
This package holds frei0r plug-ins: wipes, a dissolve, a picture that flies in,
a corner pin, a spotlight and a frame rebuilt from one field, for ffmpeg,
GStreamer and the editors that use MLT.")

include(CPack)
