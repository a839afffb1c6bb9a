# Builds and runs every C, C++ and Python block of the README against an installed package, the
# way the README tells a user to: pkg-config with the prefix's run path, PYTHONPATH set to the
# prefix's site packages, nothing else. The programs run in the source tree, where the
# README's paths (data/frame.png, data/classes.txt) lie.
include(${CMAKE_CURRENT_LIST_DIR}/install_prefix.cmake)
set(snippets ${WORK_DIR}/snippets)
run(${PYTHON} ${CMAKE_CURRENT_LIST_DIR}/readme_snippets.py ${NUV_SOURCE_DIR}/README.md ${snippets})
set(ENV{PKG_CONFIG_PATH} ${prefix}/lib/pkgconfig)
execute_process(COMMAND pkg-config --cflags --libs nuv_cv opencv4 OUTPUT_VARIABLE flags
                RESULT_VARIABLE result OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "pkg-config does not know nuv_cv")
endif()
separate_arguments(flags UNIX_COMMAND "${flags}")
file(GLOB site ${prefix}/lib/python3*/dist-packages)

file(GLOB programs ${snippets}/snippet_*)
list(LENGTH programs count)
if(count LESS 4)
    message(FATAL_ERROR "the README has ${count} code blocks, fewer than its C, C++ and Python ones")
endif()
foreach(source ${programs})
    get_filename_component(name ${source} NAME_WE)
    if(source MATCHES "\\.c$")
        run(cc -std=c99 ${source} ${flags} -Wl,-rpath,${prefix}/lib -o ${WORK_DIR}/${name})
    elseif(source MATCHES "\\.cpp$")
        run(c++ -std=c++17 -fPIC ${source} ${flags} -Wl,-rpath,${prefix}/lib -o ${WORK_DIR}/${name})
    endif()
    if(source MATCHES "\\.py$")
        execute_process(COMMAND env -i PATH=/usr/bin:/bin PYTHONPATH=${site} ${PYTHON} ${source}
                        WORKING_DIRECTORY ${NUV_SOURCE_DIR} RESULT_VARIABLE result
                        OUTPUT_VARIABLE out ERROR_VARIABLE err)
    else()
        execute_process(COMMAND env -i PATH=/usr/bin:/bin ${WORK_DIR}/${name}
                        WORKING_DIRECTORY ${NUV_SOURCE_DIR} RESULT_VARIABLE result
                        OUTPUT_VARIABLE out ERROR_VARIABLE err)
    endif()
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "${name} failed:\n${out}\n${err}")
    endif()
    string(APPEND outputs "${out}")
endforeach()
# What the README says the blocks give.
expect("${outputs}" "status 0: 10 255 30 255 50 60 255 80" "\nball 11929 \\(170, 300\\)\n" "done")
