# What `cmake --install` gives a host: the library, its headers, the engine, the program and the
# pictures of the overlays beside each other, a CMake package and a pkg-config file.
include(CMakePackageConfigHelpers)

install(TARGETS VRXWrapper EXPORT vrx-targets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS vrx_api EXPORT vrx-targets)
install(TARGETS vrx RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
# The library looks for the engine, the MP4 probe and the pictures beside the host's executable, and the program for
# its commands beside itself.
install(TARGETS VRXCommands VRXEngine Mp4Sift LIBRARY DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/KRVOResources DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY include/vrx DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
install(FILES ${PROJECT_BINARY_DIR}/completions/vrx DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES ${PROJECT_BINARY_DIR}/completions/_vrx DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
install(FILES ${PROJECT_BINARY_DIR}/completions/vrx.fish
        DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
install(FILES docs/vrx.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

target_include_directories(vrx_api INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
install(EXPORT vrx-targets NAMESPACE vrx:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vrx)
configure_package_config_file(cmake/vrx-config.cmake.in ${PROJECT_BINARY_DIR}/vrx-config.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vrx
  PATH_VARS CMAKE_INSTALL_BINDIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vrx-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/vrx-config.cmake ${PROJECT_BINARY_DIR}/vrx-config-version.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vrx)
# Relative, so that the installed tree can be moved.
file(RELATIVE_PATH VRX_PC_TO_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/vrx.pc.in ${PROJECT_BINARY_DIR}/vrx.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/vrx.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
