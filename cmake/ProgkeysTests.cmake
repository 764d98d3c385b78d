if(CMAKE_CROSSCOMPILING)
  include(ProgkeysEmulator)
endif()

# Factors for the time limits inside of tests and for the time limits of whole CTest tests.
set(PROGKEYS_WAIT_FACTOR 1)
set(PROGKEYS_TIMEOUT_FACTOR 1)
if(PROGKEYS_SANITIZERS)
  set(PROGKEYS_WAIT_FACTOR 4)
elseif(CMAKE_CROSSCOMPILING)
  set(PROGKEYS_WAIT_FACTOR 4)
  set(PROGKEYS_TIMEOUT_FACTOR 8)
endif()

# progkeys_started_in(<variable> <directory>): the directory from which tests start the executables of a
# build directory.
function(progkeys_started_in variable directory)
  if(CMAKE_CROSSCOMPILING)
    file(RELATIVE_PATH name ${CMAKE_BINARY_DIR} ${directory})
    set(directory ${PROGKEYS_EMULATED_DIR}/${name})
  endif()
  set(${variable} ${directory} PARENT_SCOPE)
endfunction()

# progkeys_python_tests(<label> <seconds>): adds a CTest test for each test_*.py of the directory, so that
# they run in parallel.
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
    # Only the coverage of unit and system tests counts. Other tests kill processes or make their writes
    # fail, which could damage the coverage files. Therefore they write to a directory that is not read.
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
