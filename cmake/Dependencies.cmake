# Everything that is not ours. Debian 12 packages; scripts/setup.sh installs them.
find_package(PkgConfig REQUIRED)
find_package(Qt6 6.4 REQUIRED COMPONENTS Core Gui Widgets DBus Svg Concurrent Multimedia)
find_package(QCoro6 REQUIRED COMPONENTS Core DBus)
find_package(Threads REQUIRED)

pkg_check_modules(LIBAV REQUIRED IMPORTED_TARGET
    libavformat>=59 libavcodec>=59 libavutil>=57 libswscale>=6 libswresample>=4)
pkg_check_modules(ZIMG REQUIRED IMPORTED_TARGET zimg>=3.0)
pkg_check_modules(LIBPNG REQUIRED IMPORTED_TARGET libpng>=1.6)
pkg_check_modules(LIBDEFLATE REQUIRED IMPORTED_TARGET libdeflate>=1.10)

# Debian keeps OpenCV's CMake and pkg-config files in the 670 MB package libopencv-dev; the parts
# that we use are 55 MB and are found by hand.
find_path(OPENCV_INCLUDE_DIR opencv2/core.hpp PATH_SUFFIXES opencv4 REQUIRED)
foreach(part core imgproc)
    find_library(OPENCV_${part}_LIBRARY opencv_${part} REQUIRED)
    add_library(OpenCV::${part} UNKNOWN IMPORTED)
    set_target_properties(OpenCV::${part} PROPERTIES
        IMPORTED_LOCATION ${OPENCV_${part}_LIBRARY}
        INTERFACE_INCLUDE_DIRECTORIES ${OPENCV_INCLUDE_DIR})
endforeach()
target_link_libraries(OpenCV::imgproc INTERFACE OpenCV::core)
