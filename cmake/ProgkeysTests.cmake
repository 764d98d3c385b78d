if(CMAKE_CROSSCOMPILING)
  include(ProgkeysEmulator)
endif()

# How much slower than usual the processes may be: a factor for the limits in the tests, and one for
# those of whole tests.
set(PROGKEYS_WAIT_FACTOR 1)
set(PROGKEYS_TIMEOUT_FACTOR 1)
if(PROGKEYS_SANITIZERS)
  set(PROGKEYS_WAIT_FACTOR 4)
elseif(CMAKE_CROSSCOMPILING)
  set(PROGKEYS_WAIT_FACTOR 4)
  set(PROGKEYS_TIMEOUT_FACTOR 8)
endif()

# progkeys_started_in(<variable> <directory>): where tests start the executables of a directory.
function(progkeys_started_in variable directory)
  if(CMAKE_CROSSCOMPILING)
    file(RELATIVE_PATH name ${CMAKE_BINARY_DIR} ${directory})
    set(directory ${PROGKEYS_EMULATED_DIR}/${name})
  endif()
  set(${variable} ${directory} PARENT_SCOPE)
endfunction()

# progkeys_python_tests(<label> <seconds>): one CTest test for each test_*.py of the directory, so
# that they run side by side.
function(progkeys_python_tests label seconds)
  progkeys_started_in(bin_dir ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
  math(EXPR limit "${seconds} * ${PROGKEYS_TIMEOUT_FACTOR}")
  set(environment
    PROGKEYS_BUILD_DIR=${CMAKE_BINARY_DIR}
    PROGKEYS_BIN_DIR=${bin_dir}
    PROGKEYS_QDBUSXML2CPP=$<TARGET_FILE:Qt${QT_VERSION_MAJOR}::qdbusxml2cpp>
    PROGKEYS_TEST_WAIT_FACTOR=${PROGKEYS_WAIT_FACTOR}
    PYTHONDONTWRITEBYTECODE=1)
  if(CMAKE_CROSSCOMPILING)
    list(APPEND environment PROGKEYS_EMULATED=1)
  endif()
  if(PROGKEYS_COVERAGE AND NOT label STREQUAL "system")
    # Only the unit and system tests count. Others kill processes at any moment, or let their writes
    # fail, which could damage the files with the counts. Their counts go where nothing reads them.
    list(APPEND environment
      GCOV_PREFIX=${CMAKE_BINARY_DIR}/uncounted GCOV_ERROR_FILE=/dev/null)
  endif()
  file(GLOB files CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/test_*.py)
  foreach(file ${files})
    get_filename_component(name ${file} NAME_WE)
    string(REGEX REPLACE "^test_" "${label}." name ${name})
    add_test(NAME ${name} COMMAND /usr/bin/python3 -m pytest ${file}
             WORKING_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR})
    set_tests_properties(${name} PROPERTIES
      LABELS ${label}
      TIMEOUT ${limit}
      ENVIRONMENT "${environment}")
  endforeach()
endfunction()
