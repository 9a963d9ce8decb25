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

configure_file(cmake/quorvane.pc.in quorvane.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/quorvane.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
