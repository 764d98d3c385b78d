# What a peer module is built against: `cmake --install BUILD --prefix DIR --component development`.
include(CMakePackageConfigHelpers)
set(zelcore_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/zelcore)

install(TARGETS zelcore EXPORT zelcore
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(DIRECTORY include/zelcore DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development
        FILES_MATCHING PATTERN "*.h")
install(EXPORT zelcore NAMESPACE zelcore:: FILE zelcoreTargets.cmake
        DESTINATION ${zelcore_package_dir} COMPONENT development)

configure_package_config_file(zelcoreConfig.cmake.in zelcoreConfig.cmake
                              INSTALL_DESTINATION ${zelcore_package_dir})
write_basic_package_version_file(zelcoreConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/zelcoreConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/zelcoreConfigVersion.cmake
        DESTINATION ${zelcore_package_dir} COMPONENT development)

# Up from the file's own directory, wherever the prefix is.
file(RELATIVE_PATH ZELCORE_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" ZELCORE_PREFIX ${ZELCORE_PREFIX})
string(REPLACE ";" " " ZELCORE_LINK_OPTIONS "${PROGKEYS_INSTRUMENTATION}")
# Each Qt has its moc in another place, which only CMake knows.
set(ZELCORE_MOC $<TARGET_FILE:Qt${QT_VERSION_MAJOR}::moc>)
configure_file(zelcore.pc.in zelcore.pc.in @ONLY)
file(GENERATE OUTPUT zelcore.pc INPUT ${CMAKE_CURRENT_BINARY_DIR}/zelcore.pc.in)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/zelcore.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
