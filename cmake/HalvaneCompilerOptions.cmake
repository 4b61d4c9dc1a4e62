# Warnings and sanitizers shared by every target of the project.
#
# halvane_target_options(<target>) turns on the project's warning set for code
# we own; third-party headers come in as SYSTEM includes and stay quiet.

add_library(halvane_build_options INTERFACE)
target_compile_options(halvane_build_options INTERFACE
    -Wall -Wextra
    $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor>
    # Exported functions are not replaced at load time, so calls between
    # them inside a library bind directly and may be inlined instead of
    # going through the procedure linkage table: the typed accessors are a
    # chain of such calls.
    -fno-semantic-interposition
    # Calls into the other libraries (the CoreFoundation layer, above all)
    # jump through the resolved address at once rather than through a
    # procedure linkage table stub first.
    -fno-plt)

if(HALVANE_SANITIZE)
    string(REPLACE "," ";" _halvane_sanitizers "${HALVANE_SANITIZE}")
    foreach(_sanitizer IN LISTS _halvane_sanitizers)
        if(NOT _sanitizer MATCHES "^(address|undefined|leak|thread)$")
            message(FATAL_ERROR "Unsupported sanitizer '${_sanitizer}' in HALVANE_SANITIZE")
        endif()
    endforeach()
    # Applied globally so that tests, examples and benchmarks link the same runtime.
    add_compile_options(-fsanitize=${HALVANE_SANITIZE} -fno-omit-frame-pointer
                        -fno-sanitize-recover=undefined)
    add_link_options(-fsanitize=${HALVANE_SANITIZE})
endif()

if(HALVANE_FUZZ)
    if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
        message(FATAL_ERROR "HALVANE_FUZZ needs clang (libFuzzer)")
    endif()
    # Coverage instrumentation and the sanitizers for every library; the
    # fuzz targets add the libFuzzer driver (tests/fuzz).
    add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-omit-frame-pointer
                        -fno-sanitize-recover=undefined)
    add_link_options(-fsanitize=address,undefined)
endif()

function(halvane_target_options target)
    target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:halvane_build_options>)
    # A shared library calls its own exported functions directly rather than
    # through the procedure linkage table; nothing replaces them at load time.
    get_target_property(_type ${target} TYPE)
    if(_type STREQUAL "SHARED_LIBRARY")
        target_link_options(${target} PRIVATE -Wl,-Bsymbolic-functions)
    endif()
endfunction()
