# OpenCV, where it is installed, for what compares with it or shows how to use both: the interface
# targets ky_opencv (core and imgproc) and ky_opencv_files (with imgcodecs). The libraries do not need
# it. Debian's development packages of single modules bring no package file.
find_path(KY_OPENCV_INCLUDE opencv2/imgproc.hpp PATH_SUFFIXES opencv4)
find_library(KY_OPENCV_CORE opencv_core)
find_library(KY_OPENCV_IMGPROC opencv_imgproc)
find_library(KY_OPENCV_IMGCODECS opencv_imgcodecs)

if(KY_OPENCV_INCLUDE AND KY_OPENCV_CORE AND KY_OPENCV_IMGPROC)
  add_library(ky_opencv INTERFACE)
  target_include_directories(ky_opencv SYSTEM INTERFACE ${KY_OPENCV_INCLUDE})
  target_link_libraries(ky_opencv INTERFACE ${KY_OPENCV_IMGPROC} ${KY_OPENCV_CORE})
  if(KY_OPENCV_IMGCODECS AND EXISTS ${KY_OPENCV_INCLUDE}/opencv2/imgcodecs.hpp)
    add_library(ky_opencv_files INTERFACE)
    target_link_libraries(ky_opencv_files INTERFACE ${KY_OPENCV_IMGCODECS} ky_opencv)
  endif()
else()
  message(STATUS "OpenCV core and imgproc not found: what compares with them is left out")
endif()
