# Installs the build into an empty folder.
file(REMOVE_RECURSE ${STAGE})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${STAGE} RESULT_VARIABLE result)
if(result)
  message(FATAL_ERROR "the installation failed: ${result}")
endif()
