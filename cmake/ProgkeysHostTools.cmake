# Uses Qt's code generators of the host, because those of the target cannot run on it. Qt's CMake files
# do not replace existing targets.
set(progkeys_qt_tools /usr/lib/qt5/bin)
foreach(tool qmake moc rcc qdbuscpp2xml qdbusxml2cpp)
  if(NOT EXISTS ${progkeys_qt_tools}/${tool})
    message(FATAL_ERROR "There is no ${progkeys_qt_tools}/${tool}; install the Debian package "
                        "qtbase5-dev-tools")
  endif()
  add_executable(Qt5::${tool} IMPORTED)
  set_target_properties(Qt5::${tool} PROPERTIES IMPORTED_LOCATION ${progkeys_qt_tools}/${tool})
endforeach()
