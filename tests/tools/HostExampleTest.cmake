# Installs the build into a fresh prefix, builds examples/host against the installed package as
# a separate project would, and runs it on the bundled examples.
# cmake -DBUILD_DIR=... -DSOURCE_DIR=... -DWORK_DIR=... -P HostExampleTest.cmake
file(REMOVE_RECURSE "${WORK_DIR}")
set(prefix "${WORK_DIR}/prefix")
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${ARGN}\n failed (${status}):\n${out}\n${err}")
  endif()
  set(out "${out}" PARENT_SCOPE)
endfunction()
run(${CMAKE_COMMAND} --install "${BUILD_DIR}" --prefix "${prefix}")
run(${CMAKE_COMMAND} -S "${SOURCE_DIR}/examples/host" -B "${WORK_DIR}/host" -G Ninja
    "-DCMAKE_PREFIX_PATH=${prefix}")
run(${CMAKE_COMMAND} --build "${WORK_DIR}/host")
foreach(example descriptives_de mi_regression bootstrap_descriptives)
  run("${WORK_DIR}/host/omf_host" "${SOURCE_DIR}/examples/${example}.oms")
  if(NOT out MATCHES "Procedure: " OR NOT out MATCHES "procedures failed and recovered: 0")
    message(FATAL_ERROR "${example}: unexpected output\n${out}")
  endif()
endforeach()
# The installed tables reach the session without a folder being named.
run("${WORK_DIR}/host/omf_host" "${SOURCE_DIR}/examples/descriptives_de.oms")
if(NOT out MATCHES "Deskriptive Statistik")
  message(FATAL_ERROR "the installed German tables were not used\n${out}")
endif()
file(REMOVE_RECURSE "${WORK_DIR}")
