# Installs the build tree into a scratch prefix, then builds and runs the
# consumer project against it with find_package and with pkg-config.
# EMULATOR (may be empty) runs programs of the target architecture. PYTHON
# (empty when the module is not built) imports the installed Python module
# from PYTHON_DIR below the prefix and measures a line with it.
file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)

include(${CMAKE_CURRENT_LIST_DIR}/run.cmake)

run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})

# find_package
run(${CMAKE_COMMAND} -S ${CONSUMER_SOURCE} -B ${WORK_DIR}/build -G ${GENERATOR}
    -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_COMPILER=${CXX}
    "-DCMAKE_CXX_FLAGS=${CXX_FLAGS}" "-DCMAKE_EXE_LINKER_FLAGS=${LINKER_FLAGS}")
run(${CMAKE_COMMAND} --build ${WORK_DIR}/build)
run(${EMULATOR} ${WORK_DIR}/build/consumer)

# pkg-config
file(GLOB pc_dirs ${prefix}/lib*/pkgconfig)
set(ENV{PKG_CONFIG_PATH} "${pc_dirs}")
execute_process(COMMAND pkg-config --cflags --libs splinecore OUTPUT_VARIABLE pc RESULT_VARIABLE status
  OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "pkg-config does not know splinecore")
endif()
separate_arguments(pc UNIX_COMMAND "${pc}")
separate_arguments(cxx_flags UNIX_COMMAND "${CXX_FLAGS}")
separate_arguments(linker_flags UNIX_COMMAND "${LINKER_FLAGS}")
string(REPLACE "/pkgconfig" "" libdir "${pc_dirs}")
run(${CXX} -std=c++17 ${cxx_flags} ${CONSUMER_SOURCE}/main.cpp ${pc} ${linker_flags}
    -Wl,-rpath,${libdir} -o ${WORK_DIR}/consumer_pc)
run(${EMULATOR} ${WORK_DIR}/consumer_pc)

if(PYTHON)
  set(ENV{PYTHONPATH} "${prefix}/${PYTHON_DIR}")
  run(${PYTHON} -c "import splinecore, sys
f = splinecore.Figure()
f.add_spline([[0, 0], [3, 4]])
assert splinecore.__file__.startswith(sys.argv[1]), splinecore.__file__
assert abs(f.length(0) - 5) < 1e-4, f.length(0)" ${prefix})
endif()
