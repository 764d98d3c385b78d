set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(PROGKEYS_TRIPLET aarch64-linux-gnu)
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
