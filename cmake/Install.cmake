# What `cmake --install` puts in place besides the program: library, headers, CMake package and pkg-config file. The
# components are those of the packages.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/zelWeldDetect)

install(TARGETS zelWeldDetect EXPORT zelWeldDetectTargets LIBRARY COMPONENT library
                                                                  NAMELINK_COMPONENT development)
file(GLOB public_headers CONFIGURE_DEPENDS include/*.h)
install(FILES ${public_headers} ${PROJECT_BINARY_DIR}/include/zelWeldDetectExport.h
              ${PROJECT_BINARY_DIR}/include/zelWeldDetectVersion.h
        TYPE INCLUDE COMPONENT development)
install(EXPORT zelWeldDetectTargets NAMESPACE zelWeldDetect:: DESTINATION ${package_dir}
        COMPONENT development)

configure_package_config_file(cmake/zelWeldDetectConfig.cmake.in zelWeldDetectConfig.cmake
                              INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(zelWeldDetectConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/zelWeldDetectConfig.cmake
              ${PROJECT_BINARY_DIR}/zelWeldDetectConfigVersion.cmake cmake/FindOpenCV.cmake
        DESTINATION ${package_dir} COMPONENT development)

# The installed tree can be moved: pkg-config finds the prefix from where the file itself lies.
file(RELATIVE_PATH prefix_from_pcdir /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)

list(TRANSFORM OpenCV_INCLUDE_DIRS PREPEND -I OUTPUT_VARIABLE opencv_cflags)
list(JOIN opencv_cflags " " opencv_cflags)
configure_file(cmake/zelWeldDetect.pc.in zelWeldDetect.pc.configured @ONLY)
file(GENERATE OUTPUT ${PROJECT_BINARY_DIR}/zelWeldDetect.pc INPUT ${PROJECT_BINARY_DIR}/zelWeldDetect.pc.configured)
install(FILES ${PROJECT_BINARY_DIR}/zelWeldDetect.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
        COMPONENT development)
