# The files for building peer modules: `cmake --install BUILD --prefix DIR --component development`.
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

# The path from the directory of zelcore.pc to the prefix, so that the prefix can be moved.
file(RELATIVE_PATH ZELCORE_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" ZELCORE_PREFIX ${ZELCORE_PREFIX})
string(REPLACE ";" " " ZELCORE_LINK_OPTIONS "${PROGKEYS_INSTRUMENTATION}")
# The path of moc depends on the Qt version, and only CMake knows it.
set(ZELCORE_MOC $<TARGET_FILE:Qt${QT_VERSION_MAJOR}::moc>)
configure_file(zelcore.pc.in zelcore.pc.in @ONLY)
file(GENERATE OUTPUT zelcore.pc INPUT ${CMAKE_CURRENT_BINARY_DIR}/zelcore.pc.in)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/zelcore.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
