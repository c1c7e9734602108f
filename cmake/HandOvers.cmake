# What shows the thread sanitizer how libraries hand things from thread to thread.
if(NOT STILLWICK_SANITIZE STREQUAL thread)
    return()
endif()
set(folder ${PROJECT_SOURCE_DIR}/Tests/HandOvers)
add_library(HandOvers STATIC ${folder}/ClockWait.cpp ${folder}/Qt.cpp)
target_link_libraries(HandOvers PRIVATE Qt6::Core ${CMAKE_DL_LIBS})
target_link_libraries(StillwickOptions INTERFACE HandOvers)
# Whoever links OpenCV gets the other as an object: a library might come too late on the linker's line.
add_library(OpenCvHandOvers OBJECT ${folder}/OpenCv.cpp)
target_include_directories(OpenCvHandOvers SYSTEM PRIVATE ${OPENCV_INCLUDE_DIR})
set_property(TARGET OpenCV::core APPEND PROPERTY INTERFACE_SOURCES $<TARGET_OBJECTS:OpenCvHandOvers>)
