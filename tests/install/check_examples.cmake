# Builds the programs in examples/ against an installed package, as their readers would, and
# runs them without telling the loader where the libraries lie: the C++ host on the bundled
# frame and classes, the C program on its own picture, the Python example with the prefix's
# site packages on PYTHONPATH, as a user of the prefix sets it.
include(${CMAKE_CURRENT_LIST_DIR}/install_prefix.cmake)

function(build_example name)
    run(${CMAKE_COMMAND} -S ${NUV_SOURCE_DIR}/examples/${name} -B ${WORK_DIR}/${name}
        -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_BUILD_TYPE=${BUILD_TYPE})
    run(${CMAKE_COMMAND} --build ${WORK_DIR}/${name})
endfunction()

build_example(cpp_host)
run_clean(-- ${WORK_DIR}/cpp_host/segment_frames ${NUV_SOURCE_DIR}/data/frame.png
          ${NUV_SOURCE_DIR}/data/classes.txt)
expect("${run_output}" "frame 0: 640x480, segmented in place \\(no pixel copied\\)"
       "frame, image and result alike \\(yes\\)"
       "\n  ball +11929 pixels, centre \\(170, 300\\)\n"
       "\n  cone +6657 pixels, centre \\(150, 113\\)\n")

# The C program calls primitives only: its linker drops libnuv_core.so.0 as not needed.
build_example(c_primitives)
run_clean(-- ${WORK_DIR}/c_primitives/primitives)
expect("${run_output}" "ippInit: status -?[0-9]+, slot [0-6]" "mean 115.0")

if(PYTHON)
    file(GLOB site ${prefix}/lib/python3*/dist-packages)
    run_clean(PYTHONPATH=${site} -- ${PYTHON} ${NUV_SOURCE_DIR}/examples/python/train_and_segment.py
              ${NUV_SOURCE_DIR}/data/frame.png)
endif()
