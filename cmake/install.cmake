# What an installed copy has. Names of the package are not the DLL's: another library has those.
set(TIFF_CMAKE_FOLDER lib/cmake/tiffdll)
install(TARGETS TIFF RUNTIME DESTINATION bin ARCHIVE DESTINATION lib)
if(MINGW)
    install(FILES $<TARGET_FILE:TIFF>.debug DESTINATION share/tiffdll/symbols)
endif()
if(TIFF_TOOLS)
    install(TARGETS tifftool tiffview RUNTIME DESTINATION bin)
endif()
install(DIRECTORY include/tiff DESTINATION include)

# The import library for the other linker, from the same list of names.
find_program(TIFF_DLLTOOL NAMES llvm-dlltool llvm-dlltool-14)
if(MINGW AND TIFF_DLLTOOL)
    set(library ${PROJECT_BINARY_DIR}/tiffdll.lib)
    add_custom_command(OUTPUT ${library} DEPENDS ${PROJECT_SOURCE_DIR}/exports/tiff.def VERBATIM
                       COMMAND ${TIFF_DLLTOOL} -m i386:x86-64 -d ${PROJECT_SOURCE_DIR}/exports/tiff.def
                               -l ${library})
    add_custom_target(tiffdll_lib ALL DEPENDS ${library})
    install(FILES ${library} DESTINATION lib)
endif()

include(CMakePackageConfigHelpers)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tiffdll-config-version.cmake
                                 COMPATIBILITY SameMajorVersion)
configure_file(cmake/tiffdll.pc.in ${PROJECT_BINARY_DIR}/tiffdll.pc @ONLY)
install(FILES cmake/tiffdll-config.cmake ${PROJECT_BINARY_DIR}/tiffdll-config-version.cmake
        DESTINATION ${TIFF_CMAKE_FOLDER})
install(FILES ${PROJECT_BINARY_DIR}/tiffdll.pc DESTINATION lib/pkgconfig)

install(FILES LICENSE README.md CHANGELOG.md SECURITY.md exports/abi.txt DESTINATION share/doc/tiffdll)
install(DIRECTORY docs DESTINATION share/doc/tiffdll PATTERN reference EXCLUDE)
foreach(folder samples examples bindings)
    if(EXISTS ${PROJECT_SOURCE_DIR}/${folder})
        install(DIRECTORY ${folder} DESTINATION share/tiffdll
                PATTERN make-bindings EXCLUDE PATTERN __pycache__ EXCLUDE)
    endif()
endforeach()
# Made by the tool itself; ./package does it.
install(DIRECTORY ${PROJECT_BINARY_DIR}/shell/ DESTINATION share OPTIONAL)
install(DIRECTORY ${PROJECT_BINARY_DIR}/reference/ DESTINATION share/doc/tiffdll/reference OPTIONAL)
