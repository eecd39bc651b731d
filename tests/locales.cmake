# Locales for the tests of texts in the local code set, made in the build directory. They read alike for both word sizes,
# but not for both orders of octets.
find_program(ZRASN_LOCALEDEF localedef REQUIRED)
set(zrasn_locale_order --little-endian)
if(CMAKE_CXX_BYTE_ORDER STREQUAL "BIG_ENDIAN")
    set(zrasn_locale_order --big-endian)
endif()
set(zrasn_locales_dir ${CMAKE_CURRENT_BINARY_DIR}/locales)
set(zrasn_locales)
foreach(locale latin1=ISO-8859-1 euc_jp=EUC-JP jisx0213=EUC-JISX0213 sjis=SHIFT_JIS gb18030=GB18030 utf8=UTF-8)
    string(REPLACE "=" ";" locale ${locale})
    list(GET locale 0 name)
    list(GET locale 1 charmap)
    add_custom_command(OUTPUT ${zrasn_locales_dir}/${name}/LC_CTYPE
        COMMAND ${CMAKE_COMMAND} -E make_directory ${zrasn_locales_dir}
        COMMAND ${ZRASN_LOCALEDEF} --no-archive --no-warnings=ascii ${zrasn_locale_order} -i C -f ${charmap} ${zrasn_locales_dir}/${name}
        COMMENT "Locale ${name}")
    list(APPEND zrasn_locales ${zrasn_locales_dir}/${name}/LC_CTYPE)
endforeach()
add_custom_target(zrasn_test_locales DEPENDS ${zrasn_locales})
add_dependencies(zrasn_tests zrasn_test_locales)
set_source_files_properties(bounds_test.cpp decode_call_test.cpp entry_points_test.cpp local_code_set_test.cpp local_records_test.cpp
    many_threads.cpp quick_paths_test.cpp records_edges_test.cpp secrets_test.cpp PROPERTIES
    COMPILE_DEFINITIONS ZR_TEST_LOCALES="${zrasn_locales_dir}")
