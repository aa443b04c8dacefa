# The zip for 32-bit or 64-bit Windows: what `cmake --install <build folder> --component zip --prefix <folder>` lays out there as
# one folder. scripts/package builds and packs it, the test check.zip unpacks and uses it.
if(ZEPBMP_32BIT)
    set(ZEPBMP_WINDOWS_BITS 32)
    set(zepbmp_windows_processor "no more than a Pentium Pro has")
    set(zepbmp_gnu_prefix i686-w64-mingw32)
    set(zepbmp_dlltool_options "--no-leading-underscore ")  # the list has whole symbols
    set(zepbmp_msvc_prompt x86)
else()
    set(ZEPBMP_WINDOWS_BITS 64)
    set(zepbmp_windows_processor "no more than every x86-64 processor has")
    set(zepbmp_gnu_prefix x86_64-w64-mingw32)
    set(zepbmp_dlltool_options)
    set(zepbmp_msvc_prompt x64)
endif()
set(ZEPBMP_ZIP_NAME zepbmp-${PROJECT_VERSION}-win${ZEPBMP_WINDOWS_BITS})

# The sample host is a target of a folder that CMake reads later.
cmake_language(DEFER CALL zepbmp_zip_rules)

macro(zepbmp_zip_install folder)
    install(FILES ${ARGN} DESTINATION ${zip_folder}/${folder} COMPONENT zip EXCLUDE_FROM_ALL)
endmacro()

function(zepbmp_zip_rules)
    set(zip_folder ${ZEPBMP_ZIP_NAME})
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
