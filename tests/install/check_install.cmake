# Installs the built libraries into a scratch prefix, then builds and runs a small host
# program against them: once with find_package(nuv), once with pkg-config. Neither run is
# told where the libraries lie: the host's run path names the prefix, and libnuv_cv.so finds
# libnuv_core.so.0 beside itself.
include(${CMAKE_CURRENT_LIST_DIR}/install_prefix.cmake)
foreach(file include/nuv/core.h include/nuv/cv.h include/nuv/primitives.h include/nuv/opencv.h
             lib/pkgconfig/nuv_core.pc lib/pkgconfig/nuv_cv.pc lib/cmake/nuv/nuvConfig.cmake)
    if(NOT EXISTS ${prefix}/${file})
        message(FATAL_ERROR "not installed: ${file}")
    endif()
endforeach()

# find_package
run(${CMAKE_COMMAND} -S ${NUV_SOURCE_DIR}/tests/install/host -B ${WORK_DIR}/cmake-host
    -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_BUILD_TYPE=${BUILD_TYPE})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/cmake-host)
run_clean(-- ${WORK_DIR}/cmake-host/nuv_host)

# pkg-config, with the run path the README gives
find_program(PKG_CONFIG pkg-config REQUIRED)
set(ENV{PKG_CONFIG_PATH} ${prefix}/lib/pkgconfig)
execute_process(COMMAND ${PKG_CONFIG} --cflags --libs nuv_cv OUTPUT_VARIABLE flags
                RESULT_VARIABLE result OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "pkg-config does not know nuv_cv")
endif()
separate_arguments(flags UNIX_COMMAND "${flags}")
run(c++ -std=c++17 -fPIC ${NUV_SOURCE_DIR}/tests/install/host/host.cpp ${flags}
    -Wl,-rpath,${prefix}/lib -o ${WORK_DIR}/pkg-host)
run_clean(-- ${WORK_DIR}/pkg-host)
