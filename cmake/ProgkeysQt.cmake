# Finds Qt 5.15 or Qt 6 and provides Qt::Core, Qt::DBus, Qt::Sql and Qt::Test for both.
# Qt 5.15 is preferred, because it is similar to the Qt of the phone, and smaller and faster.
if(CMAKE_CROSSCOMPILING)
  include(ProgkeysHostTools)
endif()
if(PROGKEYS_QT)
  find_package(QT NAMES ${PROGKEYS_QT} REQUIRED COMPONENTS Core DBus Sql)
else()
  # One call with both names would choose Qt 6 if both are installed.
  find_package(QT NAMES Qt5 QUIET COMPONENTS Core DBus Sql)
  if(NOT QT_FOUND)
    find_package(QT NAMES Qt6 REQUIRED COMPONENTS Core DBus Sql)
  endif()
endif()
if(QT_VERSION VERSION_LESS 5.15)
  message(FATAL_ERROR "Qt 5.15 or Qt 6 is required; found ${QT_VERSION}")
endif()

set(progkeys_qt_parts Core DBus Sql)
if(PROGKEYS_TESTS)
  list(APPEND progkeys_qt_parts Test)
endif()
find_package(Qt${QT_VERSION_MAJOR} REQUIRED COMPONENTS ${progkeys_qt_parts})
message(STATUS "Qt ${QT_VERSION}")
