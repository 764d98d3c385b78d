# The directories for installed files: those of the GNU conventions, and those that pkg-config modules
# define.
include(GNUInstallDirs)
find_package(PkgConfig REQUIRED)

function(progkeys_ask_pkg_config result module variable)
  execute_process(
    COMMAND ${PKG_CONFIG_EXECUTABLE} ${ARGN} --variable=${variable} ${module}
    OUTPUT_VARIABLE answer OUTPUT_STRIP_TRAILING_WHITESPACE
    ERROR_VARIABLE error RESULT_VARIABLE status)
  if(status OR NOT answer)
    message(FATAL_ERROR "pkg-config does not know ${variable} of ${module}. ${error}")
  endif()
  set(${result} ${answer} PARENT_SCOPE)
endfunction()

# progkeys_place(<result> <module> <variable>): the directory in a variable of a pkg-config module. If
# the prefix of this installation differs from the module's, the directory is moved to this prefix.
function(progkeys_place result module variable)
  progkeys_ask_pkg_config(prefix ${module} prefix)
  if(NOT prefix STREQUAL CMAKE_INSTALL_PREFIX)
    set(moved --define-variable=prefix=${CMAKE_INSTALL_PREFIX}
              --define-variable=rootprefix=${CMAKE_INSTALL_PREFIX})
  endif()
  progkeys_ask_pkg_config(place ${module} ${variable} ${moved})
  set(${result} ${place} PARENT_SCOPE)
endfunction()
