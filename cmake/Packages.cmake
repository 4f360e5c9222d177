# Debian packages, one for each component of the installation: `make packages`. The folder of the libraries follows from
# the prefix, so this wants a build that was configured with CMAKE_INSTALL_PREFIX=/usr, on Debian.
find_program(DPKG_SHLIBDEPS dpkg-shlibdeps)
if(NOT ZELWELD_BUILD_PYTHON OR NOT ZELWELD_BUILD_TOOLS OR NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr" OR NOT DPKG_SHLIBDEPS)
  return()
endif()

# component, package, section, packages of which it may hold compiled parts, for their notices
set(packages
    "library     libzelwelddetect0    libs     nlohmann-json3-dev"
    "development libzelwelddetect-dev libdevel"
    "program     zelweld              science  nlohmann-json3-dev libcli11-dev libjs-dygraphs"
    "python      python3-zelweld      python   pybind11-dev nlohmann-json3-dev libcli11-dev libjs-dygraphs")

set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_COMPONENTS_ALL library development program python)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/packages/finish.cmake)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "zelWeldDetect maintainers <maintainers@zelwelddetect.invalid>" CACHE STRING "Of the packages")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/src)

set(own_library "libzelwelddetect0 (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
get_directory_property(python_minor DIRECTORY python DEFINITION Python3_VERSION_MINOR)
math(EXPR next_python_minor "${python_minor} + 1")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${own_library}, libopencv-core-dev")
set(CPACK_DEBIAN_PROGRAM_PACKAGE_DEPENDS "${own_library}")
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
    "${own_library}, python3 (>= 3.${python_minor}), python3 (<< 3.${next_python_minor}), python3-numpy")
set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS "zelweld, python3-tqdm, python3-fsspec, python3-distributed")

set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each has its own
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION
    "weld seam detection in laser stripe images - library
Finds the weld seam in the camera image of a laser stripe, follows it from
frame to frame, measures the joint, and tells why a frame shows no seam.")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
    "weld seam detection in laser stripe images - development files
Headers, CMake package, pkg-config file, documents and examples.")
set(CPACK_COMPONENT_PROGRAM_DESCRIPTION
    "weld seam detection in laser stripe images - program
Tracks seams in folders of frames and in videos, explains lost ones in a
report, tries parameters, and simulates frames with known seams.")
set(CPACK_COMPONENT_PYTHON_DESCRIPTION
    "weld seam detection in laser stripe images - Python module
Trackers, the plain call, measures and simulated frames on numpy arrays.")

# The module, into the folder of Debian's packages; any other prefix has its own, so only a package holds it.
set(module_dir lib/python3/dist-packages/zelweld)
install(TARGETS zelweld_core LIBRARY DESTINATION ${module_dir} COMPONENT python EXCLUDE_FROM_ALL)
install(
  DIRECTORY python/zelweld/
  DESTINATION ${module_dir}
  COMPONENT python EXCLUDE_FROM_ALL
  FILES_MATCHING
  PATTERN *.py
  PATTERN *.pyi
  PATTERN py.typed)

set(work ${PROJECT_BINARY_DIR}/package-files)
configure_file(cmake/packages/changelog.in ${work}/changelog.Debian @ONLY)
configure_file(cmake/packages/shlibs.in ${work}/shlibs @ONLY)
file(COPY_FILE CHANGELOG.md ${work}/changelog ONLY_IF_DIFFERENT)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${work}/shlibs ${PROJECT_SOURCE_DIR}/cmake/packages/triggers)
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/packages/postinst
                                              ${PROJECT_SOURCE_DIR}/cmake/packages/prerm)

add_custom_command(
  OUTPUT ${work}/changelog.gz ${work}/changelog.Debian.gz
  COMMAND ${GZIP} -9nkf changelog changelog.Debian
  DEPENDS ${work}/changelog ${work}/changelog.Debian
  WORKING_DIRECTORY ${work}
  VERBATIM)
add_custom_target(package_changelogs ALL DEPENDS ${work}/changelog.gz ${work}/changelog.Debian.gz)

foreach(row IN LISTS packages)
  separate_arguments(row UNIX_COMMAND ${row})
  list(POP_FRONT row component package section)
  string(TOUPPER ${component} key)
  set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${package})
  set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${section})

  file(READ cmake/packages/copyright.txt notices)
  foreach(source IN LISTS row)
    file(READ /usr/share/doc/${source}/copyright notice)
    string(APPEND notices "\n---- ${source}\n\n${notice}")
  endforeach()
  file(CONFIGURE OUTPUT ${work}/${package}/copyright CONTENT "${notices}" @ONLY)

  set(document_dir ${CMAKE_INSTALL_DATADIR}/doc/${package})
  install(FILES ${work}/${package}/copyright ${work}/changelog.gz ${work}/changelog.Debian.gz
          DESTINATION ${document_dir} COMPONENT ${component} EXCLUDE_FROM_ALL)
endforeach()
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "zelweld, libopencv-imgcodecs-dev")
install(FILES README.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libzelwelddetect-dev
        COMPONENT development EXCLUDE_FROM_ALL)
install(DIRECTORY docs examples DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libzelwelddetect-dev
        COMPONENT development EXCLUDE_FROM_ALL)

include(CPack)
