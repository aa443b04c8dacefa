# Run by CPack on the packages that it has made: gives them the field Multi-Arch, takes out scripts that run ldconfig,
# which the trigger does, and packs them again, every file with the time SOURCE_DATE_EPOCH.
if(NOT DEFINED ENV{SOURCE_DATE_EPOCH})
    message(FATAL_ERROR "set SOURCE_DATE_EPOCH to the time that the packages' files get, in seconds since 1970")
endif()
set(multi_arch_libzepbmp1 same)
set(multi_arch_libzepbmp-dev same)
set(multi_arch_zepbmp-tools foreign)
set(multi_arch_zepbmp-frei0r "")  # hosts look in one folder, whatever the architecture

foreach(file IN LISTS CPACK_PACKAGE_FILES)
    get_filename_component(name ${file} NAME)
    string(REGEX REPLACE "_.*" "" package ${name})
    if(NOT DEFINED multi_arch_${package})
        message(FATAL_ERROR "unknown package ${file}")
    endif()
    set(folder ${CPACK_TEMPORARY_DIRECTORY}/finish/${package})
    file(REMOVE_RECURSE ${folder})
    file(MAKE_DIRECTORY ${CPACK_TEMPORARY_DIRECTORY}/finish)
    execute_process(COMMAND dpkg-deb --raw-extract ${file} ${folder} COMMAND_ERROR_IS_FATAL ANY)
    file(REMOVE ${folder}/DEBIAN/postinst ${folder}/DEBIAN/postrm)
    file(READ ${folder}/DEBIAN/control control)
    string(STRIP "${control}" control)
    if(multi_arch_${package})
        string(APPEND control "\nMulti-Arch: ${multi_arch_${package}}")
    endif()
    file(WRITE ${folder}/DEBIAN/control "${control}\n")
    execute_process(COMMAND find ${folder} -exec touch --no-dereference --date=@$ENV{SOURCE_DATE_EPOCH} {} +
        COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND dpkg-deb --root-owner-group -Zxz --build ${folder} ${file}
        OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
endforeach()
