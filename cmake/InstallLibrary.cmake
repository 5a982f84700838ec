# SPDX-License-Identifier: MIT
# The files that `cmake --install` installs for users of the libraries: headers, libraries, pkg-config files, CMake
# package.
include(CMakePackageConfigHelpers)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/ZvIptvServiceApi")

# Only the two libraries are exported: their parts and the libraries that they link are private. Each has a separate
# file, since the client layer may be missing.
foreach(name IN ITEMS ServiceApi Client)
    install(TARGETS ${name} EXPORT ZvIptv${name}Targets)
    install(EXPORT ZvIptv${name}Targets NAMESPACE ZvIptv:: DESTINATION "${package_dir}")
endforeach()
install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/zviptv" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")

write_basic_package_version_file("${PROJECT_BINARY_DIR}/ZvIptvServiceApiConfigVersion.cmake"
    COMPATIBILITY SameMajorVersion)
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/ZvIptvServiceApiConfig.cmake.in"
    "${PROJECT_BINARY_DIR}/ZvIptvServiceApiConfig.cmake"
    INSTALL_DESTINATION "${package_dir}")
install(FILES
    "${PROJECT_BINARY_DIR}/ZvIptvServiceApiConfig.cmake"
    "${PROJECT_BINARY_DIR}/ZvIptvServiceApiConfigVersion.cmake"
    DESTINATION "${package_dir}")

# Paths relative to the file itself, so that an installation can be moved.
file(RELATIVE_PATH pc_to_prefix "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
string(REGEX REPLACE "/$" "" pc_to_prefix "${pc_to_prefix}")
foreach(name IN ITEMS zv-iptv-service-api zv-iptv-client)
    configure_file("${PROJECT_SOURCE_DIR}/cmake/${name}.pc.in" "${PROJECT_BINARY_DIR}/${name}.pc" @ONLY)
    install(FILES "${PROJECT_BINARY_DIR}/${name}.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
endforeach()
