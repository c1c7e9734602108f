# stillwick_folder(TARGET FOLDER Name SOURCES … PUBLIC … PRIVATE …)
#
# One library per folder. A folder's headers are included as "Folder/Header.h", and are found only by
# targets that link the folder: each folder has an include root of its own, in which it is the only
# entry. So an include against the direction of the arrows does not compile.
function(stillwick_folder target)
    cmake_parse_arguments(ARG "" "FOLDER" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
    set(root ${PROJECT_BINARY_DIR}/roots/${ARG_FOLDER})
    file(MAKE_DIRECTORY ${root})
    file(CREATE_LINK ${PROJECT_SOURCE_DIR}/${ARG_FOLDER} ${root}/${ARG_FOLDER} SYMBOLIC)
    add_library(${target} STATIC ${ARG_SOURCES})
    target_include_directories(${target} PUBLIC ${root})
    target_link_libraries(${target} PUBLIC ${ARG_PUBLIC} PRIVATE StillwickOptions ${ARG_PRIVATE})
endfunction()

# stillwick_program(NAME SOURCES … LINKS …): an executable with our options.
function(stillwick_program name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE StillwickOptions ${ARG_LINKS})
    if(TARGET HandOvers)
        target_link_libraries(${name} PRIVATE HandOvers)
    endif()
endfunction()
