# The warnings and definitions that all code of the project is held to.
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion)
if(PROGKEYS_WERROR)
  add_compile_options(-Werror)
endif()

if(PROGKEYS_SANITIZERS)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()

add_compile_definitions(QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_FOREACH
                        QT_DEPRECATED_WARNINGS)

if(PROGKEYS_COVERAGE)
  # Statics without a guard against a second thread: that branch would never be taken.
  add_compile_options(--coverage -fprofile-abs-path -fprofile-update=atomic
                      -fno-threadsafe-statics)
  add_link_options(--coverage)
endif()
