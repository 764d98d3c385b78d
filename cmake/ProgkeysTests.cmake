# progkeys_python_tests(<label> <seconds>): one CTest test for each test_*.py of the directory, so
# that they run side by side.
function(progkeys_python_tests label seconds)
  file(GLOB files CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/test_*.py)
  foreach(file ${files})
    get_filename_component(name ${file} NAME_WE)
    string(REGEX REPLACE "^test_" "${label}." name ${name})
    add_test(NAME ${name} COMMAND /usr/bin/python3 -m pytest ${file}
             WORKING_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR})
    set_tests_properties(${name} PROPERTIES
      LABELS ${label}
      TIMEOUT ${seconds}
      ENVIRONMENT "PROGKEYS_BUILD_DIR=${CMAKE_BINARY_DIR};PROGKEYS_BIN_DIR=${CMAKE_RUNTIME_OUTPUT_DIRECTORY};PROGKEYS_QDBUSXML2CPP=$<TARGET_FILE:Qt${QT_VERSION_MAJOR}::qdbusxml2cpp>;PYTHONDONTWRITEBYTECODE=1;PROGKEYS_TEST_PATIENCE=$<IF:$<BOOL:${PROGKEYS_SANITIZERS}>,4,1>")
  endforeach()
endfunction()
