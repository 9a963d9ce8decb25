# Headers, libraries, the tool, the CMake package and the pkg-config file.

include(CMakePackageConfigHelpers)

set(QUORVANE_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Quorvane)

install(TARGETS ${QUORVANE_FORMS} EXPORT QuorvaneTargets)
install(DIRECTORY include/quorvane DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(QUORVANE_TOOL)
    install(TARGETS quorvane_tool)
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
