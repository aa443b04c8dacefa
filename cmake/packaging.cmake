# What `cmake --install` lays out: header, libraries, a CMake package (zepbmp::zepbmp, zepbmp::zepbmp_static),
# pkg-config.
include(CMakePackageConfigHelpers)

install(FILES include/zepbmp.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(TARGETS zepbmp zepbmp_static EXPORT zepbmp)
if(WIN32)
    install(FILES ${ZEPBMP_MSVC_IMPORT_LIBRARY} DESTINATION ${CMAKE_INSTALL_LIBDIR})
    include(windows_zip)
endif()

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/zepbmp)
install(EXPORT zepbmp NAMESPACE zepbmp:: FILE zepbmp-targets.cmake DESTINATION ${package_dir})
configure_package_config_file(cmake/zepbmp-config.cmake.in zepbmp-config.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(zepbmp-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/zepbmp-config.cmake ${PROJECT_BINARY_DIR}/zepbmp-config-version.cmake
    DESTINATION ${package_dir})

# The prefix is found from the .pc file's own place, so an installed tree can be moved.
file(RELATIVE_PATH ZEPBMP_PC_PREFIX "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/prefix")
configure_file(cmake/zepbmp.pc.in zepbmp.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zepbmp.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
