# Builds the Debian packages with CPack, unpacks them into a scratch root (installing them
# would change the machine the tests run on), checks their names and dependencies, and builds
# and runs hosts against the unpacked files: the C++ host with find_package, the README's C
# program with pkg-config, and the Python module.
set(NO_INSTALL ON)
include(${CMAKE_CURRENT_LIST_DIR}/install_prefix.cmake)
set(root ${WORK_DIR}/root)
run(cpack --config ${NUV_BINARY_DIR}/CPackConfig.cmake -B ${WORK_DIR}/debs)
file(GLOB debs ${WORK_DIR}/debs/*.deb)

function(field deb name)
    run(dpkg-deb --field ${deb} ${name})
    string(STRIP "${run_output}" value)
    set(value "${value}" PARENT_SCOPE)
endfunction()

# Package: expected dependencies, as regular expressions.
set(wanted_libnuv-core0 "libc6" "libopencv-core")
set(wanted_libnuv-cv0 "libnuv-core0 \\(= " "libopencv-imgproc")
set(wanted_libnuv-dev "libnuv-cv0 \\(= " "libnuv-core0 \\(= " "libopencv-dev")
set(wanted_python3-nuv "libnuv-cv0 \\(= " "python3-numpy")
set(wanted_nuv-tools "libnuv-cv0 \\(= " "libopencv-imgcodecs")
set(names)
foreach(deb ${debs})
    field(${deb} Package)
    set(package ${value})
    list(APPEND names ${package})
    field(${deb} Depends)
    expect("${value}" ${wanted_${package}})
    run(dpkg-deb -x ${deb} ${root})
endforeach()
list(SORT names)
set(expected libnuv-core0 libnuv-cv0 libnuv-dev nuv-tools)
if(PYTHON)
    list(APPEND expected python3-nuv)
    list(SORT expected)
endif()
if(NOT names STREQUAL expected)
    message(FATAL_ERROR "packages ${names}, expected ${expected}")
endif()

set(usr ${root}/usr)
run(${CMAKE_COMMAND} -S ${NUV_SOURCE_DIR}/examples/cpp_host -B ${WORK_DIR}/cpp_host
    -DCMAKE_PREFIX_PATH=${usr} -DCMAKE_BUILD_TYPE=${BUILD_TYPE})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/cpp_host)
run_clean(-- ${WORK_DIR}/cpp_host/segment_frames ${usr}/share/nuv/frame.png
          ${usr}/share/nuv/classes.txt)
expect("${run_output}" "\n  ball +11929 pixels, centre \\(170, 300\\)\n")

set(ENV{PKG_CONFIG_PATH} ${usr}/lib/pkgconfig)
run(pkg-config --cflags --libs nuv_cv)
string(STRIP "${run_output}" flags)
separate_arguments(flags UNIX_COMMAND "${flags}")
run(cc -std=c99 ${NUV_SOURCE_DIR}/examples/c_primitives/main.c ${flags} -Wl,-rpath,${usr}/lib
    -o ${WORK_DIR}/primitives)
run_clean(-- ${WORK_DIR}/primitives)
expect("${run_output}" "mean 115.0")

# The demo finds its frame in the package's share folder.
run_clean(-- ${usr}/bin/nuv_demo --out-dir ${WORK_DIR})
expect("${run_output}" "ball")

if(PYTHON)
    file(WRITE ${WORK_DIR}/check.py "import nuv, pathlib\n"
         "print(nuv.mean(nuv.imread('${usr}/share/nuv/frame.png')),\n"
         "      pathlib.Path(nuv.__file__).with_name('py.typed').exists())\n")
    run_clean(PYTHONPATH=${usr}/lib/python3/dist-packages -- ${PYTHON} ${WORK_DIR}/check.py)
    expect("${run_output}" "^\\[[0-9]+, [0-9]+, [0-9]+\\] True")
endif()
