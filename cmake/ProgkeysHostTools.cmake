# Uses Qt's code generators of this machine, because those of the target cannot run here. Qt's own CMake
# files do not replace existing targets.
set(progkeys_qt_tools /usr/lib/qt5/bin)
foreach(tool qmake moc rcc qdbuscpp2xml qdbusxml2cpp)
  if(NOT EXISTS ${progkeys_qt_tools}/${tool})
    message(FATAL_ERROR "There is no ${progkeys_qt_tools}/${tool}; Debian's package "
                        "qtbase5-dev-tools has it")
  endif()
  add_executable(Qt5::${tool} IMPORTED)
  set_target_properties(Qt5::${tool} PROPERTIES IMPORTED_LOCATION ${progkeys_qt_tools}/${tool})
endforeach()
