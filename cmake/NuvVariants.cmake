# The six processor generations of the primitive layer and the instruction sets their
# bodies may use. m7 serves slots 0 and 1, n8 and u8 slots 2 and 3, y8 slot 4, e9 slot 5,
# l9 slot 6.
set(NUV_VARIANTS m7 n8 u8 y8 e9 l9)
set(NUV_VARIANT_FLAGS_m7 -msse3)
set(NUV_VARIANT_FLAGS_n8 -mssse3)
set(NUV_VARIANT_FLAGS_u8 -mssse3)
set(NUV_VARIANT_FLAGS_y8 -msse4.1)
set(NUV_VARIANT_FLAGS_e9 -mavx)
set(NUV_VARIANT_FLAGS_l9 -mavx2 -mfma -mbmi -mbmi2)

# nuv_add_variants(<out-var> <sources>...): compiles the sources once per variant into an
# object library nuv_prim_<variant> and stores the list of their objects in <out-var>.
# Each compilation sees NUV_V (the variant's token, used as its namespace and prefix) and
# NUV_V_ID (0 for m7 up to 5 for l9).
function(nuv_add_variants out)
    set(objects)
    set(id 0)
    foreach(v IN LISTS NUV_VARIANTS)
        add_library(nuv_prim_${v} OBJECT ${ARGN})
        target_include_directories(nuv_prim_${v} PRIVATE ${PROJECT_SOURCE_DIR}
                                                         ${PROJECT_SOURCE_DIR}/include)
        target_compile_definitions(nuv_prim_${v} PRIVATE NUV_V=${v} NUV_V_ID=${id})
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
