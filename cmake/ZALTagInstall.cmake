# What `cmake --install` puts where: headers, the library, the CMake package, the pkg-config file; the program adds
# itself in cli/.

include(CMakePackageConfigHelpers)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/ZALTag)
set(pkgconfig_folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/zaltag TYPE INCLUDE COMPONENT development)
install(TARGETS zaltag EXPORT ZALTagTargets
    LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
    ARCHIVE COMPONENT development
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT ZALTagTargets NAMESPACE ZALTag:: DESTINATION ${package_folder} COMPONENT development)

configure_package_config_file(cmake/ZALTagConfig.cmake.in ${PROJECT_BINARY_DIR}/ZALTagConfig.cmake
    INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/ZALTagConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/ZALTagConfig.cmake ${PROJECT_BINARY_DIR}/ZALTagConfigVersion.cmake
    DESTINATION ${package_folder} COMPONENT development)

# The path from the folder of the pkg-config file to the prefix, so that the installed tree can be moved.
file(RELATIVE_PATH ZALTAG_PREFIX_FROM_PKGCONFIG /p/${pkgconfig_folder} /p)
# Only a static library has what is below it in every program's link; pkg-config wants each of these for the flags alone.
if(NOT BUILD_SHARED_LIBS)
    string(CONCAT ZALTAG_PRIVATE "Requires.private: taglib fmt simdjson libpng libjpeg libwebp zlib pugixml expat libutf8proc\n"
        "Libs.private: -lb64 -ldl -pthread\n")
endif()
configure_file(cmake/zaltag.pc.in ${PROJECT_BINARY_DIR}/zaltag.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zaltag.pc DESTINATION ${pkgconfig_folder} COMPONENT development)
