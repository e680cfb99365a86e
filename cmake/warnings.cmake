# tiff_compile(TARGET [LIBRARY]): the house's warnings, and for library code no exceptions and
# no run-time types.
function(tiff_compile target)
    cmake_parse_arguments(PARSE_ARGV 1 arg "LIBRARY" "" "")
    target_compile_features(${target} PRIVATE cxx_std_20)
    target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
    if(MSVC)
        target_compile_options(${target} PRIVATE /W4 /permissive- /utf-8 $<$<BOOL:${TIFF_WERROR}>:/WX>)
        target_compile_definitions(${target} PRIVATE _CRT_SECURE_NO_WARNINGS)
        if(arg_LIBRARY)
            target_compile_options(${target} PRIVATE /GR-)
            target_compile_definitions(${target} PRIVATE _HAS_EXCEPTIONS=0)
        endif()
    else()
        target_compile_options(${target} PRIVATE -Wall -Wextra -Wconversion
                                                 -Wno-missing-field-initializers
                                                 $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
                                                 $<$<BOOL:${TIFF_WERROR}>:-Werror>)
        if(MINGW)
            target_compile_options(${target} PRIVATE -fstack-protector-strong)
            target_link_options(${target} PRIVATE -fstack-protector-strong)
        endif()
        if(arg_LIBRARY)
            target_compile_options(${target} PRIVATE -fno-exceptions -fno-rtti)
        endif()
    endif()
endfunction()

# tiff_link(TARGET): a program or library that needs no other run-time libraries than Windows has, lies at
# addresses that cannot be guessed, and has the same bytes after each build.
function(tiff_link target)
    if(MINGW)
        target_link_options(${target} PRIVATE -static -s -Wl,--no-insert-timestamp
                                              -Wl,--dynamicbase,--high-entropy-va,--nxcompat)
    endif()
endfunction()
