# find_package(tiffdll) gives the target tiffdll::tiffdll. The files lie as the package has them; each linker
# gets the import library of its own kind.
get_filename_component(tiffdll_ROOT "${CMAKE_CURRENT_LIST_DIR}/../../.." ABSOLUTE)
if(NOT TARGET tiffdll::tiffdll)
    add_library(tiffdll::tiffdll SHARED IMPORTED)
    set(tiffdll_IMPORT "${tiffdll_ROOT}/lib/libtiffdll.dll.a")
    if(NOT MINGW OR NOT EXISTS "${tiffdll_IMPORT}")
        set(tiffdll_IMPORT "${tiffdll_ROOT}/lib/tiffdll.lib")
    endif()
    set_target_properties(tiffdll::tiffdll PROPERTIES
        IMPORTED_LOCATION "${tiffdll_ROOT}/bin/TIFF.DLL"
        IMPORTED_IMPLIB "${tiffdll_IMPORT}"
        INTERFACE_INCLUDE_DIRECTORIES "${tiffdll_ROOT}/include")
    unset(tiffdll_IMPORT)
endif()
