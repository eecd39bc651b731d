# What a project finds of the library: the package for find_package(zrasn), in the build tree and, installed, beside a file
# for pkg-config, the library in both forms and the headers with the directories that their includes name (their root is
# include/zrasn).
#
# Components: "runtime" the shared libraries (zrasn, zrz, zrasn_json), "development" what compiling needs, "tool" the program with its manual page,
# "python" the package for Python, "documentation" the pages.
include(CMakePackageConfigHelpers)

get_property(targets GLOBAL PROPERTY zrasn_exported)
set(zrasn_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/zrasn)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/zrasn-config.cmake.in
    ${PROJECT_BINARY_DIR}/zrasn-config.cmake INSTALL_DESTINATION ${zrasn_package_dir})
# docs/abi.md: a program that builds with a version builds with all later ones of the same first number.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/zrasn-config-version.cmake COMPATIBILITY SameMajorVersion)
export(TARGETS ${targets} NAMESPACE zrasn:: FILE ${PROJECT_BINARY_DIR}/zrasn-targets.cmake)

if(NOT ZRASN_INSTALL)
    return()
endif()

if(TARGET zrz)
    set(zrasn_pc_zrz -lzrz)
    set(zrasn_foreign_headers)
else()
    set(zrasn_pc_zrz ${ZRASN_ZRZ_LIBRARY})
    set(zrasn_foreign_headers PATTERN zrz EXCLUDE)
endif()
install(TARGETS ${targets} EXPORT zrasn_targets
    LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
    ARCHIVE COMPONENT development
    RUNTIME COMPONENT runtime)
# Headers of the library's own sources, which no public one includes.
set(private asn1/platform.h asn1/utf8.h asn1/asnbase/default_value.h zrz/latin1.h)
foreach(header chains conversion repertoire t61 text_writer words words_sse2)
    list(APPEND private asn1/asnstrng/${header}.h)
endforeach()
foreach(header copy_packed encoding entry_points general_reader guess local_forms local_texts unfinished walk)
    list(APPEND private asn1/codec/${header}.h)
endforeach()
list(TRANSFORM private REPLACE "(.+)" "PATTERN;\\1;EXCLUDE")
install(DIRECTORY ${PROJECT_SOURCE_DIR}/src/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zrasn COMPONENT development
    FILES_MATCHING PATTERN "*.h" PATTERN src/json EXCLUDE PATTERN zrz/text_conversion.h EXCLUDE ${private}
    ${zrasn_foreign_headers})
set(of_json)
if(NOT TARGET zrasn_json)
    set(of_json PATTERN zrasn/c.h EXCLUDE PATTERN zrasn/json.h EXCLUDE)
endif()
install(DIRECTORY ${PROJECT_SOURCE_DIR}/base_idls ${PROJECT_SOURCE_DIR}/zrasn
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zrasn COMPONENT development FILES_MATCHING PATTERN "*.h" ${of_json})
install(EXPORT zrasn_targets NAMESPACE zrasn:: FILE zrasn-targets.cmake DESTINATION ${zrasn_package_dir}
    COMPONENT development)
install(FILES ${PROJECT_BINARY_DIR}/zrasn-config.cmake ${PROJECT_BINARY_DIR}/zrasn-config-version.cmake
    DESTINATION ${zrasn_package_dir} COMPONENT development)

# The file names its own prefix relative to where it lies, so that the tree can be moved.
file(RELATIVE_PATH zrasn_pc_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
foreach(library zrasn zrasn_json)
    if(TARGET ${library})
        configure_file(${PROJECT_SOURCE_DIR}/cmake/${library}.pc.in ${PROJECT_BINARY_DIR}/${library}.pc @ONLY)
        install(FILES ${PROJECT_BINARY_DIR}/${library}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
            COMPONENT development)
    endif()
endforeach()

# The pages as they are, and as HTML where those were made. (An unpacked archive of the library alone has none.)
foreach(page docs README.md CHANGELOG.md SECURITY.md LICENSE examples)
    if(IS_DIRECTORY ${PROJECT_SOURCE_DIR}/${page})
        install(DIRECTORY ${PROJECT_SOURCE_DIR}/${page} DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation
            PATTERN CMakeLists.txt EXCLUDE PATTERN *.cmake EXCLUDE)
    elseif(EXISTS ${PROJECT_SOURCE_DIR}/${page})
        install(FILES ${PROJECT_SOURCE_DIR}/${page} DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)
    endif()
endforeach()
configure_file(${PROJECT_SOURCE_DIR}/cmake/zrasn.spdx.in ${PROJECT_BINARY_DIR}/zrasn.spdx @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zrasn.spdx DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)
set(ZRASN_HTML ${PROJECT_SOURCE_DIR}/build/docs/html CACHE PATH "Where `make docs` leaves the HTML, to be installed")
install(DIRECTORY ${ZRASN_HTML} DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation OPTIONAL)
