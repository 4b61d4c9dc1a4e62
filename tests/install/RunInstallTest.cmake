# Installs BUILD_DIR into WORK_DIR/prefix, then configures, builds and runs
# the consumer project against it twice: once through find_package, once
# through pkg-config.

file(REMOVE_RECURSE "${WORK_DIR}")
set(prefix "${WORK_DIR}/prefix")

function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE err)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "Command failed (${result}): ${ARGN}\n${out}\n${err}")
    endif()
    set(last_output "${out}" PARENT_SCOPE)
endfunction()

run(${CMAKE_COMMAND} --install "${BUILD_DIR}" --prefix "${prefix}")

foreach(header CoreFoundation/CoreFoundation.h halvane/Halvane.h)
    if(NOT EXISTS "${prefix}/include/${header}")
        message(FATAL_ERROR "Missing installed header ${header}")
    endif()
endforeach()

set(flags "")
if(SANITIZE)
    set(flags "-fsanitize=${SANITIZE}")
endif()

foreach(mode cmake pkgconfig)
    set(build "${WORK_DIR}/consumer-${mode}")
    run(${CMAKE_COMMAND} -S "${CONSUMER_SOURCE_DIR}" -B "${build}" -G "${GENERATOR}"
        -DCMAKE_CXX_COMPILER=${CXX_COMPILER}
        -DCMAKE_PREFIX_PATH=${prefix}
        -DCONSUMER_MODE=${mode}
        "-DCMAKE_CXX_FLAGS=${flags}"
        "-DCMAKE_EXE_LINKER_FLAGS=${flags}")
    run(${CMAKE_COMMAND} --build "${build}")
    run("${build}/consumer")
    if(NOT last_output MATCHES "consumer: Halvane 0\\.1\\.0, hello, world \\(12 units\\)")
        message(FATAL_ERROR "Unexpected consumer output (${mode}): ${last_output}")
    endif()
endforeach()
