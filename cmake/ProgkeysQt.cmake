# Finds Qt 5.15 or Qt 6 and names its parts Qt::Core, Qt::DBus, Qt::Sql and Qt::Test for both.
# Qt 5.15 comes first: nearest to the phone's, and the smaller and faster of the two here.
if(PROGKEYS_QT)
  set(progkeys_qt_names ${PROGKEYS_QT})
else()
  set(progkeys_qt_names Qt5 Qt6)
endif()

if(CMAKE_CROSSCOMPILING)
  include(ProgkeysHostTools)
endif()
find_package(QT NAMES ${progkeys_qt_names} REQUIRED COMPONENTS Core DBus Sql)
if(QT_VERSION VERSION_LESS 5.15)
  message(FATAL_ERROR "Qt 5.15 or Qt 6 is needed; found ${QT_VERSION}")
endif()

set(progkeys_qt_parts Core DBus Sql)
if(PROGKEYS_TESTS)
  list(APPEND progkeys_qt_parts Test)
endif()
find_package(Qt${QT_VERSION_MAJOR} REQUIRED COMPONENTS ${progkeys_qt_parts})
message(STATUS "Qt ${QT_VERSION}")
