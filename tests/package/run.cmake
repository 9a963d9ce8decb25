# Installs the build in BUILD below WORK and builds the project beside this file against it, by the
# CMake package and by pkg-config.
#
# cmake -DBUILD=... -DWORK=... -DCOMPILER=... -P run.cmake

function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output
                    ERROR_VARIABLE output)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "${ARGN} failed (${result}):\n${output}")
    endif()
endfunction()

file(REMOVE_RECURSE ${WORK})
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/prefix)

run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR} -B ${WORK}/user
    -DCMAKE_PREFIX_PATH=${WORK}/prefix -DCMAKE_CXX_COMPILER=${COMPILER})
run(${CMAKE_COMMAND} --build ${WORK}/user)
run(${WORK}/user/user_shared)
run(${WORK}/user/user_static)

find_program(pkg_config pkg-config)
if(pkg_config)
    file(GLOB_RECURSE description ${WORK}/prefix/quorvane.pc)
    get_filename_component(folder ${description} DIRECTORY)
    get_filename_component(libraries ${folder} DIRECTORY)
    execute_process(
        COMMAND ${CMAKE_COMMAND} -E env PKG_CONFIG_PATH=${folder} ${pkg_config}
                --define-variable=prefix=${WORK}/prefix --cflags --libs quorvane
        OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    separate_arguments(flags UNIX_COMMAND "${flags}")
    run(${COMPILER} -std=c++20 ${CMAKE_CURRENT_LIST_DIR}/user.cpp -o ${WORK}/by_pkg_config ${flags}
        -Wl,-rpath,${libraries})
    run(${WORK}/by_pkg_config)
endif()
