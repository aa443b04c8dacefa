# Makes the zip for Windows from a build, unpacks it elsewhere, and uses nothing but what was in it: with both import
# libraries, with one made from zepbmp.def, with the commands that its README tells. Any failure ends it.
#   cmake -D BUILD=... -D SOURCE=... -D WORK=... -D NAME=... -D BITS=32|64 -D C_COMPILER=... -D DLLTOOL=...
#         -D LLD_LINK=... -D PYTHON=... -D EMULATOR=... -P test_zip.cmake
include(${CMAKE_CURRENT_LIST_DIR}/run.cmake)

file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK}/unpacked)
run(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --component zip --prefix ${WORK}/made)

# The same bytes again, also from files with other times and permissions.
set(ENV{SOURCE_DATE_EPOCH} 1700000000)
run(COMMAND ${PYTHON} ${SOURCE}/scripts/lib/make_zip.py made/${NAME} first.zip)
run(COMMAND cp -r made again)
run(COMMAND chmod -R 700 again)
run(COMMAND ${PYTHON} ${SOURCE}/scripts/lib/make_zip.py again/${NAME} second.zip)
file(SHA256 ${WORK}/first.zip first)
file(SHA256 ${WORK}/second.zip second)
if(NOT first STREQUAL second)
    message(FATAL_ERROR "two zips of the same files differ")
endif()

file(ARCHIVE_EXTRACT INPUT ${WORK}/first.zip DESTINATION ${WORK}/unpacked)
set(root ${WORK}/unpacked/${NAME})
file(GLOB_RECURSE files RELATIVE ${WORK}/unpacked ${WORK}/unpacked/*)
list(TRANSFORM files REPLACE "^${NAME}/" "")
set(expected LICENSE README.md bin/show_win32.exe bin/zepbmp.dll docs/polygons.md docs/rectangles.md docs/rounding.md
    docs/windows.md examples/show_win32.c include/zepbmp.h lib/libzepbmp.dll.a lib/zepbmp.lib zepbmp.def)
if(NOT files STREQUAL expected)
    message(FATAL_ERROR "the zip holds: ${files}\nnot: ${expected}")
endif()

# Every link of its documents leads somewhere.
foreach(name IN ITEMS README.md docs/polygons.md docs/rectangles.md docs/rounding.md docs/windows.md)
    file(READ ${root}/${name} text)
    get_filename_component(folder ${root}/${name} DIRECTORY)
    string(REPLACE "](" "<link>" text "${text}")  # CMake's lists count brackets
    string(REGEX MATCHALL "<link>[^)#: ]+" links "${text}")
    foreach(link IN LISTS links)
        string(SUBSTRING "${link}" 6 -1 link)
        if(NOT EXISTS "${folder}/${link}")
            message(FATAL_ERROR "${name} links to ${link}, which the zip does not hold")
        endif()
    endforeach()
endforeach()

# What the README tells to do with GNU's tools.
file(REMOVE ${root}/bin/show_win32.exe)
file(STRINGS ${root}/README.md commands REGEX "^    [a-z0-9_]+-w64-mingw32-")
list(LENGTH commands count)
if(NOT count EQUAL 2)
    message(FATAL_ERROR "expected a line for gcc and one for dlltool in README.md, found: ${commands}")
endif()
foreach(command IN LISTS commands)
    separate_arguments(command UNIX_COMMAND "${command}")
    run(FOLDER ${root} COMMAND ${command})
endforeach()
foreach(made IN ITEMS bin/show_win32.exe lib/libzepbmp-made.a)
    if(NOT EXISTS ${root}/${made})
        message(FATAL_ERROR "README.md's commands do not make ${made}")
    endif()
endforeach()

# Programs by each import library, run beside the DLL.
set(host ${SOURCE}/cmake/consumer)
foreach(library IN ITEMS libzepbmp.dll.a libzepbmp-made.a)
    run(FOLDER ${root} COMMAND ${C_COMPILER} -Iinclude ${host}/host.c lib/${library} -o bin/host.exe)
    run(FOLDER ${root}/bin COMMAND ${EMULATOR} host.exe)
endforeach()

# The Microsoft-style linker, with the objects of MinGW's C runtime, one name of which it spells otherwise.
foreach(file IN ITEMS crt2.o libmingw32.a libmingwex.a libmsvcrt.a libgcc.a libkernel32.a libuser32.a libgdi32.a)
    run(COMMAND ${C_COMPILER} -print-file-name=${file} OUTPUT path)
    list(APPEND runtime ${path})
endforeach()
if(BITS EQUAL 32)
    set(machine /machine:x86 /safeseh:no /alternatename:__image_base__=___ImageBase)
else()
    set(machine /machine:x64 /alternatename:__image_base__=__ImageBase)
endif()
foreach(source IN ITEMS ${host}/host.c examples/show_win32.c)
    get_filename_component(name ${source} NAME_WE)
    run(FOLDER ${root} COMMAND ${C_COMPILER} -Iinclude -c ${source} -o bin/${name}.obj)
    run(FOLDER ${root} COMMAND ${LLD_LINK} /nologo ${machine} /subsystem:console /nodefaultlib /lldmingw
        /debug:none /entry:mainCRTStartup bin/${name}.obj lib/zepbmp.lib
        ${runtime} /out:bin/lld_${name}.exe)
endforeach()
run(FOLDER ${root}/bin COMMAND ${EMULATOR} lld_host.exe)
