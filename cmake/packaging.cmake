# What `cmake --install` lays out: headers, libraries, a CMake package (zepbmp::zepbmp, zepbmp::static), pkg-config.
#
# Four components, which become Debian's packages: runtime is what a program needs to run, development what it needs to
# be built, tools the programs, frei0r the plug-ins. `cmake --install` without --component installs all of them.
option(ZEPBMP_INSTALL "Make the rules of `cmake --install`" ${PROJECT_IS_TOP_LEVEL})
if(NOT ZEPBMP_INSTALL)
    return()
endif()
include(CMakePackageConfigHelpers)

install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development
    FILES_MATCHING PATTERN "*.h" PATTERN "*.hpp")
install(TARGETS zepbmp zepbmp_static EXPORT zepbmp
    RUNTIME COMPONENT runtime
    LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
    ARCHIVE COMPONENT development)
if(WIN32)
    install(FILES ${ZEPBMP_MSVC_IMPORT_LIBRARY} DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
    include(windows_zip)
endif()

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/zepbmp)
install(EXPORT zepbmp NAMESPACE zepbmp:: FILE zepbmpTargets.cmake DESTINATION ${package_dir} COMPONENT development)
configure_package_config_file(cmake/zepbmpConfig.cmake.in zepbmpConfig.cmake INSTALL_DESTINATION ${package_dir}
    NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(zepbmpConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/zepbmpConfig.cmake ${PROJECT_BINARY_DIR}/zepbmpConfigVersion.cmake
    DESTINATION ${package_dir} COMPONENT development)

# The prefix is found from the .pc file's own place, so an installed tree can be moved; the system's own tree is not.
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    set(ZEPBMP_PC_PREFIX /usr)
else()
    file(RELATIVE_PATH ZEPBMP_PC_PREFIX "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/prefix")
    string(PREPEND ZEPBMP_PC_PREFIX "\${pcfiledir}/")
endif()
if(WIN32)
    set(ZEPBMP_PC_LIBS_PRIVATE -lgdi32)
endif()
configure_file(cmake/zepbmp.pc.in zepbmp.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zepbmp.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# What other folders install without naming a component.
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME tools)

if(ZEPBMP_DEBIAN_PACKAGES)
    include(debian_packages)
endif()
