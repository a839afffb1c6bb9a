# The processor generations of the primitive layer and the compiler flags of their bodies,
# read from the one list that the dispatch code and the tests read too.
file(STRINGS ${PROJECT_SOURCE_DIR}/primitives/dispatch/generations.def NUV_GENERATION_LINES
     REGEX "^NUV_GENERATION\\([a-z0-9]+,")
set_property(DIRECTORY ${PROJECT_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
             ${PROJECT_SOURCE_DIR}/primitives/dispatch/generations.def)
set(NUV_VARIANTS)
foreach(line IN LISTS NUV_GENERATION_LINES)
    string(REGEX MATCH "^NUV_GENERATION\\(([a-z0-9]+), *(.*)\\)" _ "${line}")
    list(APPEND NUV_VARIANTS ${CMAKE_MATCH_1})
    separate_arguments(NUV_VARIANT_FLAGS_${CMAKE_MATCH_1} UNIX_COMMAND "${CMAKE_MATCH_2}")
endforeach()
if(NOT NUV_VARIANTS)
    message(FATAL_ERROR "no NUV_GENERATION line in primitives/dispatch/generations.def")
endif()

# nuv_add_variants(<out-var> <sources>...): compiles the sources once per variant into an
# object library nuv_prim_<variant> and stores the list of their objects in <out-var>.
# Each compilation sees NUV_V (the variant's token, used as its namespace and prefix),
# NUV_V_ID (its place in the list, from 0) and NUV_SELF_<token>, by which the preprocessor
# tells its own token from the others.
function(nuv_add_variants out)
    set(objects)
    set(id 0)
    foreach(v IN LISTS NUV_VARIANTS)
        add_library(nuv_prim_${v} OBJECT ${ARGN})
        target_include_directories(nuv_prim_${v} PRIVATE ${PROJECT_SOURCE_DIR}
                                                         ${PROJECT_SOURCE_DIR}/include)
        target_compile_definitions(nuv_prim_${v} PRIVATE NUV_V=${v} NUV_V_ID=${id}
                                                         NUV_SELF_${v}=NUV_PROBE)
        target_compile_options(nuv_prim_${v} PRIVATE ${NUV_VARIANT_FLAGS_${v}}
                               -fvisibility=hidden -ffunction-sections
                               # Single-precision operations stay in their written order:
                               # a product and a sum fuse only where a body asks for it.
                               -ffp-contract=off)
        list(APPEND objects $<TARGET_OBJECTS:nuv_prim_${v}>)
        math(EXPR id "${id} + 1")
    endforeach()
    set(${out} ${objects} PARENT_SCOPE)
endfunction()
