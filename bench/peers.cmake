# The other encoders, each from its Debian package, optimised as the library is. What their compilers make of the schema
# lies in the build directory. asn1c's files are listed here, so it runs when CMake does; the others run when make does.
enable_language(C)
set(CMAKE_C_FLAGS_RELEASE ${CMAKE_CXX_FLAGS_RELEASE})
set(CMAKE_C_STANDARD 11)
set(schema ${CMAKE_CURRENT_SOURCE_DIR}/schema/records.asn1)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${schema})

# bench_skip_unless(PEER variables...) tells in `skipped` whether one of them is not found, and says so.
macro(bench_skip_unless peer)
    set(skipped OFF)
    foreach(needed IN ITEMS ${ARGN})
        if(NOT ${needed})
            set(skipped ON)
        endif()
    endforeach()
    if(skipped)
        message(NOTICE "Benchmarks: ${peer} is skipped, it is not installed")
    endif()
endmacro()

# bench_generated(NAME sources...) makes the library bench_NAME from what a peer's compiler has generated in
# bench/NAME of the build directory.
function(bench_generated name)
    add_library(bench_${name} STATIC ${ARGN})
    target_include_directories(bench_${name} SYSTEM PUBLIC ${CMAKE_CURRENT_BINARY_DIR}/${name})
    target_compile_options(bench_${name} PRIVATE -w)
    bench_peer(${name} bench_${name})
endfunction()

find_program(ASN1C asn1c)
bench_skip_unless(asn1c ASN1C)
if(NOT skipped)
    set(directory ${CMAKE_CURRENT_BINARY_DIR}/asn1c)
    if(NOT EXISTS ${directory}/Makefile.am.sample OR ${schema} IS_NEWER_THAN ${directory}/Makefile.am.sample)
        file(MAKE_DIRECTORY ${directory})
        execute_process(COMMAND ${ASN1C} -fcompound-names ${schema} WORKING_DIRECTORY ${directory} OUTPUT_QUIET
            ERROR_QUIET COMMAND_ERROR_IS_FATAL ANY)
        file(REMOVE ${directory}/converter-sample.c)
    endif()
    file(GLOB sources ${directory}/*.c)
    bench_generated(asn1c ${sources})
    # Its tracing calls a function with many arguments everywhere, even when that prints nothing.
    target_compile_options(bench_asn1c PRIVATE "-DASN_DEBUG(...)=((void)0)")
endif()

find_program(ASN1_COMPILE asn1_compile)
find_path(HEIMDAL_INCLUDE der.h PATH_SUFFIXES heimdal)
find_library(HEIMDAL_ASN1 asn1 PATH_SUFFIXES heimdal)
bench_skip_unless(Heimdal ASN1_COMPILE HEIMDAL_INCLUDE HEIMDAL_ASN1)
if(NOT skipped)
    set(directory ${CMAKE_CURRENT_BINARY_DIR}/heimdal)
    # Generated code includes a header that the package does not have and does not need, and uses the record that
    # contains itself before it has declared it.
    file(WRITE ${directory}/asn1-template.h "")
    file(WRITE ${directory}/forward.h "typedef struct AuditElement AuditElement;\n")
    add_custom_command(OUTPUT ${directory}/records.c ${directory}/records.h
        COMMAND ${ASN1_COMPILE} --one-code-file ${schema} records
        COMMAND ${CMAKE_COMMAND} -E rename asn1_records.x records.c
        COMMAND ${CMAKE_COMMAND} -E rename records-priv.hx records-priv.h
        COMMAND ${CMAKE_COMMAND} -E rename records.hx records.h
        WORKING_DIRECTORY ${directory} DEPENDS ${schema} VERBATIM)
    bench_generated(heimdal ${directory}/records.c ${directory}/records.h)
    target_include_directories(bench_heimdal SYSTEM PUBLIC ${HEIMDAL_INCLUDE})
    target_compile_options(bench_heimdal PRIVATE -include ${directory}/forward.h)
    target_link_libraries(bench_heimdal PRIVATE ${HEIMDAL_ASN1})
endif()

find_program(SNACC snacc)
find_path(SNACC_INCLUDE asn-incl.h PATH_SUFFIXES snacc/c)
find_library(SNACC_SBUF asn1csbuf)
bench_skip_unless(snacc SNACC SNACC_INCLUDE SNACC_SBUF)
if(NOT skipped)
    set(directory ${CMAKE_CURRENT_BINARY_DIR}/snacc)
    # It does not know UTF8String, and makes encoders and decoders with a tag only for the types that are marked.
    file(READ ${schema} text)
    string(REPLACE "DEFINITIONS ::= BEGIN" "DEFINITIONS ::= BEGIN UTF8String ::= [UNIVERSAL 12] IMPLICIT OCTET STRING"
        text "${text}")
    string(REGEX REPLACE "\n(Uuid|AttrList|DecisionRequest|Acl|AuditEvent|ObjectList) ::= "
        "\n\\1 ::= --snacc isPdu:\"TRUE\" -- " text "${text}")
    file(MAKE_DIRECTORY ${directory})
    file(CONFIGURE OUTPUT ${directory}/records.asn1 CONTENT "${text}" @ONLY)
    add_custom_command(OUTPUT ${directory}/records.c ${directory}/records.h
        COMMAND ${SNACC} -c records.asn1 2>snacc.log
        WORKING_DIRECTORY ${directory} DEPENDS ${directory}/records.asn1)
    bench_generated(snacc ${directory}/records.c ${directory}/records.h)
    target_include_directories(bench_snacc SYSTEM PUBLIC ${SNACC_INCLUDE})
    target_compile_definitions(bench_snacc PUBLIC USE_SBUF)
    target_link_libraries(bench_snacc PRIVATE ${SNACC_SBUF})
endif()

find_package(OpenSSL QUIET)
bench_skip_unless(OpenSSL OPENSSL_FOUND)
if(NOT skipped)
    bench_generated(openssl peers/openssl.c)
    target_link_libraries(bench_openssl PUBLIC OpenSSL::Crypto)
endif()

find_package(Protobuf QUIET)
bench_skip_unless(protobuf Protobuf_FOUND Protobuf_PROTOC_EXECUTABLE)
if(NOT skipped)
    set(directory ${CMAKE_CURRENT_BINARY_DIR}/protobuf)
    file(MAKE_DIRECTORY ${directory})
    add_custom_command(OUTPUT ${directory}/records.pb.cc ${directory}/records.pb.h
        COMMAND protobuf::protoc --cpp_out=${directory} -I ${CMAKE_CURRENT_SOURCE_DIR}/schema records.proto
        DEPENDS schema/records.proto VERBATIM)
    bench_generated(protobuf ${directory}/records.pb.cc ${directory}/records.pb.h)
    target_link_libraries(bench_protobuf PUBLIC protobuf::libprotobuf)
endif()
