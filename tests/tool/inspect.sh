#!/bin/bash
# inspect.sh PROGRAM DIRECTORY: what dump, check and records print. DIRECTORY is made anew.
set -u
program=$(realpath "$1")
rm -rf "$2" && mkdir -p "$2" && cd "$2" || exit 1
unset NO_COLOR
case $program in */emulated/*) emulated=yes ;; *) emulated= ;; esac
result=0
fail() {
    echo "FAILED: $1" >&2
    result=1
}

# same CODE ARGUMENT...: runs the program with the file `in`; standard output must be what stands on standard input here.
same() {
    local code=$1 status
    shift
    cat > expected
    "$program" "$@" < in > out 2> err
    status=$?
    [ $status -eq "$code" ] || fail "zrasn $*: exit code $status, not $code"
    diff -u expected out >&2 || fail "zrasn $* < $(head -c 80 in)"
}
# value HEX TEXT: a dump of the one element shows its type and value so.
value() {
    "$program" dump <<< "$1" > out 2> err
    local shown
    shown=$(sed -n '2s/^.\{45\}//p' out)
    [ "$shown" = "$2" ] || fail "dump of $1: $shown, not $2"
}

# A member that is missing stands in the column of those that are there.
echo 3003020105 > in
same 1 dump --record value_s_t << 'END'
  offset  hdr     length  class    tag  form
       0    2          3  univ     16  cons  value_s_t SEQUENCE
       2    2          1  univ      2  prim    type INTEGER 5
                                               ! str (UTF8String) is missing
                                               ! data (OCTET STRING) is missing
END
# Of records that fit alike one line each.
echo 3081023000 > in
"$program" check < in > out
[ "$(grep -c ' fits .* 1 deviation ' out)/$(wc -l < out)" = 3/3 ] || fail "check: $(cat out)"

# Values of all universal types.
value '0101ff' 'BOOLEAN TRUE'
value '010100' 'BOOLEAN FALSE'
value '020180' 'INTEGER -128'
value '02088000000000000000' 'INTEGER -9223372036854775808'
value '0209112233445566778899' 'INTEGER 316059037807746189465'
value '0209ff7fffffffffffffff' 'INTEGER -9223372036854775809'
value '0a0c000000000000000000000005' 'ENUMERATED 5'
value "022100ff$(printf '00%.0s' {1..31})" 'INTEGER 115339776388732929035197660848497720713218148788040405586178452820382218977280'
value "022080$(printf '00%.0s' {1..31})" 'INTEGER -57896044618658097711785492504343953926634992332820282019728792003956564819968'
value "024101$(printf '00%.0s' {1..64})" "INTEGER 0x01$(printf '00%.0s' {1..23}) ... (65 octets)"
value "02407f$(printf 'ff%.0s' {1..63})" "INTEGER 6703903964971298549787012499102923063739682910296196688861780721860882015036773488400937149083451713845015929093243025426876941405973284973216824503042047"
value '020401' 'INTEGER octets 01'
value '01020001' 'BOOLEAN octets 0001'
value '050107' 'NULL octets 07'
value '0a0105' 'ENUMERATED 5'
value '030204f0' 'BIT STRING f0, unused bits: 4'
value '030100' 'BIT STRING no bits'
value '0400' 'OCTET STRING'
value '04026869' 'OCTET STRING 6869 "hi"'
value '04021b5b' 'OCTET STRING 1b5b'
value '0500' 'NULL'
value '06062a864886f70d' 'OBJECT IDENTIFIER 1.2.840.113549'
value '0603883703' 'OBJECT IDENTIFIER 2.999.3'
value '060a2affffffffffffffff7f' 'OBJECT IDENTIFIER 1.2.9223372036854775807'
value '060b2a83ffffffffffffffff7f' 'OBJECT IDENTIFIER 1.2.36893488147419103231'
value '060d8384a1d8f7e0d0c0b0a0908007' 'OBJECT IDENTIFIER 2.58672682060783374504820663'
value '06014f' 'OBJECT IDENTIFIER 1.39'
value '060150' 'OBJECT IDENTIFIER 2.0'
value '06028811' 'OBJECT IDENTIFIER 2.961'
value '060188' 'OBJECT IDENTIFIER octets 88'
value '06032a8001' 'OBJECT IDENTIFIER octets 2a8001'
value '06042a03' 'OBJECT IDENTIFIER octets 2a03'
value "064b$(printf 'ff%.0s' {1..74})7f" "OBJECT IDENTIFIER octets $(printf 'ff%.0s' {1..24}) ... (75 octets)"
value '0d028837' 'RELATIVE-OID 1079'
value '0c03c3a921' 'UTF8String "é!"'
value '0c021b5d' 'UTF8String "\u{1b}]"'
value '0c06e280aec29b5c' 'UTF8String "\u{202e}\u{9b}\\"'
value '0c03c328ff' 'UTF8String "\xc3(\xff"'
value '1303616263' 'PrintableString "abc"'
value '170d3236303130313030303030305a' 'UTCTime "260101000000Z"'
value '1e0600e9202ed800' 'BMPString "é\u{202e}\xed\xa0\x80"'
value '1c080001f60000110000' 'UniversalString "😀\xf4\x90\x80\x80"'
value '1e0161' 'BMPString octets 61'
value '0c056162' 'UTF8String "ab"'
value '5f87680101' '[APPLICATION 1000] 01'
value 'a000' '[0]'
value 'ff1f00' '[PRIVATE 31]'
value '1f2500' '[UNIVERSAL 37]'
value "0428$(printf '41%.0s' {1..40})" "OCTET STRING $(printf '41%.0s' {1..24}) \"$(printf 'A%.0s' {1..24})\" ... (40 octets)"
value "0c60$(printf 'c3a9%.0s' {1..48})" "UTF8String \"$(printf 'é%.0s' {1..36})\" ... (96 octets)"
value "0c6061$(printf 'c3a9%.0s' {1..47})62" "UTF8String \"a$(printf 'é%.0s' {1..35})\" ... (96 octets)"

# A tree, with the names of a record and without, damaged and whole.
echo 0402acdc 30 80 04 02 6869 31 00 0000 > in
same 0 dump << 'END'
  offset  hdr     length  class    tag  form
       0    4                                envelope, version 2
       4    2      indef  univ     16  cons  SEQUENCE
       6    2          2  univ      4  prim    OCTET STRING 6869 "hi"
      10    2          0  univ     17  cons    SET
      12    2          0  univ      0  prim    end-of-contents
END
echo 30 19 0c 01 61 30 12 30 80 02 01 ff 0c 00 24 04 04 02 68 69 00 00 02 01 07 05 00 05 00 > in
same 1 dump --record attr_s_t << 'END'
  offset  hdr     length  class    tag  form
       0    2         25  univ     16  cons  attr_s_t SEQUENCE
       2    2          1  univ     12  prim    name UTF8String "a"
       5    2         18  univ     16  cons    values SEQUENCE OF
       7    2      indef  univ     16  cons      [0] SEQUENCE (value_s_t)
       9    2          1  univ      2  prim        type INTEGER -1
      12    2          0  univ     12  prim        str UTF8String
      14    2          4  univ      4  cons        data OCTET STRING
      16    2          2  univ      4  prim          OCTET STRING 6869 "hi"
      20    2          0  univ      0  prim        end-of-contents
      22    2          1  univ      2  prim      INTEGER 7
      22                                           ! no element of values
      25    2          0  univ      5  prim    NULL
      25                                         ! more than the record has members
      27                                     ! the record ends here: 2 octets more
      27    2          0  univ      5  prim  NULL
END
echo 30 03 02 01 ff > in
"$program" dump --record uuid_t < in 2> err | grep -q ' time_low INTEGER -1 (4294967295 as uint32_t)$' || fail 'a uint32_t'
# The length that is written is shown; what is cut off or has a wrong length is one problem.
echo 30 06 04 00 30 02 30 09 > in
same 1 dump --record attr_s_t << 'END'
  offset  hdr     length  class    tag  form
       0    2          6  univ     16  cons  attr_s_t SEQUENCE
       2    2          0  univ      4  prim    OCTET STRING
       2                                         ! not name (UTF8String)
       4    2          2  univ     16  cons    values SEQUENCE OF
       6    2          9  univ     16  cons      [0] SEQUENCE (value_s_t)
       6                                           ! the contents run over the end by 9 octets
END
grep -qF 'standard input: 2 problems, 0 octets not read' err || fail "$(cat err)"
echo 30 0f 30 08 0c 01 61 30 63 02 05 00 bf bd 84 40 00 > in
same 1 dump --record attrlist_s_t << 'END'
  offset  hdr     length  class    tag  form
       0    2         15  univ     16  cons  attrlist_s_t SEQUENCE
       2    2          8  univ     16  cons    attrs SEQUENCE OF
       4    2          1  univ     12  prim      UTF8String "a"
       4                                           ! no element of attrs
       7    2         99  univ     16  cons      [1] SEQUENCE (attr_s_t) octets 020500
       7                                           ! the contents run over the end by 96 octets
      12    5          0  cont      *  cons    [1000000]
      12                                         ! more than the record has members
END
echo 0402acdc 30 50 30 4e 30 10 0c 01 61 30 0b 30 09 02 01 05 0c 11 70 61 79 > in
same 1 dump --record attrlist_s_t << 'END'
  offset  hdr     length  class    tag  form
       0    4                                envelope, version 2
       4    2         80  univ     16  cons  attrlist_s_t SEQUENCE
       4                                       ! the contents run over the end by 61 octets
       6    2         78  univ     16  cons    attrs SEQUENCE OF
       8    2         16  univ     16  cons      [0] SEQUENCE (attr_s_t)
      10    2          1  univ     12  prim        name UTF8String "a"
      13    2         11  univ     16  cons        values SEQUENCE OF
      15    2          9  univ     16  cons          [0] SEQUENCE (value_s_t)
      17    2          1  univ      2  prim            type INTEGER 5
      20    2         17  univ     12  prim            str UTF8String "pay"
END
echo 30 0a 30 04 02 ff 01 02 02 01 07 05 1f 80 > in
same 1 dump << 'END'
  offset  hdr     length  class    tag  form
       0    2         10  univ     16  cons  SEQUENCE
       2    2          4  univ     16  cons    SEQUENCE
       4                                         ! the length octet ff means nothing: 4 octets not read
       8    2          1  univ      2  prim    INTEGER 7
      11                                       ! the length is cut off: 1 octet not read
      12                                     ! the identifier is cut off: 2 octets not read
END
: > in
same 1 dump << 'END'
  offset  hdr     length  class    tag  form
       0                                     ! no element
END
for row in 0102ffff:'one octet' 0200:'at least one octet' 0300:'at least one octet' 030108:'at most 7' 030101:'no bits' \
    050100:'no contents' 060188:'cut off' 06032a8001:'begins with 80' 1000:'primitive form' 2200:'constructed form' 020100:'' 2400:'' 3100:''; do
    echo "${row%%:*}" > in
    "$program" dump < in > out 2> err
    [ $? -eq "$([ -z "${row#*:}" ]; echo $?)" ] || fail "dump of ${row%%:*}: exit code"
    grep -qF -- "${row#*:}" <(grep '!' out || echo) || fail "dump of ${row%%:*}: $(cat out)"
done

# From an octet on, so many levels, and as JSON.
echo 0402acdc 0500 0402acdc 30 07 30 05 020105 02ff > in
same 1 dump --offset 6 --depth 2 << 'END'
  offset  hdr     length  class    tag  form
       6    4                                envelope, version 2
      10    2          7  univ     16  cons  SEQUENCE
      12    2          5  univ     16  cons    SEQUENCE
      17                                         ! the length octet ff means nothing: 2 octets not read
END
sed -i 's/02ff/0500/' in
same 0 dump --offset 10 --depth 1 --json <<< \
    '{"elements":[{"offset":0,"header":2,"length":7,"tag":16,"constructed":true,"type":"SEQUENCE","children":[],"hidden":3}],"problems":0}'
"$program" dump --offset 99 in > out && fail 'dump behind the end'
grep -qx '      19                                     ! no element' out || fail "dump behind the end: $(cat out)"

# What is inside of an OCTET STRING, unless it is not quite BER, and not of a record with secrets; bounded.
echo 30 27 04 0b 0402acdc 30 05 0403 020105 04 07 3105 0403 300100 04 05 3003 020005 04 04 3002 0500 04 02 3000 > in
cat > want << 'END'
  offset  hdr     length  class    tag  form
       0    2         39  univ     16  cons  SEQUENCE
       2    2         11  univ      4  prim    OCTET STRING with an envelope
       4    4                                    envelope, version 2
       8    2          5  univ     16  cons      SEQUENCE
      10    2          3  univ      4  prim        OCTET STRING 020105
      15    2          7  univ      4  prim    OCTET STRING with BER
      17    2          5  univ     17  cons      SET
      19    2          3  univ      4  prim        OCTET STRING 300100
      24    2          5  univ      4  prim    OCTET STRING 3003020005
      31    2          4  univ      4  prim    OCTET STRING with BER
      33    2          2  univ     16  cons      SEQUENCE
      35    2          0  univ      5  prim        NULL
      37    2          2  univ      4  prim    OCTET STRING 3000
END
same 0 dump < want
grep -v '^ *\(4\|8\|10\|17\|19\|33\|35\) ' want |
    sed '/^ *2 /s/with.*/0402acdc30050403020105/; /^ *15 /s/with.*/31050403300100/; /^ *31 /s/with.*/30020500/' |
    same 0 dump --depth 2
"$program" dump --json < in > out && grep -qF '"type":"OCTET STRING","envelope":{"offset":4,"header":4,"version":2},"children":[{"offset":8,' out ||
    fail "dump --json of an envelope inside: $(cat out)"
echo 30 0e 0c 01 61 04 09 30 07 0c 05 73656372 74 > in
"$program" dump --record azn_util_password_in < in > out 2> err
grep -q secr out && fail "dump shows what is inside of a secret: $(cat out)"
nested=0500 count=0
while [ ${#nested} -lt 240 ]; do
    nested=$(printf '30%02x%s' $((${#nested} / 2)) "$nested")
    nested=$(printf '04%02x%s' $((${#nested} / 2)) "$nested")
    count=$((count + 1))
done
"$program" dump <<< "30$(printf %02x $((${#nested} / 2)))$nested" > out && [ "$(grep -c 'with BER' out)" -eq $count ] ||
    fail "$count strings in strings: $(cat out)"

# Values whole, and lines that fit into the window of a terminal.
echo "30 81d2 0c81c0 $(printf 'c3a9%.0s' {1..96}) 040d$(printf '41%.0s' {1..13})" > in
"$program" dump --whole < in > out
grep -qx "       3    3        192  univ     12  prim    UTF8String \"$(printf 'é%.0s' {1..96})\"" out || fail "dump --whole: $(cat out)"
"$program" dump --json --whole < in | grep -qF "$(printf 'é%.0s' {1..96})" || fail 'dump --json --whole'
if command -v script > /dev/null; then
    # columns OPTION...: the widest line on a terminal of 60 columns.
    columns() {
        script -qec "stty cols 60; '$program' dump $* in" /dev/null < /dev/null | tr -d '\r' | sed 's/\x1b\[[0-9]*m//g' |
            LC_ALL=C.UTF-8 wc -L
    }
    [ "$(columns)" -eq 60 ] && [ "$(COLUMNS=50 columns)" -eq 50 ] && [ "$(columns --whole)" -gt 100 ] ||
        fail "lines in a window: $(columns) $(COLUMNS=50 columns) $(columns --whole)"
fi

# Colours, and nothing but printable characters.
echo '0c021b07 0101' > in
"$program" dump --color always < in 2> err | grep -q $'\e\[31m! ' || fail 'damage has no colour'
"$program" dump --color auto < in 2> err | grep -q $'\e' && fail 'colours in a file'
for row in xterm:1 dumb:0 :0; do
    count=$(TERM=${row%%:*} script -qec "'$program' dump in" /dev/null < /dev/null | grep -c $'\e\[31m! ')
    [ "$count" -eq "${row#*:}" ] || fail "colours with TERM=${row%%:*}"
done
echo '{"type": -7, "str": "a\"b", "data": ""}' | "$program" encode value_s_t > in
"$program" decode value_s_t --compact --color always in > out
[ "$(cat out)" = $'{\e[36m"type"\e[0m:\e[33m-7\e[0m,\e[36m"str"\e[0m:\e[32m"a\\"b"\e[0m,\e[36m"data"\e[0m:\e[32m""\e[0m}' ] ||
    fail "JSON in colour: $(cat out)"
for command in 'decode value_s_t in' 'decode value_s_t in --select type' 'sample value_s_t' 'records --json' 'dump --json in' \
    'records --example uuid' 'schema --json uuid' 'find --json in' 'roundtrip --json --record value_s_t in'; do
    "$program" $command --color always > out 2> err
    sed 's/\x1b\[[0-9]*m//g' out | cmp - <("$program" $command 2> err) && grep -q $'\e\[3[26]m"' out || fail "colours of $command"
done
"$program" decode value_s_t in --color always -o out && grep -q $'\e' out && fail 'JSON in a file has colours'
head -c 100000 /dev/urandom > in
for record in '' '--record acl_ext_s_t' '--record namevalue_s_t'; do
    "$program" dump --from raw $record < in > out 2> err
    iconv -f UTF-8 -t UTF-8 out > /dev/null || fail 'dump writes bad octets'
    LC_ALL=C.UTF-8 grep -qP '[\x00-\x09\x0b-\x1f\x7f\x{80}-\x{9f}\x{61c}\x{200e}\x{200f}\x{202a}-\x{202e}\x{2066}-\x{2069}]' out &&
        fail 'dump writes what is not printable'
done

# What check says.
printf '%s' '30 04 30 02 30 00' > in
same 1 check --record attrlist_s_t < /dev/null
grep -qF 'standard input:6: attrs[0].name: found the end of the data, expected a UTF8String (0c)' err || fail "check: $(cat err)"
echo 0402acdc 30 07 02 01 05 0c 00 04 00 > in
same 0 check --record value_s_t <<< 'standard input: fits value_s_t, as the library writes it'
same 0 check <<< 'standard input: fits value_s_t, as the library writes it'
echo 30 81 08 02 02 00 05 0c 00 04 00 07 > in
same 4 check << 'END'
standard input:1: a length of 2 octets, 1 would do
standard input:5: type: the octets 0005, read as 5 and written as 05
standard input:11: 1 octet after the record
standard input: fits value_s_t, 3 deviations from what the library writes (no envelope header)
END
echo 0402acdc 30 04 0c 00 30 00 > in
same 1 check << 'END'
standard input: fits attr_s_t, as the library writes it
standard input: fits yvprincipal_chain_s_t, as the library writes it
standard input: fits aznadmsvc_s_t, as the library writes it
standard input: fits yvattr_s_t, as the library writes it
END
grep -qx 'standard input: fits several records, of which one has to be named: attr_s_t, yvprincipal_chain_s_t, aznadmsvc_s_t, yvattr_s_t' err ||
    fail "check of several: $(cat err)"
same 0 check attr <<< 'standard input: fits attr_s_t, as the library writes it'
echo 0407acdc 30 04 0c 00 30 00 > in
same 1 check < /dev/null
grep -qF 'found version 7, expected version 2 (zr_err_bad_envelope, 275063190)' err || fail "check: $(cat err)"
grep -qF 'uuid_t' err && fail "check names a record: $(cat err)"
# none NAME WHAT OCTETS...: they fit no record; NAME is the nearest, if there is one, and WHAT is wrong.
none() {
    local name=$1 what=$2
    shift 2
    echo "$@" > in
    same 1 check < /dev/null
    head -1 err | grep -qx "standard input: fits none of the records$name" || fail "check of $*: $(cat err)"
    grep -qF -- "$what" err || fail "check of $*: $(cat err)"
    [ -n "$name" ] || ! grep -qE '_(s_)?t\b' err || fail "check of $* names a record: $(cat err)"
}
none '' 'input:4: found the end of the data behind the envelope header, expected a SEQUENCE (30)' 04 02 ac dc
none '' 'input:2: found the end of the data in the envelope header, expected 04 02 ac dc' 04 02
none '' 'input:4: found a SEQUENCE (30) that is longer than the 3 octets left here' 04 02 ac dc 30 05 0c
none '' 'input:0: found 31 02 05 00, expected the envelope header' 31 02 05 00
none '' 'input: fits none' 30 14 30 12 a0 03 02 01 02 02 09 00 ca fe ca fe ca fe ca fe 05 00
none '' 'input: fits none' 30 05 02 01 05 05 00
none '; nearest is value_s_t, and as near yvaction_s_t, and as near ejauditevent_s_t' 'input:6: data: found a NULL (05), expected an OCTET STRING (04)' 30 07 02 00 0c 00 05 00 00
none '; nearest is acl_ext_s_t' 'input:12: entries[0].permset.perms[0]: found a BOOLEAN' \
    30 13 0c 00 30 0b 30 09 30 04 30 02 01 00 02 01 05 30 00 30 00

# Size: memory and time do not follow that of a string, and the depth does not use the stack.
{ printf '\x04\x84\x05\xf5\xe1\x00'; head -c 100000000 /dev/zero; } > big.ber
(
    ulimit -s 512
    timeout 60 "$program" dump big.ber > out && [ "$(wc -c < out)" -lt 400 ] && grep -qF '(100000000 octets)' out
) || fail 'dump of a long string'
# The sanitizers and an emulator take more memory than the program.
if command -v python3 > /dev/null && [ ! "$emulated" ] && ! grep -q __asan_init "$program"; then
    { printf '\x24\x80'; for i in $(seq 1000); do printf '\x04\x82\xc3\x50'; head -c 50000 /dev/zero; done; printf '\0\0'; } > cut.ber
    for command in '"$0" dump big.ber' 'cat big.ber | "$0" dump' '"$0" dump cut.ber'; do
        python3 - "$command" "$program" << 'END' || fail "memory of $command"
import resource, subprocess, sys
subprocess.run(["bash", "-c", sys.argv[1], sys.argv[2]], stdout=subprocess.DEVNULL, check=True)
kilobytes = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss
assert kilobytes < 20000, kilobytes
END
    done
fi
awk 'BEGIN { for (i = 0; i < 1000000; i++) printf "3080"; for (i = 0; i < 1000000; i++) printf "0000" }' > deep.hex
(
    ulimit -s 512
    "$program" dump deep.hex | tail -1 | grep -q '^ 3999998 .*end-of-contents'
) || fail 'dump of a million levels'
(
    ulimit -s 512
    head -c 2000000 deep.hex > deep.cut
    "$program" dump --whole --record namevalue_s_t deep.cut > out 2> err
    [ $? -eq 1 ] && [ "$(grep -c 'end-of-contents octets (00 00) are missing' out)" -eq 500000 ] &&
        [ "$("$program" check deep.cut 2>&1 | wc -c)" -lt 2000 ]
) || fail 'a cut tree of many levels'
rm -f *.ber deep.*

# Records.
: > in
same 0 records acl_entry << 'END'
acl_entry_s_t  (aclidl_asn)
    permset                     acl_permset_s_t
    int_a                       int32_t
    id                          sec_id_t
END
"$program" records > out
for record in $(sed -nE 's/^struct ([a-z_A-Z0-9]+) \{/\1/p' "$3"/base_idls/*_asn.h); do
    grep -q "^$record .*_asn$" out || fail "records does not list $record"
done
[ "$(grep -c '^[a-zA-Z]' out)" -ge 65 ] || fail 'records are missing'
"$program" records --json > out
if command -v python3 > /dev/null; then
    python3 - << 'END' || fail 'records --json'
import json
records = json.load(open("out"))
assert len(records) >= 65, len(records)
by_name = {r["name"]: r for r in records}
assert by_name["sec_id_pa_t"]["fields"][1] == {"name": "ids", "kind": "list_of_records", "record": "sec_id_t",
    "count": "count", "count_type": "uint16_t"}, by_name["sec_id_pa_t"]
assert [f["kind"] for f in by_name["cert_request_in"]["fields"]] == ["version", "stored_text", "stored_text",
    "optional_octets"]
assert by_name["uuid_t"]["fields"][5] == {"name": "node", "kind": "fixed_octets", "size": 6}
for record in records:
    for field in record["fields"]:
        assert field.get("record", "uuid_t") in by_name
END
fi
exit $result
