# Installs the build into a staging prefix, builds host.c against it through
# pkg-config, and checks the program's output.
#   cmake -DBUILD_DIR=... -DSTAGE=... -DSOURCE=... -DCC=... [-DEXTRA_FLAGS=...] -P check_installed.cmake
file(REMOVE_RECURSE ${STAGE})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${STAGE}
  OUTPUT_QUIET RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "cmake --install failed (${status})")
endif()
file(GLOB_RECURSE pc_files ${STAGE}/*/orvobasic.pc)
list(GET pc_files 0 pc_file)
get_filename_component(pc_dir ${pc_file} DIRECTORY)
# The .pc file names the configured prefix; point pkg-config at the stage.
set(ENV{PKG_CONFIG_PATH} ${pc_dir})
execute_process(COMMAND pkg-config --define-variable=prefix=${STAGE} --cflags --libs orvobasic
  OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "pkg-config does not know orvobasic")
endif()
separate_arguments(flags UNIX_COMMAND "${flags}")
separate_arguments(extra UNIX_COMMAND "${EXTRA_FLAGS}")
execute_process(COMMAND ${CC} -std=c11 -Wall -Wextra -Werror ${extra} ${SOURCE}/host.c ${flags} -o ${STAGE}/host
  RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "host.c does not build against the installed library")
endif()
get_filename_component(lib_dir ${pc_dir} DIRECTORY)
set(ENV{LD_LIBRARY_PATH} ${lib_dir})
execute_process(COMMAND ${CMAKE_COMMAND} -DPROGRAM=${STAGE}/host -DARG=${SOURCE}/resident.bas
  -DEXPECTED=${SOURCE}/expected.txt -P ${SOURCE}/check_output.cmake RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "the installed host's output differs")
endif()
