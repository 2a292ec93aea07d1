# Installs into a clean prefix, then configures, builds and runs the consumer against it.
file(REMOVE_RECURSE ${WORK})
foreach(step
    "${CMAKE_COMMAND};--install;${BUILD};--prefix;${WORK}/prefix"
    "${CMAKE_COMMAND};-S;${SOURCE};-B;${WORK}/build;-G;Ninja;-DCMAKE_PREFIX_PATH=${WORK}/prefix;-DCMAKE_BUILD_TYPE=Release"
    "${CMAKE_COMMAND};--build;${WORK}/build"
    "${WORK}/build/consumer")
    execute_process(COMMAND ${step} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT status EQUAL 0)
        message(FATAL_ERROR "${step}\n${output}")
    endif()
endforeach()
file(GLOB_RECURSE plugins ${WORK}/prefix/*/libvellumdesigner.so)
if(DESIGNER AND NOT plugins)
    message(FATAL_ERROR "the designer plugin isn't installed")
endif()
