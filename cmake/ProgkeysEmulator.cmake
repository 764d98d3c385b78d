# Runs programs of another architecture on the host. build/ARCH/emulated/ has the same directories as the
# build. For each program it contains a script with the program's name, which runs the program under the
# emulator, and the program itself as NAME.target. Programs that start others from their own directory
# start the scripts.
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

# Call this after all targets exist.
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
    COMMENT "Creating the scripts that run the programs under the emulator" VERBATIM)
endfunction()
