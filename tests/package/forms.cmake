# The library in both forms and in each alone, built and installed as a part of the project in
# parent/, and used from there. One family is enough, and one folder for all builds: they differ in
# what is linked and where it goes.
#
# cmake -DSOURCE=... -DWORK=... -DCOMPILER=... -DC_COMPILER=... -DGENERATOR=... -DDESCRIBE=...
#       -P forms.cmake

include(${CMAKE_CURRENT_LIST_DIR}/steps.cmake)

# install_parent(<prefix> <option>...)
function(install_parent prefix)
    run(${CMAKE_COMMAND} -G ${GENERATOR} -S ${CMAKE_CURRENT_LIST_DIR}/parent -B ${WORK}/build
        -DCMAKE_CXX_COMPILER=${COMPILER} -DQUORVANE_SOURCE=${SOURCE} -DQUORVANE_FAMILIES=epc
        -DQUORVANE_DESCRIBE=${DESCRIBE} -DCMAKE_INSTALL_PREFIX=${WORK}/elsewhere ${ARGN})
    run(${CMAKE_COMMAND} --build ${WORK}/build --parallel 2)
    run(${CMAKE_COMMAND} --install ${WORK}/build --prefix ${prefix})
endfunction()

# expect_files(<prefix> <file>...): the libraries installed there.
function(expect_files prefix)
    file(GLOB found RELATIVE ${prefix} ${prefix}/lib/libquorvane*.a ${prefix}/lib/libquorvane*.so)
    if(NOT "${found}" STREQUAL "${ARGN}")
        message(SEND_ERROR "${prefix} has ${found}, not ${ARGN}")
    endif()
endfunction()

file(REMOVE_RECURSE ${WORK})

set(prefix ${WORK}/both)
install_parent(${prefix} -DLINKED=quorvane_static -DCMAKE_INSTALL_LIBDIR=lib)
expect_files(${prefix} lib/libquorvane.a lib/libquorvane.so)
use_by_cmake(${prefix} quorvane quorvane_static parent)
use_by_pkg_config(${prefix}/lib)

set(prefix ${WORK}/shared)
install_parent(${prefix} -DLINKED=quorvane -DBUILD_SHARED_LIBS=ON)
expect_files(${prefix} lib/libquorvane.so)
use_by_cmake(${prefix} quorvane parent)
use_by_pkg_config(${prefix}/lib)

# Here the static library and an import library would have one name.
set(prefix ${WORK}/static)
install_parent(${prefix} -DLINKED=quorvane -DBUILD_SHARED_LIBS=OFF
               -DCMAKE_IMPORT_LIBRARY_PREFIX=lib -DCMAKE_IMPORT_LIBRARY_SUFFIX=.a)
expect_files(${prefix} lib/libquorvane_static.a)
use_by_cmake(${prefix} quorvane quorvane_static parent)
use_by_pkg_config(${prefix}/lib)

# Folders that do not stand below the prefix.
set(folder ${WORK}/absolute)
install_parent(${WORK}/prefix -DCMAKE_INSTALL_LIBDIR=${folder}/libraries)
use_by_pkg_config(${folder}/libraries)
install_parent(${WORK}/prefix -DCMAKE_INSTALL_INCLUDEDIR=${folder}/headers)
file(REMOVE_RECURSE ${WORK}/prefix)
use_by_pkg_config(${folder}/libraries)
