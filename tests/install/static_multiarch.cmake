# A static build of the library with a multiarch libdir, installed into a
# /usr-style prefix; a consumer is then built against it through pkg-config
# (whose paths must name the prefix's include and multiarch lib directories)
# and through find_package, and run.
file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/usr)
set(libdir lib/x86_64-linux-gnu)

include(${CMAKE_CURRENT_LIST_DIR}/run.cmake)

run(${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${WORK_DIR}/build -G ${GENERATOR} -DCMAKE_BUILD_TYPE=Release
    -DBUILD_SHARED_LIBS=OFF -DCMAKE_INSTALL_PREFIX=/usr -DCMAKE_INSTALL_LIBDIR=${libdir}
    -DSPLINECORE_BUILD_TESTS=OFF -DSPLINECORE_BUILD_EXAMPLES=OFF -DSPLINECORE_PYTHON=OFF
    -DCMAKE_CXX_COMPILER=${CXX})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/build --target splinecore marrow)
run(${CMAKE_COMMAND} --install ${WORK_DIR}/build --prefix ${prefix})
if(NOT EXISTS ${prefix}/${libdir}/libsplinecore.a OR EXISTS ${prefix}/${libdir}/libsplinecore.so)
  message(FATAL_ERROR "the static build did not install libsplinecore.a alone")
endif()

set(ENV{PKG_CONFIG_PATH} ${prefix}/${libdir}/pkgconfig)
foreach(variable includedir libdir)
  execute_process(COMMAND pkg-config --variable=${variable} splinecore OUTPUT_VARIABLE value
    OUTPUT_STRIP_TRAILING_WHITESPACE)
  get_filename_component(value "${value}" REALPATH)
  set(${variable}_pc "${value}")
endforeach()
get_filename_component(want_include ${prefix}/include REALPATH)
get_filename_component(want_lib ${prefix}/${libdir} REALPATH)
if(NOT includedir_pc STREQUAL want_include OR NOT libdir_pc STREQUAL want_lib)
  message(FATAL_ERROR "pkg-config says includedir=${includedir_pc} libdir=${libdir_pc}, "
    "expected ${want_include} and ${want_lib}")
endif()
execute_process(COMMAND pkg-config --cflags --libs splinecore OUTPUT_VARIABLE pc OUTPUT_STRIP_TRAILING_WHITESPACE)
separate_arguments(pc UNIX_COMMAND "${pc}")
run(${CXX} -std=c++17 ${CONSUMER_SOURCE}/main.cpp ${pc} -o ${WORK_DIR}/consumer_pc)
run(${WORK_DIR}/consumer_pc)

run(${CMAKE_COMMAND} -S ${CONSUMER_SOURCE} -B ${WORK_DIR}/consumer -G ${GENERATOR} -DCMAKE_PREFIX_PATH=${prefix}
    -DCMAKE_CXX_COMPILER=${CXX})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/consumer)
run(${WORK_DIR}/consumer/consumer)
