# tiff_compile(TARGET [LIBRARY]): the house's warnings, and for library code no exceptions and
# no run-time types.
function(tiff_compile target)
    cmake_parse_arguments(PARSE_ARGV 1 arg "LIBRARY" "" "")
    target_compile_features(${target} PUBLIC cxx_std_20)
    target_include_directories(${target} PUBLIC ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
    if(MSVC)
        target_compile_options(${target} PRIVATE /W4 /WX /permissive-)
        target_compile_definitions(${target} PRIVATE _CRT_SECURE_NO_WARNINGS)
        if(arg_LIBRARY)
            target_compile_options(${target} PRIVATE /GR-)
            target_compile_definitions(${target} PRIVATE _HAS_EXCEPTIONS=0)
        endif()
    else()
        target_compile_options(${target} PRIVATE -Wall -Wextra -Wconversion -Werror
                                                 -Wno-missing-field-initializers
                                                 $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
        if(arg_LIBRARY)
            target_compile_options(${target} PRIVATE -fno-exceptions -fno-rtti)
        endif()
    endif()
endfunction()
