# Uses ccache if it is installed.
find_program(PROGKEYS_CCACHE ccache)
mark_as_advanced(PROGKEYS_CCACHE)
if(PROGKEYS_CCACHE)
  foreach(language C CXX)
    if(NOT CMAKE_${language}_COMPILER_LAUNCHER)
      set(CMAKE_${language}_COMPILER_LAUNCHER ${PROGKEYS_CCACHE})
    endif()
  endforeach()
endif()

# Warnings and definitions for all code of the project.
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion)
if(PROGKEYS_WERROR)
  add_compile_options(-Werror)
endif()

# Linker options for instrumented code.
set(PROGKEYS_INSTRUMENTATION)
if(PROGKEYS_SANITIZERS)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined
                      -fno-omit-frame-pointer)
  list(APPEND PROGKEYS_INSTRUMENTATION -fsanitize=address,undefined)
endif()

add_compile_definitions(QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_FOREACH
                        QT_DEPRECATED_WARNINGS)

# Compile options of the service and the platform for coverage.
set(PROGKEYS_COVERAGE_OPTIONS)
if(PROGKEYS_COVERAGE)
  # Do not generate branches that are not in the source: guards of static variables, and the code of
  # the sanitizer at the end of each scope.
  set(PROGKEYS_COVERAGE_OPTIONS --coverage -fprofile-abs-path -fprofile-update=atomic
                                -fno-threadsafe-statics -fno-sanitize-address-use-after-scope)
  list(APPEND PROGKEYS_INSTRUMENTATION --coverage)
endif()

add_link_options(${PROGKEYS_INSTRUMENTATION})
