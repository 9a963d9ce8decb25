# Installs the build in BUILD below WORK and builds the project beside this file against it, by the
# CMake package and by pkg-config.
#
# cmake -DBUILD=... -DWORK=... -DCOMPILER=... -DC_COMPILER=... "-DFORMS=<library>;..." -DLIBDIR=...
#       -P run.cmake

include(${CMAKE_CURRENT_LIST_DIR}/steps.cmake)

set(prefix ${WORK}/prefix)
file(REMOVE_RECURSE ${WORK})
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix})
use_by_cmake(${prefix} ${FORMS})
use_by_pkg_config(${prefix}/${LIBDIR})
