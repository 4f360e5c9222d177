# Finds the OpenCV modules asked for as COMPONENTS and gives them the target names of OpenCV's own CMake
# package, opencv_<component>. That package is used where it is there; Debian ships it only with the
# metapackage libopencv-dev, which pulls in every module and its viewers, so that the packages of single
# modules (libopencv-core-dev, libopencv-imgproc-dev, ...) are found here by header and library.
#
# Also sets OpenCV_VERSION, OpenCV_INCLUDE_DIRS and OpenCV_LIBS.
include(FindPackageHandleStandardArgs)

find_package(OpenCV QUIET CONFIG COMPONENTS ${OpenCV_FIND_COMPONENTS})

if(OpenCV_CONFIG AND OpenCV_FOUND)
  find_package_handle_standard_args(OpenCV CONFIG_MODE HANDLE_COMPONENTS)
  return()
endif()

find_path(OpenCV_core_INCLUDE_DIR opencv2/core/version.hpp PATH_SUFFIXES opencv4)
find_path(OpenCV_config_INCLUDE_DIR opencv2/cvconfig.h PATH_SUFFIXES opencv4
          PATHS /usr/include/${CMAKE_LIBRARY_ARCHITECTURE})
mark_as_advanced(OpenCV_core_INCLUDE_DIR OpenCV_config_INCLUDE_DIR)
set(OpenCV_INCLUDE_DIRS ${OpenCV_core_INCLUDE_DIR})
if(OpenCV_config_INCLUDE_DIR)
  list(APPEND OpenCV_INCLUDE_DIRS ${OpenCV_config_INCLUDE_DIR})
  list(REMOVE_DUPLICATES OpenCV_INCLUDE_DIRS)
endif()

if(OpenCV_core_INCLUDE_DIR)
  file(STRINGS ${OpenCV_core_INCLUDE_DIR}/opencv2/core/version.hpp version_lines
       REGEX "^#define CV_VERSION_(MAJOR|MINOR|REVISION) +[0-9]+")
  string(REGEX REPLACE "[^0-9;]+" "" version_numbers "${version_lines}")
  list(JOIN version_numbers "." OpenCV_VERSION)
endif()

# The modules that a module links itself.
set(OpenCV_imgproc_needs core)
set(OpenCV_imgcodecs_needs imgproc core)
set(OpenCV_videoio_needs imgcodecs imgproc core)

set(OpenCV_LIBS)
set(OpenCV_packages)
foreach(component IN LISTS OpenCV_FIND_COMPONENTS)
  find_library(OpenCV_${component}_LIBRARY opencv_${component})
  find_path(OpenCV_${component}_HEADER_DIR opencv2/${component}.hpp PATH_SUFFIXES opencv4)
  mark_as_advanced(OpenCV_${component}_LIBRARY OpenCV_${component}_HEADER_DIR)
  list(APPEND OpenCV_packages libopencv-${component}-dev)
  if(OpenCV_${component}_LIBRARY AND OpenCV_${component}_HEADER_DIR)
    set(OpenCV_${component}_FOUND TRUE)
    list(APPEND OpenCV_LIBS opencv_${component})
    if(NOT TARGET opencv_${component})
      list(TRANSFORM OpenCV_${component}_needs PREPEND opencv_ OUTPUT_VARIABLE needed_targets)
      add_library(opencv_${component} SHARED IMPORTED)
      set_target_properties(
        opencv_${component}
        PROPERTIES IMPORTED_LOCATION "${OpenCV_${component}_LIBRARY}"
                   INTERFACE_INCLUDE_DIRECTORIES "${OpenCV_INCLUDE_DIRS}"
                   INTERFACE_LINK_LIBRARIES "${needed_targets}")
    endif()
  endif()
endforeach()

list(JOIN OpenCV_packages " " OpenCV_packages)
find_package_handle_standard_args(
  OpenCV
  REQUIRED_VARS OpenCV_core_INCLUDE_DIR
  VERSION_VAR OpenCV_VERSION
  HANDLE_COMPONENTS
  REASON_FAILURE_MESSAGE "On Debian: apt-get install ${OpenCV_packages}, or set OpenCV_DIR or CMAKE_PREFIX_PATH.")
