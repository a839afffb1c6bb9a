# Shared by the install checks: a fresh scratch prefix under WORK_DIR with the built package
# installed into it; run(), which stops the check with the output of a failed command; and
# run_clean(), which runs a program as a user of the prefix would, with an environment that
# holds no loader or Python path of ours.
file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)

function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE err)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "failed: ${ARGN}\n${out}\n${err}")
    endif()
    set(run_output "${out}" PARENT_SCOPE)
endfunction()

# run_clean(<environment assignments>... -- <command>...)
function(run_clean)
    list(FIND ARGN -- split)
    list(SUBLIST ARGN 0 ${split} assignments)
    math(EXPR split "${split} + 1")
    list(SUBLIST ARGN ${split} -1 command)
    run(env -i PATH=/usr/bin:/bin HOME=${WORK_DIR} ${assignments} ${command})
    set(run_output "${run_output}" PARENT_SCOPE)
endfunction()

# Output lines that must appear, as regular expressions.
function(expect output)
    foreach(pattern ${ARGN})
        if(NOT output MATCHES "${pattern}")
            message(FATAL_ERROR "no match for \"${pattern}\" in:\n${output}")
        endif()
    endforeach()
endfunction()

if(NOT NO_INSTALL)
    run(${CMAKE_COMMAND} --install ${NUV_BINARY_DIR} --prefix ${prefix})
endif()
