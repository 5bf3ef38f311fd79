# What `cmake --install` puts into a prefix: the module with its SONAME, the public headers,
# a CMake package (Tolvane::tolvane, Tolvane::tolvane-sim) and a pkg-config file. The platform
# libraries are linked into the module, so none of them is installed.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(TOLVANE_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Tolvane)

install(TARGETS tolvane EXPORT TolvaneTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
# The room listener is how the barrage client talks to the service, not part of the host's API.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/tolvane DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    FILES_MATCHING PATTERN "*.h" PATTERN "i_room_listener.h" EXCLUDE)
# The simulator comes along so that a host can be tried without the source tree, and is
# exported too, so a host's tests name it as Tolvane::tolvane-sim instead of guessing its path.
install(TARGETS tolvane-sim EXPORT TolvaneTargets RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

install(EXPORT TolvaneTargets NAMESPACE Tolvane:: DESTINATION ${TOLVANE_CMAKE_DIR})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/TolvaneConfig.cmake.in
    ${CMAKE_BINARY_DIR}/TolvaneConfig.cmake INSTALL_DESTINATION ${TOLVANE_CMAKE_DIR})
# Before 1.0 a minor release may change the interface, so only the same minor version matches.
write_basic_package_version_file(${CMAKE_BINARY_DIR}/TolvaneConfigVersion.cmake
    VERSION ${PROJECT_VERSION} COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/TolvaneConfig.cmake ${CMAKE_BINARY_DIR}/TolvaneConfigVersion.cmake
    DESTINATION ${TOLVANE_CMAKE_DIR})

# The pkg-config file finds its prefix from its own place, so `cmake --install --prefix` works.
file(RELATIVE_PATH TOLVANE_PC_PREFIX_FROM_PCFILEDIR
    /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(${CMAKE_CURRENT_LIST_DIR}/tolvane.pc.in ${CMAKE_BINARY_DIR}/tolvane.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/tolvane.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
