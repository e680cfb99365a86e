# Takes the built files from the zip that lies two folders up, as ./package leaves it.
vcpkg_extract_source_archive(SOURCE_PATH
    ARCHIVE "${CMAKE_CURRENT_LIST_DIR}/../../tiffdll-@VERSION@-win64.zip")
file(COPY "${SOURCE_PATH}/include/tiff" DESTINATION "${CURRENT_PACKAGES_DIR}/include")
foreach(folder "" "/debug")
    file(COPY "${SOURCE_PATH}/bin/TIFF.DLL" DESTINATION "${CURRENT_PACKAGES_DIR}${folder}/bin")
    file(COPY "${SOURCE_PATH}/lib/tiffdll.lib" "${SOURCE_PATH}/lib/libtiffdll.dll.a"
         DESTINATION "${CURRENT_PACKAGES_DIR}${folder}/lib")
endforeach()
file(COPY "${SOURCE_PATH}/bin/tifftool.exe" "${SOURCE_PATH}/bin/tiffview.exe" "${SOURCE_PATH}/bin/TIFF.DLL"
     DESTINATION "${CURRENT_PACKAGES_DIR}/tools/tiffdll")
file(WRITE "${CURRENT_PACKAGES_DIR}/share/tiffdll/tiffdll-config.cmake" [[
if(NOT TARGET tiffdll::tiffdll)
    get_filename_component(tiffdll_ROOT "${CMAKE_CURRENT_LIST_DIR}/../.." ABSOLUTE)
    add_library(tiffdll::tiffdll SHARED IMPORTED)
    set_target_properties(tiffdll::tiffdll PROPERTIES
        IMPORTED_LOCATION "${tiffdll_ROOT}/bin/TIFF.DLL"
        IMPORTED_IMPLIB "${tiffdll_ROOT}/lib/tiffdll.lib"
        INTERFACE_INCLUDE_DIRECTORIES "${tiffdll_ROOT}/include")
endif()
]])
vcpkg_install_copyright(FILE_LIST "${SOURCE_PATH}/share/doc/tiffdll/LICENSE"
                                  "${SOURCE_PATH}/share/doc/tiffdll/NOTICES.txt")
