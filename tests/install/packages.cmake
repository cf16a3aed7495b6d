# `make package`'s packages: the runtime and -dev .debs, unpacked with
# dpkg-deb -x as a sysroot, must give a consumer everything it needs through
# pkg-config and through find_package; the consumer runs against the
# unpacked runtime library.
file(REMOVE_RECURSE ${WORK_DIR})
set(root ${WORK_DIR}/root)

include(${CMAKE_CURRENT_LIST_DIR}/run.cmake)

run(${CMAKE_COMMAND} -E chdir ${BUILD_DIR} ${CPACK} -G DEB -B ${WORK_DIR}/packages)
file(GLOB debs ${WORK_DIR}/packages/*.deb)
list(LENGTH debs count)
if(NOT count EQUAL 2)
  message(FATAL_ERROR "expected a runtime and a -dev package, got: ${debs}")
endif()
foreach(deb IN LISTS debs)
  run(dpkg-deb -x ${deb} ${root})
endforeach()

file(GLOB_RECURSE pc ${root}/*/splinecore.pc)
get_filename_component(pc_dir "${pc}" DIRECTORY)
set(ENV{PKG_CONFIG_PATH} ${pc_dir})
execute_process(COMMAND pkg-config --cflags --libs splinecore OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE)
execute_process(COMMAND pkg-config --variable=libdir splinecore OUTPUT_VARIABLE libdir OUTPUT_STRIP_TRAILING_WHITESPACE)
separate_arguments(flags UNIX_COMMAND "${flags}")
run(${CXX} -std=c++17 ${CONSUMER_SOURCE}/main.cpp ${flags} -Wl,-rpath,${libdir} -o ${WORK_DIR}/consumer_pc)
run(${WORK_DIR}/consumer_pc)

run(${CMAKE_COMMAND} -S ${CONSUMER_SOURCE} -B ${WORK_DIR}/consumer -G ${GENERATOR} -DCMAKE_PREFIX_PATH=${root}/usr
    -DCMAKE_CXX_COMPILER=${CXX})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/consumer)
run(${WORK_DIR}/consumer/consumer)
