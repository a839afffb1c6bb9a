# Builds the programs in examples/ against an installed package, as their readers would, and
# runs them: the C++ host on the bundled frame and classes, the C program on its own picture.
include(${CMAKE_CURRENT_LIST_DIR}/install_prefix.cmake)

function(build_example name)
    run(${CMAKE_COMMAND} -S ${NUV_SOURCE_DIR}/examples/${name} -B ${WORK_DIR}/${name}
        -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_BUILD_TYPE=${BUILD_TYPE})
    run(${CMAKE_COMMAND} --build ${WORK_DIR}/${name})
endfunction()

# Output lines that must appear, as regular expressions.
function(expect output)
    foreach(pattern ${ARGN})
        if(NOT output MATCHES "${pattern}")
            message(FATAL_ERROR "no match for \"${pattern}\" in:\n${output}")
        endif()
    endforeach()
endfunction()

build_example(cpp_host)
run(${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${prefix}/lib ${WORK_DIR}/cpp_host/segment_frames
    ${NUV_SOURCE_DIR}/data/frame.png ${NUV_SOURCE_DIR}/data/classes.txt)
expect("${run_output}" "frame 0: 640x480, segmented in place \\(no pixel copied\\)"
       "frame, image and result alike \\(yes\\)"
       "\n  ball +11929 pixels, centre \\(170, 300\\)\n"
       "\n  cone +6657 pixels, centre \\(150, 113\\)\n")

build_example(c_primitives)
run(${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${prefix}/lib ${WORK_DIR}/c_primitives/primitives)
expect("${run_output}" "ippInit: status -?[0-9]+, slot [0-6]" "mean 115.0")
