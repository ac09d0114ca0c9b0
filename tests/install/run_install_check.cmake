# Installs the build into a temporary prefix and builds and runs a C consumer
# against it, once through find_package(QOMath) and once through pkg-config.
file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "failed: ${ARGN}\n${out}\n${err}")
  endif()
  set(last_output "${out}" PARENT_SCOPE)
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})

# 1. CMake package.
run(${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${WORK_DIR}/cmake_consumer
    -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_C_COMPILER=${C_COMPILER})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/cmake_consumer)
run(${WORK_DIR}/cmake_consumer/consumer)
message(STATUS "find_package: ${last_output}")
run(${WORK_DIR}/cmake_consumer/consumer_static)
message(STATUS "find_package, static: ${last_output}")

# 2. pkg-config.
find_program(PKG_CONFIG NAMES pkg-config pkgconf)
if(PKG_CONFIG)
  file(GLOB_RECURSE pc_files ${prefix}/*/qomath.pc)
  list(GET pc_files 0 pc_file)
  get_filename_component(pc_dir ${pc_file} DIRECTORY)
  set(ENV{PKG_CONFIG_PATH} ${pc_dir})
  run(${PKG_CONFIG} --cflags --libs qomath)
  string(STRIP "${last_output}" flags)
  separate_arguments(flags UNIX_COMMAND "${flags}")
  run(${C_COMPILER} -std=c99 -Wall -Wextra -pedantic ${SOURCE_DIR}/consumer.c ${flags} -lm
      -o ${WORK_DIR}/pc_consumer)
  get_filename_component(libdir ${pc_dir} DIRECTORY)
  set(ENV{LD_LIBRARY_PATH} ${libdir})
  run(${WORK_DIR}/pc_consumer)
  message(STATUS "pkg-config: ${last_output}")
  # Statically: the archive by name, and whatever Libs.private adds.
  run(${PKG_CONFIG} --static --cflags --libs qomath)
  string(STRIP "${last_output}" flags)
  string(REPLACE "-lqomath" "-l:libqomath.a" flags "${flags}")
  separate_arguments(flags UNIX_COMMAND "${flags}")
  run(${C_COMPILER} -std=c99 -Wall -Wextra -pedantic ${SOURCE_DIR}/consumer.c ${flags}
      -o ${WORK_DIR}/pc_consumer_static)
  unset(ENV{LD_LIBRARY_PATH})
  run(${WORK_DIR}/pc_consumer_static)
  message(STATUS "pkg-config, static: ${last_output}")
else()
  message(STATUS "pkg-config not found; only the CMake package was checked")
endif()
