# Debian packages from the install components, built by `cpack` (`make package`): one runtime
# package per shared library, named after its SOVERSION as Debian names them, the development
# files, the Python module and the programs. Dependencies on other packages are read from the
# binaries by dpkg-shlibdeps; those between the nuv packages come from the component graph.
set(NUV_SOVERSION ${PROJECT_VERSION_MAJOR})
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME nuv)
set(CPACK_PACKAGE_VENDOR "nuv")
set(CPACK_PACKAGE_CONTACT "nuv developers <nuv@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "computer vision for frames one at a time")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
# dpkg-shlibdeps finds libnuv_core.so.0 and libnuv_cv.so.0 where the build left them.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

set(NUV_PACKAGE_COMPONENTS core cv dev)
if(NUV_BUILD_PYTHON)
    list(APPEND NUV_PACKAGE_COMPONENTS python)
endif()
if(NUV_BUILD_TOOLS)
    list(APPEND NUV_PACKAGE_COMPONENTS tools)
endif()
set(CPACK_COMPONENTS_ALL ${NUV_PACKAGE_COMPONENTS})

set(CPACK_DEBIAN_CORE_PACKAGE_NAME libnuv-core${NUV_SOVERSION})
set(CPACK_DEBIAN_CORE_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_CV_PACKAGE_NAME libnuv-cv${NUV_SOVERSION})
set(CPACK_DEBIAN_CV_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_DEV_PACKAGE_NAME libnuv-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
# The headers include OpenCV, Boost and Qt headers, and the CMake package finds them.
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "libopencv-dev, libboost-dev, qt6-base-dev")
set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-nuv)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3, python3-numpy")
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME nuv-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION science)

# The class studio among the programs runs on the Python package, and reads videos through
# OpenCV's Python module.
if(NUV_BUILD_PYTHON)
    set(NUV_TOOLS_DEPENDS core cv python)
    set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "python3-opencv")
else()
    set(NUV_TOOLS_DEPENDS core cv)
endif()
include(CPack)
cpack_add_component(core DISPLAY_NAME "libnuv_core"
                    DESCRIPTION "nuv foundation: value types, image model, containers, log")
cpack_add_component(cv DEPENDS core DISPLAY_NAME "libnuv_cv"
                    DESCRIPTION "nuv front end and the dispatched primitive layer")
cpack_add_component(dev DEPENDS core cv DISPLAY_NAME "nuv development files"
                    DESCRIPTION "headers, CMake package and pkg-config files of nuv")
cpack_add_component(python DEPENDS core cv DISPLAY_NAME "nuv for Python 3"
                    DESCRIPTION "the Python package nuv over NumPy arrays, with type stubs")
cpack_add_component(tools DEPENDS ${NUV_TOOLS_DEPENDS} DISPLAY_NAME "nuv programs"
                    DESCRIPTION "nuv_demo, nuv_train, nuv_make_frame, the class studio nuv_studio and the bundled frame")
