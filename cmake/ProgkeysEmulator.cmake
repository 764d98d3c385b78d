# Programs of another architecture, made so that they can be started like any other, also by each
# other and where the kernel knows of no emulator. build/ARCH/emulated/ repeats the directories of
# the build: under each program's name a script that runs it in the emulator, and beside it the
# program itself, as NAME.target. A program that looks for others in its own directory finds scripts.
set(PROGKEYS_EMULATED_DIR ${CMAKE_BINARY_DIR}/emulated)

# progkeys_executables(<variable> <directory>): all executables below a directory of sources.
function(progkeys_executables variable directory)
  get_property(targets DIRECTORY ${directory} PROPERTY BUILDSYSTEM_TARGETS)
  get_property(subdirectories DIRECTORY ${directory} PROPERTY SUBDIRECTORIES)
  set(found)
  foreach(target ${targets})
    get_target_property(type ${target} TYPE)
    if(type STREQUAL "EXECUTABLE")
      list(APPEND found ${target})
    endif()
  endforeach()
  foreach(subdirectory ${subdirectories})
    progkeys_executables(below ${subdirectory})
    list(APPEND found ${below})
  endforeach()
  set(${variable} ${found} PARENT_SCOPE)
endfunction()

# To be called when all targets are there.
function(progkeys_emulate_executables)
  string(REPLACE ";" "' '" words "${CMAKE_CROSSCOMPILING_EMULATOR}")
  file(GENERATE OUTPUT ${PROGKEYS_EMULATED_DIR}/run
       CONTENT "#!/bin/sh\nexec '${words}' -E LD_PRELOAD='$<TARGET_FILE:emulator_older_kernel>' -0 \"$0\" \"$0.target\" \"$@\"\n"
       FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
                        WORLD_READ WORLD_EXECUTE)
  progkeys_executables(executables ${PROJECT_SOURCE_DIR})
  set(paths)
  foreach(executable ${executables})
    string(APPEND paths "$<TARGET_FILE:${executable}>\n")
  endforeach()
  file(GENERATE OUTPUT ${PROGKEYS_EMULATED_DIR}/programs CONTENT "${paths}")
  add_custom_target(emulated ALL
    COMMAND ${CMAKE_COMMAND} -D BINARY_DIR=${CMAKE_BINARY_DIR}
            -P ${PROJECT_SOURCE_DIR}/cmake/LinkEmulated.cmake
    DEPENDS ${executables}
    COMMENT "Making the programs startable in the emulator" VERBATIM)
endfunction()
