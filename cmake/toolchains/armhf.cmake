set(CMAKE_SYSTEM_PROCESSOR arm)
set(PROGKEYS_TRIPLET arm-linux-gnueabihf)
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
