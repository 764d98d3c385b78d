# A compiler cache is used if there is one.
find_program(PROGKEYS_CCACHE ccache)
mark_as_advanced(PROGKEYS_CCACHE)
if(PROGKEYS_CCACHE)
  foreach(language C CXX)
    if(NOT CMAKE_${language}_COMPILER_LAUNCHER)
      set(CMAKE_${language}_COMPILER_LAUNCHER ${PROGKEYS_CCACHE})
    endif()
  endforeach()
endif()

# The warnings and definitions that all code of the project is held to.
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion)
if(PROGKEYS_WERROR)
  add_compile_options(-Werror)
endif()

# What the linker must be told about instrumented code.
set(PROGKEYS_INSTRUMENTATION)
if(PROGKEYS_SANITIZERS)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined
                      -fno-omit-frame-pointer)
  list(APPEND PROGKEYS_INSTRUMENTATION -fsanitize=address,undefined)
endif()

add_compile_definitions(QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_FOREACH
                        QT_DEPRECATED_WARNINGS)

# What the service's and the platform's directories add to their compile options.
set(PROGKEYS_COVERAGE_OPTIONS)
if(PROGKEYS_COVERAGE)
  # Left out is what adds branches that are not in the source: guards for statics, of which only one
  # thread takes one way, and the sanitizer's marks at the ends of scopes.
  set(PROGKEYS_COVERAGE_OPTIONS --coverage -fprofile-abs-path -fprofile-update=atomic
                                -fno-threadsafe-statics -fno-sanitize-address-use-after-scope)
  list(APPEND PROGKEYS_INSTRUMENTATION --coverage)
endif()

add_link_options(${PROGKEYS_INSTRUMENTATION})
