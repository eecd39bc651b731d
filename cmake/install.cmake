# The installed tree: the library in both forms, the headers with the directories that their includes name (the root is
# include/zrasn), a package file for find_package(zrasn) and one for pkg-config.
include(CMakePackageConfigHelpers)

install(TARGETS zrasn zrasn_static EXPORT zrasn_targets)
if(TARGET zrz)
    install(TARGETS zrz zrz_static EXPORT zrasn_targets)
    set(zrasn_pc_zrz -lzrz)
    set(zrasn_foreign_headers)
else()
    set(zrasn_pc_zrz ${ZRASN_ZRZ_LIBRARY})
    set(zrasn_foreign_headers PATTERN zrz EXCLUDE)
endif()
install(DIRECTORY ${PROJECT_SOURCE_DIR}/src/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zrasn
    FILES_MATCHING PATTERN "*.h" ${zrasn_foreign_headers})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/base_idls ${PROJECT_SOURCE_DIR}/zrasn DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zrasn
    FILES_MATCHING PATTERN "*.h")

set(zrasn_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/zrasn)
install(EXPORT zrasn_targets NAMESPACE zrasn:: FILE zrasn-targets.cmake DESTINATION ${zrasn_package_dir})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/zrasn-config.cmake.in
    ${PROJECT_BINARY_DIR}/zrasn-config.cmake INSTALL_DESTINATION ${zrasn_package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/zrasn-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/zrasn-config.cmake ${PROJECT_BINARY_DIR}/zrasn-config-version.cmake
    DESTINATION ${zrasn_package_dir})

# The file names its own prefix relative to where it lies, so that the tree can be moved.
file(RELATIVE_PATH zrasn_pc_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(${PROJECT_SOURCE_DIR}/cmake/zrasn.pc.in ${PROJECT_BINARY_DIR}/zrasn.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zrasn.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
