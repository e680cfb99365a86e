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
            target_compile_options(${target} PRIVATE -fstack-protector-strong $<$<BOOL:${arg_LIBRARY}>:-g1>
                                                     -ffile-prefix-map=${PROJECT_SOURCE_DIR}=tiffdll)
            target_link_options(${target} PRIVATE -fstack-protector-strong)
        endif()
        if(arg_LIBRARY)
            target_compile_options(${target} PRIVATE -fno-exceptions -fno-rtti)
        endif()
    endif()
endfunction()

# tiff_link(TARGET [SYMBOLS]): a program or library that needs no other run-time libraries than Windows has, lies at
# addresses that cannot be guessed, and has the same bytes after each build. The symbols go to a file of their own,
# FILE.debug, which debuggers find by its name.
function(tiff_link target)
    if(MINGW AND "SYMBOLS" IN_LIST ARGN)
        set(file $<TARGET_FILE_NAME:${target}>)
        # Without the variable the copy gets the time of its making.
        set(objcopy ${CMAKE_COMMAND} -E env SOURCE_DATE_EPOCH=0 ${CMAKE_OBJCOPY})
        add_custom_command(TARGET ${target} POST_BUILD VERBATIM WORKING_DIRECTORY $<TARGET_FILE_DIR:${target}>
                           COMMAND ${objcopy} --only-keep-debug ${file} ${file}.debug
                           COMMAND ${objcopy} --strip-all ${file}
                           COMMAND ${objcopy} --add-gnu-debuglink=${file}.debug ${file})
    elseif(MINGW)
        target_link_options(${target} PRIVATE -s)
    endif()
    if(MINGW)
        target_link_options(${target} PRIVATE -static -Wl,--no-insert-timestamp
                                              -Wl,--dynamicbase,--high-entropy-va,--nxcompat)
    endif()
endfunction()
