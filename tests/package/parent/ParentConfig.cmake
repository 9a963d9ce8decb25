include(CMakeFindDependencyMacro)
find_dependency(Quorvane)
include("${CMAKE_CURRENT_LIST_DIR}/ParentTargets.cmake")
