# The zip for 32-bit Windows: what `cmake --install <build folder> --component zip --prefix <folder>` lays out there as
# one folder. scripts/package builds and packs it, the test check.zip unpacks and uses it.

# The sample host is a target of a folder that CMake reads later.
cmake_language(DEFER CALL zepbmp_zip_rules)

macro(zepbmp_zip_install folder)
    install(FILES ${ARGN} DESTINATION ${zip_folder}/${folder} COMPONENT zip EXCLUDE_FROM_ALL)
endmacro()

function(zepbmp_zip_rules)
    set(zip_folder zepbmp-${PROJECT_VERSION}-win32)
    configure_file(cmake/windows_zip/README.md.in windows_zip/README.md @ONLY)
    zepbmp_zip_install(. ${PROJECT_BINARY_DIR}/windows_zip/README.md LICENSE ${ZEPBMP_IMPORT_DEF})
    zepbmp_zip_install(include include/zepbmp.h)
    zepbmp_zip_install(bin $<TARGET_FILE:zepbmp>)
    zepbmp_zip_install(lib $<TARGET_LINKER_FILE:zepbmp> ${ZEPBMP_MSVC_IMPORT_LIBRARY})
    zepbmp_zip_install(docs docs/windows.md docs/rounding.md docs/polygons.md docs/rectangles.md)
    zepbmp_zip_install(examples examples/c/show_win32.c)
    if(TARGET show_win32)
        # Its C runtime is part of it, so that it needs no DLL but zepbmp.dll beside it.
        target_link_options(show_win32 PRIVATE LINKER:--no-insert-timestamp $<$<CONFIG:Release>:LINKER:--strip-all>)
        install(PROGRAMS $<TARGET_FILE:show_win32> DESTINATION ${zip_folder}/bin COMPONENT zip EXCLUDE_FROM_ALL)
    else()
        install(CODE "message(FATAL_ERROR \"the zip holds the sample host: configure with ZEPBMP_EXAMPLES=ON\")"
            COMPONENT zip EXCLUDE_FROM_ALL)
    endif()
endfunction()
