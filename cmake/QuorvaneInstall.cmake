# Headers, libraries, the tool with its man page and completion, the CMake package and the pkg-config file.

include(CMakePackageConfigHelpers)

set(QUORVANE_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Quorvane)

install(TARGETS ${QUORVANE_FORMS} EXPORT QuorvaneTargets)
install(DIRECTORY include/quorvane DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(QUORVANE_TOOL)
    install(TARGETS quorvane_tool)
    find_program(SCDOC scdoc)
    if(SCDOC)
        set(page ${CMAKE_CURRENT_SOURCE_DIR}/docs/man/quorvane.1.scd)
        add_custom_command(
            OUTPUT quorvane.1
            COMMAND ${CMAKE_COMMAND} -DSCDOC=${SCDOC} -DPAGE=${page} -DOUTPUT=quorvane.1 -P
                    ${CMAKE_CURRENT_SOURCE_DIR}/cmake/make_man_page.cmake
            DEPENDS ${page} cmake/make_man_page.cmake
            VERBATIM)
        add_custom_target(quorvane_man_page ALL DEPENDS quorvane.1)
        install(FILES ${CMAKE_CURRENT_BINARY_DIR}/quorvane.1
                DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
    endif()
    # The tool writes its completion itself, where it runs on this machine.
    if(NOT CMAKE_CROSSCOMPILING)
        function(quorvane_install_completion shell file folder)
            set(file ${CMAKE_CURRENT_BINARY_DIR}/completion/${file})
            install(CODE "
                file(MAKE_DIRECTORY \"${CMAKE_CURRENT_BINARY_DIR}/completion\")
                execute_process(COMMAND \"$<TARGET_FILE:quorvane_tool>\" completion ${shell}
                                OUTPUT_FILE \"${file}\" COMMAND_ERROR_IS_FATAL ANY)")
            install(FILES ${file} DESTINATION ${CMAKE_INSTALL_DATADIR}/${folder})
        endfunction()
        quorvane_install_completion(bash quorvane bash-completion/completions)
        quorvane_install_completion(zsh _quorvane zsh/site-functions)
        quorvane_install_completion(fish quorvane.fish fish/vendor_completions.d)
    endif()
endif()

install(EXPORT QuorvaneTargets NAMESPACE Quorvane:: DESTINATION ${QUORVANE_PACKAGE_DIR})
configure_package_config_file(cmake/QuorvaneConfig.cmake.in QuorvaneConfig.cmake
                              INSTALL_DESTINATION ${QUORVANE_PACKAGE_DIR})
write_basic_package_version_file(QuorvaneConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/QuorvaneConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/QuorvaneConfigVersion.cmake
        DESTINATION ${QUORVANE_PACKAGE_DIR})

# quorvane.pc is completed when the library is installed: `cmake --install --prefix` may name another
# prefix, below which the relative ones of its folders stand.
set(QUORVANE_PC_PREFIX "@QUORVANE_PC_PREFIX@")
cmake_path(APPEND QUORVANE_PC_INCLUDEDIR "\${prefix}" ${CMAKE_INSTALL_INCLUDEDIR})
cmake_path(APPEND QUORVANE_PC_LIBDIR "\${prefix}" ${CMAKE_INSTALL_LIBDIR})
set(QUORVANE_PC_LIBRARY quorvane)
if(NOT quorvane IN_LIST QUORVANE_FORMS)
    set(QUORVANE_PC_LIBRARY ${QUORVANE_STATIC_NAME})
    set(QUORVANE_PC_DEFINITIONS -DQUORVANE_STATIC)
endif()
configure_file(cmake/quorvane.pc.in quorvane.pc.in @ONLY)
install(CODE "
    cmake_path(ABSOLUTE_PATH CMAKE_INSTALL_PREFIX OUTPUT_VARIABLE QUORVANE_PC_PREFIX)
    configure_file(\"${CMAKE_CURRENT_BINARY_DIR}/quorvane.pc.in\"
                   \"${CMAKE_CURRENT_BINARY_DIR}/quorvane.pc\" @ONLY)")
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/quorvane.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
