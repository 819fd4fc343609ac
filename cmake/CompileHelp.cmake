# Compiles TOPICS/rillbook.hhp into HELP by CHMCMD, in the folder WORK, since the compiler writes
# beside its project. Fails on what the compiler only warns of: a link or a picture that isn't there.
file(REMOVE_RECURSE "${WORK}")
file(COPY "${TOPICS}/" DESTINATION "${WORK}")
execute_process(COMMAND "${CHMCMD}" --html-scan rillbook.hhp WORKING_DIRECTORY "${WORK}"
  OUTPUT_VARIABLE output ERROR_VARIABLE output RESULT_VARIABLE result)
if(NOT result EQUAL 0 OR output MATCHES "couldn't find|does not exist|Error")
  message(FATAL_ERROR "${output}")
endif()
get_filename_component(folder "${HELP}" DIRECTORY)
file(COPY "${WORK}/rillbook.chm" DESTINATION "${folder}")
file(TOUCH "${HELP}")
