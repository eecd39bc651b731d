// The records from C, and from any language that can call C: octets to JSON and back, what octets are, where they
// deviate. It is the whole of what libzrasn_json exports. docs/c-interface.md shows it at work.
//
//     char* json;
//     size_t length;
//     zrasn_report report = ZRASN_REPORT_INIT;
//     const zrasn_record* type = zrasn_record_find("uuid_t");
//     if (zrasn_to_json(type, octets, size, NULL, &json, &length, &report) != 0)
//         fprintf(stderr, "%s at octet %zu: %s\n", report.name, report.offset, report.message);
//     else
//         puts(json);
//     zrasn_free(json);
//
// For all functions here:
// - They keep nothing between calls and may be called by any number of threads at once. None of them prints, but the
//   line of an encode whose memory ends, which goes where zr::set_message_sink says.
// - Octets and texts that are given are read during the call only; they need no end. Null is taken for none of them
//   where their size is 0.
// - What a call makes (`json`, `octets`, `text`) is a block of the caller's, who gives it to zrasn_free. A text ends
//   in a zero octet, which `length` does not count. After a refusal the pointer is null and the length 0.
// - They return 0 or a status, which the report has too: one of asn1/status.h (2750xxxxx), or ZRASN_BAD_JSON. A null
//   pointer that has no meaning, and a `size` of options or a report that no version of this page has, is 275063196.
//   Memory that ends, and a limit that is passed, is 275062885.
// - Whatever the octets or the text are: time and memory grow in line with their size, no call recurses, and the
//   limits of the options hold.
// - `options` may be null: then all are 0. `report` may be null.
// - Members marked secret are "***" in all that is made, unless `show_secrets` says otherwise; no message has their
//   value. What holds "***" in place of a secret is refused.
#pragma once

#include <stddef.h>  // not <cstddef>: this header is for C too
#include <stdint.h>

#ifdef ZRASN_STATIC
#define ZRASN_C_API
#else
#define ZRASN_C_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

// A record: its name and the list of its fields. All are constant and live as long as the program. One of a program of
// its own is given by zr::as_c in zrasn/json.h.
typedef struct zrasn_record zrasn_record;

// The statuses beside those of asn1/status.h.
enum zrasn_status {
    ZRASN_OK = 0,
    // The text is no JSON, or no JSON of the record: the report's `line` and `column` say where. Its name is
    // "zrasn_bad_json", its reason "bad_json", or "hidden_secret" where "***" stands for a secret.
    ZRASN_BAD_JSON = 1
};

// What a call may be asked for. All 0, but for `size`, is what most callers want; members that a later version adds
// have this meaning too. A limit of 0 is none.
typedef struct zrasn_options {
    size_t size;       // of this structure, as the caller was compiled
    int strict;        // refuse all that the library would not write (zr::decode_options::strict)
    int bare;          // octets come and go without the envelope's header: they begin with 30
    int version;       // of the envelope: 0 stands for 2, of other numbers the low eight bits count (256 is version 0)
    int indent;        // JSON in indented lines; else on one
    int show_secrets;  // members marked secret with their values
    int reserved;      // 0
    // Of what is read, octets or JSON; what passes one of them is refused with 275062885.
    size_t most_octets;    // of the octets or the text
    size_t most_heap;      // octets in blocks of the record's structure
    size_t most_elements;  // of all lists together, empty slots among them
    size_t most_depth;     // records that enclose each other; of zrasn_walk: levels that are shown (0: 64)
    // Octets of the text that is made. What a record is in JSON is refused where it is longer; deviations and elements
    // are left out from there, and the text says how many (0: 64 MiB of these).
    size_t most_text;
} zrasn_options;
// All as at the start.
#define ZRASN_OPTIONS_INIT \
    { sizeof(zrasn_options), 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0 }

// What a call found. All texts are in UTF-8 and fit for a terminal; the two pointers are to constants.
typedef struct zrasn_report {
    size_t size;         // of this structure, as the caller was compiled: to be set before the call
    int status;          // what the call returned
    int found;           // of octets: the one at `offset`; -1 behind the last one, and of JSON
    int expected_tag;    // of octets: the universal tag (X.680, 8.4) of what was expected there; -1 where it was none
    const char* name;    // of the status, such as "zr_err_no_match"
    const char* reason;  // a key that never changes, such as "no_match" (docs/api.md)
    size_t offset;       // of what was refused: octets before it
    size_t consumed;     // octets of the record that was read; what follows was not looked at
    size_t missing;      // the octets end early: at least so many more are needed; else 0
    size_t line;         // of JSON: counted from 1; 0 where octets were read
    size_t column;       // of JSON: characters, counted from 1
    char path[320];      // of the member, such as "attrs[3].name"; empty for the record itself
    char message[512];   // such as "found an INTEGER (02), expected a UTF8String (0c)"; empty after a success
} zrasn_report;
// Nothing is found yet.
#define ZRASN_REPORT_INIT                                                    \
    {                                                                        \
        sizeof(zrasn_report), 0, 0, 0, NULL, NULL, 0, 0, 0, 0, 0, {0}, { 0 } \
    }

// The version of the library, such as "1.2.0".
ZRASN_C_API const char* zrasn_version(void);
// The name of a status; "unknown" of any other number.
ZRASN_C_API const char* zrasn_status_name(int status);
// What a status means, as a sentence without a full stop.
ZRASN_C_API const char* zrasn_status_text(int status);
// Releases what any function here has made; null does nothing.
ZRASN_C_API void zrasn_free(void* block);

// The library's records: each stands behind those that it contains. zrasn_record_at is null from the count on.
ZRASN_C_API size_t zrasn_record_count(void);
ZRASN_C_API const zrasn_record* zrasn_record_at(size_t index);
// The record of a structure or binding class ("acl_ext_s_t", "asn_acl_ext_t"), or with the ending _s_t or _t left out
// ("acl_ext", "uuid"); null when there is none.
ZRASN_C_API const zrasn_record* zrasn_record_find(const char* name);
// The name of a record's structure.
ZRASN_C_API const char* zrasn_record_name(const zrasn_record* record);
// The name of its binding class.
ZRASN_C_API const char* zrasn_record_binding(const zrasn_record* record);
// The name of its module.
ZRASN_C_API const char* zrasn_record_module(const zrasn_record* record);
// The octets that its structure has.
ZRASN_C_API size_t zrasn_record_size(const zrasn_record* record);
// Whether the record, or one that it contains, has members marked secret.
ZRASN_C_API int zrasn_record_has_secrets(const zrasn_record* record);

// Octets to JSON. What follows the record is left alone: see `consumed`. docs/tool.md tells what a record is in JSON.
ZRASN_C_API int zrasn_to_json(const zrasn_record* record, const void* octets, size_t size, const zrasn_options* options,
                              char** json, size_t* length, zrasn_report* report);
// JSON to octets. Offsets, lines and columns are of the text.
ZRASN_C_API int zrasn_from_json(const zrasn_record* record, const char* json, size_t length,
                                const zrasn_options* options, unsigned char** octets, size_t* size,
                                zrasn_report* report);

// The same with the record's structure in C. A structure that is made here is released by zrasn_structure_free, with
// all that it points to; one of the caller's is only read.
ZRASN_C_API int zrasn_structure_to_json(const zrasn_record* record, const void* structure, const zrasn_options* options,
                                        char** json, size_t* length, zrasn_report* report);
ZRASN_C_API int zrasn_json_to_structure(const zrasn_record* record, const char* json, size_t length,
                                        const zrasn_options* options, void** structure, zrasn_report* report);
ZRASN_C_API int zrasn_decode(const zrasn_record* record, const void* octets, size_t size, const zrasn_options* options,
                             void** structure, zrasn_report* report);
ZRASN_C_API int zrasn_encode(const zrasn_record* record, const void* structure, const zrasn_options* options,
                             unsigned char** octets, size_t* size, zrasn_report* report);
ZRASN_C_API void zrasn_structure_free(const zrasn_record* record, void* structure);

// Which records octets may be, with an envelope's header or without one: of the `count` records at `among`, or of all
// that the library has when that is null.
//
//     {"fitting":["sec_id_t"],"nearest":[]}
//     {"fitting":[],"nearest":[{"record":"sec_id_t","offset":9,"path":"uuid","message":"found ..., expected ..."}]}
//
// `nearest` are those that fit furthest, where none fits and that is near. Octets that no record can be are refused: a
// header that is none, no SEQUENCE.
ZRASN_C_API int zrasn_identify(const void* octets, size_t size, const zrasn_record* const* among, size_t count,
                               const zrasn_options* options, char** json, size_t* length, zrasn_report* report);

// Where an encoding that is accepted is not the one that the library writes (docs/tool.md lists the keys); refuses what
// zrasn_to_json refuses. The header may be missing.
//
//     {"count":1,"deviations":[{"key":"longer_length","offset":5,"path":"","what":"a length of 2 octets, 1 would do"}]}
ZRASN_C_API int zrasn_check(const zrasn_record* record, const void* octets, size_t size, const zrasn_options* options,
                            char** json, size_t* length, zrasn_report* report);

// The elements of any BER as a tree, damaged or not, with the names of the record's members when there is a record;
// never refused for what the octets are. The first four octets may be an envelope's header.
//
//     {"envelope":{"offset":0,"header":4,"version":2},"elements":[{"offset":4,"header":2,"length":31,"tag":16,
//      "constructed":true,"type":"SEQUENCE","record":"uuid_t","children":[{"offset":6,"header":2,"length":4,"tag":2,
//      "type":"INTEGER","member":"time_low","value":"1806153744"}, ...]}],"problems":0}
//
// Elements of lists have an `index` in place of `member`, those of other classes a `class`, and one of indefinite
// length has `"indefinite":true` in place of its length. `value` is text for people: a number's digits, a text in
// quotes, octets as digits, long ones cut. What is wrong with an element stands in its `problems`; members that are not
// there in `missing`. An OCTET STRING that is a SEQUENCE or SET, or an envelope of one, has `children` in place of its
// value, and an `envelope` before them if it has one. Elements below the last level that is shown, and from where the
// text gets too long, are counted in `hidden`.
ZRASN_C_API int zrasn_walk(const zrasn_record* record, const void* octets, size_t size, const zrasn_options* options,
                           char** json, size_t* length, zrasn_report* report);

// What a record is: its fields as JSON, an ASN.1 module (X.680) with what it contains, a JSON Schema (2020-12) of its
// JSON. Of all records where `record` is null; the JSON Schema then accepts what is any of them.
ZRASN_C_API int zrasn_describe(const zrasn_record* record, char** json, size_t* length);
ZRASN_C_API int zrasn_schema(const zrasn_record* record, char** text, size_t* length);
ZRASN_C_API int zrasn_json_schema(const zrasn_record* record, char** json, size_t* length);

// A value of the record as JSON on one line, which zrasn_from_json takes. It follows from the fields, the seed and
// `filled` alone. Seed 0 is the smallest value, or filled the one of "zrasn records --example"; any other draws
// numbers, texts and lists. Filled ones have something in every member.
ZRASN_C_API int zrasn_sample(const zrasn_record* record, uint64_t seed, int filled, char** json, size_t* length);

#ifdef __cplusplus
}
#endif
