# rillbook_add_test(NAME SOURCES files... [LIBRARIES libraries...] [TIMEOUT seconds])
#
# A QtTest program under CTest: off-screen, fixed zone and locale, a home of its own, and a timeout.
function(rillbook_add_test NAME)
  cmake_parse_arguments(T "" "TIMEOUT" "SOURCES;LIBRARIES" ${ARGN})
  if(NOT T_TIMEOUT)
    set(T_TIMEOUT 120)
  endif()
  add_executable(${NAME} ${T_SOURCES})
  target_link_libraries(${NAME} PRIVATE ${T_LIBRARIES} Qt6::Test)
  target_compile_definitions(${NAME} PRIVATE
    RILLBOOK_SOURCE_DIR="${PROJECT_SOURCE_DIR}" RILLBOOK_BINARY_DIR="${PROJECT_BINARY_DIR}")
  set_target_properties(${NAME} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
  set(home "${PROJECT_BINARY_DIR}/test-home/${NAME}")
  file(MAKE_DIRECTORY "${home}")
  file(CHMOD "${home}" DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
  add_test(NAME ${NAME} COMMAND ${NAME} WORKING_DIRECTORY "${home}")
  set_tests_properties(${NAME} PROPERTIES
    TIMEOUT ${T_TIMEOUT}
    ENVIRONMENT "QT_QPA_PLATFORM=offscreen;TZ=UTC;LC_ALL=C.UTF-8;HOME=${home};XDG_CONFIG_HOME=${home}/config;XDG_RUNTIME_DIR=${home};UBSAN_OPTIONS=print_stacktrace=1")
endfunction()
