# Compiles TOPICS/rillbook.hhp with CHMCMD into HELP, and writes the SHA-256 of that file as the header
# DIGEST. The compiler writes beside its project, so it works on a copy in the folder WORK. A missing
# link target or picture, of which the compiler only warns, is an error here.
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
file(SHA256 "${HELP}" sum)
file(CONFIGURE OUTPUT "${DIGEST}" CONTENT "#pragma once

// The SHA-256 of the compiled help file, in hexadecimal.
constexpr const char* kHelpDigest = \"${sum}\";
")
