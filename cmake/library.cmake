# The library: compiled once, packed as a shared and as a static library.
#   zepbmp_sources(folder file...)   adds files; the name's ending picks flags and system

add_library(zepbmp_objects OBJECT)
if(WIN32)
    add_library(zepbmp SHARED platform/dll_entry_win32.cpp)
else()
    add_library(zepbmp SHARED $<TARGET_OBJECTS:zepbmp_objects>)
endif()
add_library(zepbmp_static STATIC $<TARGET_OBJECTS:zepbmp_objects>)
add_library(zepbmp::zepbmp ALIAS zepbmp)
add_library(zepbmp::static ALIAS zepbmp_static)

foreach(target IN ITEMS zepbmp_objects zepbmp zepbmp_static)
    zepbmp_library_flags(${target})
    target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}
        PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
    # AVX2 is built for every target, AVX-512 only where there are registers enough for it to pay.
    target_compile_definitions(${target} PRIVATE ZEPBMP_HAVE_AVX2=1)
    if(NOT ZEPBMP_32BIT)
        target_compile_definitions(${target} PRIVATE ZEPBMP_HAVE_AVX512=1)
    endif()
    set_target_properties(${target} PROPERTIES
        LINKER_LANGUAGE CXX
        RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}
        LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}
        ARCHIVE_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR})
endforeach()
set_target_properties(zepbmp_static PROPERTIES OUTPUT_NAME zepbmp EXPORT_NAME static)

if(WIN32)
    # What the DLL exports, and what its linkers are told: 32-bit names are decorated, 64-bit ones are not.
    set(zepbmp_def ${PROJECT_SOURCE_DIR}/platform/exports.def)
    set(ZEPBMP_IMPORT_DEF ${PROJECT_BINARY_DIR}/zepbmp.def)
    file(READ ${zepbmp_def} zepbmp_names)
    string(REGEX MATCHALL "_bmp_[a-z_]+@[0-9]+" zepbmp_names "${zepbmp_names}")
    if(ZEPBMP_32BIT)
        set(zepbmp_link_def ${zepbmp_def})
        set(zepbmp_entry _zepbmp_entry@12)
        set(zepbmp_msvc_machine /machine:x86 /safeseh:no)
        set(zepbmp_address_space)
    else()
        list(TRANSFORM zepbmp_names REPLACE "^_(.+)@[0-9]+$" "\\1")
        set(zepbmp_link_def ${ZEPBMP_IMPORT_DEF})
        set(zepbmp_entry zepbmp_entry)
        set(zepbmp_msvc_machine /machine:x64)
        set(zepbmp_address_space LINKER:--high-entropy-va)
    endif()
    list(TRANSFORM zepbmp_names PREPEND "    " OUTPUT_VARIABLE zepbmp_def_lines)
    list(JOIN zepbmp_def_lines "\n" zepbmp_def_lines)
    configure_file(platform/import.def.in ${ZEPBMP_IMPORT_DEF} @ONLY)
    set_property(DIRECTORY ${PROJECT_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${zepbmp_def})

    set(zepbmp_linker_map ${PROJECT_BINARY_DIR}/zepbmp.map)
    set_target_properties(zepbmp PROPERTIES PREFIX "" LINK_DEPENDS ${zepbmp_link_def})
    # The DLL is the exports and what they refer to. With an entry point of its own it holds no start-up code of the C
    # runtime; nothing applies run-time relocations then, so the linker may not make any. Without the time of day the
    # same sources give the same bytes.
    target_link_libraries(zepbmp_static PRIVATE gdi32)
    target_link_libraries(zepbmp PRIVATE zepbmp_static)
    target_link_options(zepbmp PRIVATE ${zepbmp_link_def}
        -nostartfiles LINKER:--entry=${zepbmp_entry} LINKER:--disable-auto-import
        LINKER:--dynamicbase LINKER:--nxcompat ${zepbmp_address_space} LINKER:--no-insert-timestamp
        LINKER:-Map=${zepbmp_linker_map} $<$<CONFIG:Release>:LINKER:--strip-all>)

    # The version resource.
    enable_language(RC)
    file(STRINGS LICENSE zepbmp_copyright REGEX "^Copyright " LIMIT_COUNT 1)
    configure_file(platform/version_win32.rc.in version.rc @ONLY)
    target_sources(zepbmp PRIVATE ${PROJECT_BINARY_DIR}/version.rc)

    # Import libraries, one for each of the common linkers. What the MinGW linker makes by itself for 32 bits resolves
    # other symbols than hosts refer to, because these exports carry their underscore; so it is replaced. The
    # Microsoft-style linker makes its import library only beside a DLL: that one is made of empty functions and is not
    # used for anything.
    find_program(ZEPBMP_LLD_LINK NAMES lld-link lld-link-14 HINTS /usr/lib/llvm-14/bin REQUIRED
        DOC "Makes zepbmp.lib, the import library for Microsoft-style linkers (package lld)")
    list(TRANSFORM zepbmp_names REPLACE ".+" ".globl \\0\n\\0: ret" OUTPUT_VARIABLE zepbmp_stub_lines)
    list(JOIN zepbmp_stub_lines "\n" zepbmp_stub_lines)
    file(CONFIGURE OUTPUT import.s CONTENT "${zepbmp_stub_lines}\n" @ONLY)
    set_property(DIRECTORY ${PROJECT_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS LICENSE)
    set(ZEPBMP_MSVC_IMPORT_LIBRARY ${PROJECT_BINARY_DIR}/zepbmp.lib)
    add_custom_command(TARGET zepbmp POST_BUILD WORKING_DIRECTORY ${PROJECT_BINARY_DIR}
        COMMAND ${CMAKE_DLLTOOL} --no-leading-underscore --deterministic-libraries --temp-prefix zepbmp
                --input-def ${ZEPBMP_IMPORT_DEF} --dllname $<TARGET_FILE_NAME:zepbmp>
                --output-lib $<TARGET_LINKER_FILE_NAME:zepbmp>
        COMMAND ${CMAKE_CXX_COMPILER} -c import.s -o import.obj
        COMMAND ${ZEPBMP_LLD_LINK} /nologo /dll /noentry ${zepbmp_msvc_machine} /nodefaultlib /timestamp:0
                /def:${ZEPBMP_IMPORT_DEF} import.obj /out:import.dll /implib:zepbmp.lib
        COMMAND ${CMAKE_COMMAND} -E rm import.obj import.dll
        BYPRODUCTS ${ZEPBMP_MSVC_IMPORT_LIBRARY} ${zepbmp_linker_map}
        COMMENT "Making the import libraries" VERBATIM)
else()
    set(zepbmp_map ${PROJECT_SOURCE_DIR}/cmake/exports.map)
    set_target_properties(zepbmp PROPERTIES
        VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} LINK_DEPENDS ${zepbmp_map})
    target_link_options(zepbmp PRIVATE
        LINKER:--version-script=${zepbmp_map} LINKER:--as-needed LINKER:-z,relro LINKER:-z,now)
    if(NOT ZEPBMP_SANITIZE)
        target_link_options(zepbmp PRIVATE LINKER:--no-undefined)
    endif()
endif()

function(zepbmp_sources folder)
    foreach(file IN LISTS ARGN)
        if((file MATCHES "_win32\\.cpp$" AND NOT WIN32) OR (file MATCHES "_linux\\.cpp$" AND WIN32) OR
           (file MATCHES "_avx512\\.cpp$" AND ZEPBMP_32BIT))
            continue()
        endif()
        set(path ${PROJECT_SOURCE_DIR}/${folder}/${file})
        target_sources(zepbmp_objects PRIVATE ${path})
        if(file MATCHES "_(mmx|mmxext|sse2|avx2|avx512)\\.cpp$")
            zepbmp_set_flags(flags ${CMAKE_MATCH_1})
            set_source_files_properties(${path} TARGET_DIRECTORY zepbmp_objects PROPERTIES COMPILE_OPTIONS "${flags}")
        endif()
    endforeach()
endfunction()
