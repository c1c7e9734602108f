# What shows the thread sanitizer how libraries hand things from thread to thread: objects, for of a library the linker
# would take only what nothing before it has.
if(NOT STILLWICK_SANITIZE STREQUAL thread)
    return()
endif()
set(folder ${PROJECT_SOURCE_DIR}/Tests/HandOvers)
add_library(HandOvers OBJECT ${folder}/Clone.cpp ${folder}/Qt.cpp)
target_link_libraries(HandOvers PRIVATE Qt6::Core ${CMAKE_DL_LIBS})
# Of use to programs that link OpenCV alone.
add_library(OpenCvHandOvers OBJECT ${folder}/OpenCv.cpp)
target_include_directories(OpenCvHandOvers SYSTEM PRIVATE ${OPENCV_INCLUDE_DIR})
set_property(TARGET OpenCV::core APPEND PROPERTY INTERFACE_SOURCES $<TARGET_OBJECTS:OpenCvHandOvers>)
