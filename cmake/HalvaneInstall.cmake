# Installs the libraries and headers, a CMake package (find_package(Halvane
# CONFIG) gives Halvane::halvane, which brings Halvane::halvane-corefoundation
# with it) and a relocatable pkg-config file.

include(CMakePackageConfigHelpers)

set(HALVANE_CMAKE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/Halvane")
set(HALVANE_PKGCONFIG_DIR "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

install(TARGETS halvane-corefoundation halvane
    EXPORT HalvaneTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

install(DIRECTORY platform/cf/include/CoreFoundation
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY halvane/
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/halvane
    FILES_MATCHING PATTERN "*.h"
    PATTERN "detail" EXCLUDE)
# The one internal header that public inline code reads: HVArray's element
# accessors take the class type from its table.
install(FILES halvane/core/detail/ClassTypeTable.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/halvane/core/detail)

install(EXPORT HalvaneTargets
    NAMESPACE Halvane::
    DESTINATION ${HALVANE_CMAKE_DIR})

configure_package_config_file(cmake/HalvaneConfig.cmake.in
    "${CMAKE_CURRENT_BINARY_DIR}/HalvaneConfig.cmake"
    INSTALL_DESTINATION ${HALVANE_CMAKE_DIR})
write_basic_package_version_file(
    "${CMAKE_CURRENT_BINARY_DIR}/HalvaneConfigVersion.cmake"
    COMPATIBILITY SameMajorVersion)
install(FILES
    "${CMAKE_CURRENT_BINARY_DIR}/HalvaneConfig.cmake"
    "${CMAKE_CURRENT_BINARY_DIR}/HalvaneConfigVersion.cmake"
    DESTINATION ${HALVANE_CMAKE_DIR})

# The .pc file finds its prefix from its own location so that an installed
# tree can be moved.
file(RELATIVE_PATH HALVANE_PC_TO_PREFIX
    "/prefix/${HALVANE_PKGCONFIG_DIR}" "/prefix")
configure_file(cmake/halvane.pc.in "${CMAKE_CURRENT_BINARY_DIR}/halvane.pc" @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/halvane.pc"
    DESTINATION ${HALVANE_PKGCONFIG_DIR})
