# Compiler flags.
#   zepbmp_project_flags(target)   for all code of the project: warnings are errors, no contraction
#   zepbmp_library_flags(target)   the library itself besides: no exceptions, no RTTI, nothing visible but what says so
#   zepbmp_set_flags(out set)      the flags of an instruction set

if(NOT CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|amd64|i[3-6]86)$")
    message(FATAL_ERROR "zepbmp is a library for x86 processors, not for ${CMAKE_SYSTEM_PROCESSOR}")
endif()
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    set(ZEPBMP_32BIT ON)
else()
    set(ZEPBMP_32BIT OFF)
endif()

set(zepbmp_instrumentation)
if(ZEPBMP_SANITIZE)
    # The library has no RTTI, which the vptr check needs.
    list(APPEND zepbmp_instrumentation -fsanitize=${ZEPBMP_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    if(ZEPBMP_SANITIZE MATCHES "undefined")
        list(APPEND zepbmp_instrumentation -fno-sanitize=vptr)
    endif()
endif()
if(ZEPBMP_COVERAGE)
    list(APPEND zepbmp_instrumentation --coverage -fprofile-abs-path)
endif()
add_compile_options(${zepbmp_instrumentation})
add_link_options(${zepbmp_instrumentation})

function(zepbmp_project_flags target)
    target_compile_options(${target} PRIVATE
        -Wall -Wextra -Wpedantic $<$<BOOL:${ZEPBMP_WERROR}>:-Werror> -ffp-contract=off
        # GCC 12 misjudges std::string's operator+.
        $<$<AND:$<COMPILE_LANG_AND_ID:CXX,GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>)
endfunction()

function(zepbmp_library_flags target)
    zepbmp_project_flags(${target})
    target_compile_options(${target} PRIVATE
        -fno-math-errno -fvisibility=hidden
        # 64-bit Windows: no variable comes from another DLL, so none needs a pointer of its own on the way to it.
        $<$<AND:$<BOOL:${WIN32}>,$<NOT:$<BOOL:${ZEPBMP_32BIT}>>>:-mcmodel=small>
        $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions;-fno-rtti;-fvisibility-inlines-hidden;-fno-threadsafe-statics>)
    set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE ON)
endfunction()

# In 32-bit code a caller's stack may be aligned to 4 bytes; code that spills vector registers aligns it again.
# -mavx2 comes without -mfma: a fused multiply-add rounds once where two operations round twice.
function(zepbmp_set_flags out set)
    set(flags_mmx -mmmx)
    set(flags_mmxext -mmmx)
    set(flags_sse2 -msse2)
    set(flags_avx2 -mavx2)
    set(flags_avx512 -mavx512f -mavx512bw -mavx512vl -mavx512dq)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # GCC 12 takes the undefined value in its own AVX-512 header for an unset variable.
        list(APPEND flags_avx512 -Wno-maybe-uninitialized -Wno-uninitialized)
    endif()
    if(ZEPBMP_32BIT)
        foreach(name IN ITEMS sse2 avx2)
            list(APPEND flags_${name} -mfpmath=sse)
        endforeach()
        foreach(name IN ITEMS mmx mmxext sse2 avx2)
            list(APPEND flags_${name} -mstackrealign)
        endforeach()
    endif()
    if(WIN32 AND NOT ZEPBMP_32BIT AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # There a frame of GCC's keeps to multiples of 16, and all the same GCC as it is released takes the slots of wide
        # registers in it for aligned.
        foreach(name IN ITEMS avx2 avx512)
            list(APPEND flags_${name} -Wa,-muse-unaligned-vector-move)
        endforeach()
    endif()
    set(${out} ${flags_${set}} PARENT_SCOPE)
endfunction()
