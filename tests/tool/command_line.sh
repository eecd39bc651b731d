#!/bin/bash
# command_line.sh PROGRAM DIRECTORY ROOT: what the program answers to its command line and its input: exit codes, messages,
# forms of input and output. DIRECTORY is made anew; ROOT is where the sources are.
set -u
program=$(realpath "$1")
root=$(realpath "$3")
rm -rf "$2" && mkdir -p "$2" && cd "$2" || exit 1
unset NO_COLOR
# Under an emulator locales may lie in the other order of octets, and no handler sees that a file was shortened.
case $program in */emulated/*) emulated=yes ;; *) emulated= ;; esac
result=0
fail() {
    echo "FAILED: $1" >&2
    result=1
}

# check CODE OUT ERR ARGUMENT...: runs the program with standard input from the file `in`. Standard output must hold the
# text OUT, standard error the text ERR; an empty text means that nothing is written there.
check() {
    local code=$1 out=$2 err=$3 status
    shift 3
    "$program" "$@" < in > out 2> err
    status=$?
    [ $status -eq "$code" ] || fail "zrasn $*: exit code $status, not $code: $(head -c 300 err)"
    for pair in "out:$out" "err:$err"; do
        local file=${pair%%:*} text=${pair#*:}
        if [ -z "$text" ]; then
            [ -s $file ] && fail "zrasn $*: std$file is not empty: $(head -c 300 $file)"
        else
            grep -qF -- "$text" $file || fail "zrasn $*: std$file lacks \"$text\": $(head -c 300 $file)"
        fi
    done
}

id='6ba7b810-9dad-11d1-80b4-00c04fd430c8'
hex=0402acdc301f02046ba7b8100203009dad020211d102020080020200b4040600c04fd430c8
: > in

# Secrets are shown nowhere, in no form, unless they are asked for: not in JSON, not in a tree, not in a refusal.
password=azn_util_password_in_s_t
# hidden CODE ERR INPUT ARGUMENT...: what is printed lacks the secret.
hidden() {
    local code=$1 err=$2
    printf '%s' "$3" > in
    shift 3
    "$program" "$@" < in > out 2> err
    [ $? -eq "$code" ] || fail "zrasn $*: not exit code $code"
    grep -q 'sesame\|73 \?65 \?73' out err && fail "zrasn $* shows a secret: $(cat out err)"
    grep -qF -- "$err" out err || fail "zrasn $*: lacks \"$err\": $(cat out err)"
}
pair=0402acdc300e0c0475736572
whole=${pair}0c06736573616d65
hidden 0 '"str_b": "***"' $whole decode $password
hidden 0 '"str_b":"***"' "$whole" decode $password --lines
hidden 0 'str_b UTF8String ***' $whole dump --record $password
hidden 0 'OCTET STRING ***' 0402acdc30120c04757365722c0a040373657304036d6173 dump --record $password
hidden 1 'zr_err_no_match' ${pair}0406736573616d65 decode $password
hidden 1 'zr_err_no_match' ${pair}0406736573616d65 check --record $password
hidden 1 'not str_b' ${pair}0406736573616d65 dump --record $password
hidden 1 'not JSON' '{"str_a": "a", "str_b": sesame}' encode $password
hidden 1 'not JSON' '{"str_a": "a", "str_b": "sesame' encode $password
hidden 1 'zero character' '{"str_a": "a", "str_b": "sesame\u0000"}' encode $password
hidden 1 'found something else' '{"str_a": "a", "str_b": {"hex": "sesame"}}' encode $password
hidden 1 'a secret that was not shown' '{"str_a": "***", "str_b": "***"}' encode $password
printf '%s' $whole > in
check 0 '"str_b": "sesame"' '' decode $password --show-secrets
check 0 'str_b UTF8String "sesame"' '' dump --record $password --show-secrets
: > in

# The command line.
check 2 '' 'Usage'
check 0 'zrasn 1.' '' --version
check 0 'Usage' '' --help
for verb in records schema encode decode dump check roundtrip find canon sample diff wireshark completion manual; do
    check 0 'Example:' '' $verb --help
    grep -q "zrasn $verb" out || fail "$verb --help has no example"
    "$program" --help | grep -q " $verb " || fail "--help does not list $verb"
done
check 2 '' 'there is no verb "decod"; did you mean "decode"?' decod
check 2 '' 'there is no verb "' $'\e[31m'
grep -q $'\e' err && fail 'an escape character reached the terminal'
check 2 '' 'there is no record "uiud_t"; did you mean "uuid_t"?' decode uiud_t
check 2 '' 'there is no record "acl_ex"; did you mean "acl_ext' decode acl_ex
check 2 '' 'decode has no option --compct; did you mean "--compact"?' decode uuid_t --compct
check 2 '' 'encode has no option -c' encode uuid_t -c
# usage MESSAGE ARGUMENT...: the whole message.
usage() {
    local message=$1
    shift
    check 2 '' "zrasn: $message" "$@"
    [ "$(head -1 err)" = "zrasn: $message" ] || fail "zrasn $*: $(head -1 err)"
}
usage 'unknown option -q' -q
usage 'unknown option -V' -V
usage 'decode has no option -r' decode -r
usage 'decode has no option --json' decode uuid_t --json
usage 'decode has no option -O; did you mean "-o"?' decode uuid_t -O
usage 'decode has no option --form; did you mean "--from"?' decode uuid_t --form hex
usage 'a verb is missing' -- decode
usage 'RECORD is missing' encode
usage '--lines needs a RECORD' decode --lines
usage 'there is an argument too many: "b"' records uuid_t b
usage '--example needs a RECORD' records --example
"$program" records --example acl_ext > example
"$program" encode acl_ext example --hex | "$program" decode acl_ext | cmp - example || fail 'an example comes back otherwise'
usage '--from needs a value: auto|raw|hex|base64|dump' decode uuid_t --from
usage '--from needs a value: auto|raw|hex|base64|dump' decode uuid_t --from=
usage '--output needs a value: FILE' encode uuid_t -o
usage '--record needs a value: RECORD' check --record
usage 'SHELL: "tcsh" is none of bash|zsh|fish' completion tcsh
usage "there is no record \"$(printf 'x%.0s' {1..40})...\" (\"zrasn records\" lists them)" decode "$(head -c 99999 /dev/zero | tr '\0' x)"
usage "there is no verb \"$(printf '\\x80%.0s' {1..37})...\"" "$(head -c 999 /dev/zero | tr '\0' '\200')"
check 3 '' '...xxx' dump "$(head -c 99999 /dev/zero | tr '\0' x)"
[ "$(wc -c < err)" -lt 400 ] || fail 'a file name is written whole'
check 2 '' 'is none of auto|raw|hex|base64|dump' decode uuid_t --from octal
check 2 '' 'from 0 to 255' encode uuid_t --version-byte 256
check 2 '' 'exclude' encode uuid_t --hex --base64
check 2 '' 'there is no record "nothing"' dump --record nothing
check 3 '' 'no-such-file: No such file' decode uuid_t no-such-file
check 3 '' 'Is a directory' decode uuid_t .
echo "\"$id\"" > in
check 3 '' '/dev/full: No space left' encode uuid_t -o /dev/full

# The place in JSON: tabs and backslashes as in the file, the caret below the character, a bound for all.
place() {
    printf "$1" > in
    check 1 '' "$2" encode sec_id_t
    [ "$(sed -n 2,3p err)" = "$(printf "$3")" ] || fail "the place of $2: $(cat err)"
}
[ "$emulated" ] || place '{"name":\t"\\\\ \xe6\xbc\xa2\xe5\xad\x97 e\xcc\x81", "nme": 1}\r\n' '1:22: sec_id_t: found a member "nme"' \
    '  {"name":\t"\\\\ \xe6\xbc\xa2\xe5\xad\x97 e\xcc\x81", "nme": 1}\n          \t             ^'
place '{\n"\033": 1}' '2:2: sec_id_t: not JSON' '  "\\u{1b}": 1}\n   ^'
place "{\"$(printf '\\200%.0s' {1..999})\": 1}" '1:' "  {\"$(printf '\\\\x80%.0s' {1..60})\n    ^"
{ printf '{"\200'; head -c 5000000 /dev/zero | tr '\0' '\200'; echo '": 1}'; } > in
check 1 '' 'not JSON' encode sec_id_t
[ "$(wc -c < err)" -lt 1000 ] || fail "a message has $(wc -c < err) octets"
echo "\"$id\"" > in
check 3 '' 'no/where: No such file' encode uuid_t -o no/where

# Forms of output.
check 0 "$hex" '' encode uuid_t --hex
check 0 'BAKs3DAfAgRrp7gQAgMAna0CAhHRAgIAgAICALQEBgDAT9QwyA==' '' encode uuid_t --base64
check 0 '0407acdc30' '' encode uuid_t --hex --version-byte 7
cp out seven
cp in json
cp seven in
check 0 "$id" '' decode uuid_t --version-byte 7
check 0 'as the library writes it' '' check --version-byte 7
check 1 '' 'found version 7, expected version 3' decode uuid_t --version-byte 3
cp json in
check 0 '' '' encode uuid_t -o raw
check 0 '' '' encode asn_uuid_t --output raw2
cmp -s raw raw2 || fail 'the name of the binding gives other octets'
xxd() { od -An -v -tx1 "$1" | tr -d ' \n'; }
[ "$(xxd raw)" = $hex ] || fail "raw octets: $(xxd raw)"

# Forms of input: all of them the same octets.
spaced=$(echo $hex | sed 's/../& /g')
{
    echo "$hex"
    echo "${hex^^}"
    echo "$spaced"
    echo "$spaced" | tr ' ' ':' | sed 's/:$//'
    echo "$spaced" | sed 's/\(..\) /0x\1, /g'
    echo "${hex:8}"
    echo "$hex" | sed 's/.\{10\}/&@/g'
    base64 -w0 raw
    echo
    tail -c +5 raw | base64 -w0
    echo
    echo "-----BEGIN UUID-----@$(base64 -w20 raw | tr '\n' '@')-----END UUID-----"
    echo "a comment: text@-----BEGIN UUID-----@Header: value@@$(base64 -w20 raw | tr '\n' '@')-----END UUID-----@behind"
    base64 -w0 raw | tr '+/' '-_' | tr -d =
    echo
} > forms
while read -r form; do
    echo "$form" | tr '@' '\n' > in
    check 0 "\"$id\"" '' decode uuid_t
    check 0 "\"$id\"" '' decode uuid_t in
done < forms
for form in raw headerless; do
    [ $form = raw ] && cp raw in || tail -c +5 raw > in
    check 0 "\"$id\"" '' decode uuid_t
    check 0 "\"$id\"" '' decode uuid_t --from raw -
done
printf '%s' "$hex" > in
check 0 "\"$id\"" '' decode uuid_t --from hex
check 1 '' '275063204' decode uuid_t --from raw
check 1 '' '275063190' decode uuid_t --from base64

# What xxd, hexdump and od print of many octet strings, some of lines that repeat themselves.
# shown FILE COMMAND...: the octets that `dump` finds in what the command prints are those of the file.
shown() {
    local file=$1
    shift
    command "$@" "$file" > in
    "$program" dump --from raw - < "$file" > want 2> err
    "$program" dump - < in > out 2> err
    cmp -s want out || fail "$* of $(xxd "$file"): $(cat in err)"
}
{ awk '/^(#|$)/ { next } { n++ } n % 33 == 3 { print $1 }' "$root"/tests/vectors/*.txt
    echo 04; echo 0402ac; echo 0402acdc300a0c080000000000000000
    printf '0402acdc3082010b0404820107%0526d\n0402acdc305104%02x%0158d\n' 0 79 0; } > strings
[ "$(wc -l < strings)" -ge 24 ] || fail 'too few octet strings'
while read -r string; do
    printf "$(echo "$string" | sed 's/../\\x&/g')" > octets
    for form in xxd 'xxd -u -g1 -c32' hexdump 'hexdump -C' 'hexdump -v' 'od -Ax -tx1' od 'od -b' 'od -Ax -tx1z -w8' 'od -tx4'; do
        shown octets $form
    done
done < strings
# as_octets WANTED: the dump in `in` is of these octets.
as_octets() {
    printf "$(echo "$1" | sed 's/../\\x&/g')" > octets
    "$program" dump --from raw octets > want 2> err
    "$program" dump - < in > out 2> err
    cmp -s want out || fail "written out: $(cat in err)"
}
short=0402acdc300a0c080000000000000000
for rows in '00000000: 0402 acdc 300a 0c08 0000 0000 0000 0000  ....0...........' \
    '00000000  04 02 ac dc 30 0a 0c 08  00 00 00 00 00 00 00 00  |....0...........|@00000010' \
    '0000000 0204 dcac 0a30 080c 0000 0000 0000 0000@0000010' '0000000 0402 acdc 300a 0c08 0000 0000 0000 0000@0000010' \
    '000000 04 02 ac dc 30 0a 0c 08@000008 00 00 00 00@*@000010' '0000000 001004 156254 005060 004014 000000@0000012@' \
    '0000100 001004 156254 005060 004014@0000110 000000 000000@*@0000120' '0000000 004 002 254 334 060 012 014 010 000@0000011'; do
    echo "$rows" | tr @ '\n' > in
    case $rows in *0012@) as_octets ${short:0:20} ;; *0011) as_octets ${short:0:18} ;; *) as_octets $short ;; esac
done
# wrong MESSAGE ROWS [OPTION...]
wrong() {
    echo "$2" | tr @ '\n' > in
    check 1 '' "$1" decode uuid_t "${@:3}"
}
wrong 'in:26: an offset that does not go on' '00000000: 0402 acdc  ....@00000006: 300a@' --from dump in
wrong 'not hexadecimal digits' '00000000: 0402 acdc@00000004: 30a' --from dump
wrong 'a star with no line' '*' --from dump
wrong 'a star with no offset behind it' '000000 04 02 ac dc@000004 04 02 ac dc@*'
wrong 'repeated lines of more than 16777216 octets' '000000 04 02 ac dc@000004 04 02 ac dc@*@f000000'

# JSON where octets are wanted; and a wait at a terminal is announced.
echo '"6ba7b810-9dad-11d1-80b4-00c04fd430c8"' > in
check 1 '' 'hint: this looks like JSON: "zrasn encode uuid_t" turns it into octets' decode uuid
echo '{"type": 1}' > in
check 1 '[APPLICATION 27]' 'hint: this looks like JSON: "zrasn encode RECORD" turns it into octets' dump
if command -v script > /dev/null; then
    script -qec "'$program' decode uuid_t" /dev/null < /dev/null 2> err | grep -q 'waiting for input' || fail 'no word of waiting'
fi

# What an input has beside the first record is told, and the exit code is 1; that record is printed all the same.
block=$(base64 -w20 raw)
# more WHAT ARGUMENT...: the record on standard output, WHAT on standard error.
more() {
    local what=$1
    shift
    check 1 "\"$id\"" "$what" decode uuid_t "$@"
    [ "$(wc -l < out)" -eq 1 ] && [ "$(wc -l < err)" -eq 1 ] || fail "$what: $(cat out err)"
}
cat raw raw > in
more 'standard input:37: 37 octets behind the record, as of another one: not decoded' --framing one
check 4 'standard input:37: 37 octets after the record' '' check --framing one
echo '05 02 ac dc 00 30 08 0c 04 63 61 61 61 30 00' > in
check 4 'standard input:0: a header of 5 octets, 4 are written' '' check attr
echo "$hex 00" > in
more 'in:37: 1 octet behind the record: not decoded' in
tail -c +7 raw | od -An -v -tx1 | sed '1s/^/ 3080/; $s/$/ 0000 0404/' > in
more 'standard input:35: 2 octets behind the record: not decoded'
printf '%s\n' '-----BEGIN A-----' "$block" '-----END A-----' '-----BEGIN A-----' 'garbage!' > in
more 'standard input:89: another armoured block: not read'
check 1 'fits uuid_t, as' 'standard input:89: another armoured block: not read' check
check 1 'node OCTET STRING' 'another armoured block' dump --record uuid_t
printf '%s\n' '-----BEGIN A-----' " $block" '-----END A-----' > in  # a blank goes on with a header only behind one
check 0 "\"$id\"" '' decode uuid_t
printf '%s\r\n' '-----BEGIN A-----' "$block" '-----END B-----' > in
more 'standard input:75: the armour of "A" ends as that of "B"'
check 1 'fits uuid_t, as' 'the armour of "A" ends as that of "B"' check
printf '%s\n' '-----BEGIN A-----' "$block" '-----BEGIN A-----' "$block" '-----END A-----' > in
check 1 '' 'standard input:73: a -----BEGIN line inside the armour' decode uuid_t
printf '%s\n' '-----BEGIN A-----' "$block" 'a: b' '-----END A-----' > in
check 1 '' 'a base64 digit behind the padding' decode uuid_t
echo "-----BEGIN UUID-----" > in
check 1 '' 'no -----END line' decode uuid_t
echo "$hex $hex" > in
check 1 "\"$id\"" 'standard input: line 1:37: 37 octets behind the record, as of another one' decode uuid_t --lines

# Several files and streams: envelopes one behind the other, or behind their lengths, which is found out.
value=0402acdc30090201010c0161040101
stream() { printf "$(echo "$1" | sed 's/../\\x&/g')" > in; }
for lengths in ': :concatenated' '0025:000f:2' '2500:0f00:2le' '00000025:0000000f:4' '25000000:0f000000:4le'; do
    IFS=: read -r first second form <<< "$lengths"
    stream "${first# }$hex${second# }$value"
    for framing in auto "$form"; do
        check 1 "\"$id\"" 'standard input: envelope 2 (octet ' decode uuid_t --framing $framing
        check 0 '{"type":1,"str":"a","data":"01"}' 'standard input: envelope 1 (octet' decode --compact --framing $framing
        [ "$(wc -l < out)" -eq 2 ] && grep -q 'envelope 2 (octet .*): taken for value_s_t' err || fail "$form: $(cat out err)"
        check 0 'all: 2 records, 2 fit, 0 with deviations, 0 do not fit' '' check --framing $framing
        check 0 'all: 2 records, 2 fit' '' check --framing $framing --quiet
        [ "$(wc -l < out)" -eq 1 ] || fail "check --quiet: $(cat out)"
        check 0 'all: 2 records, 2 the same' 'taken for' roundtrip --framing $framing
    done
done
stream "$hex${hex:0:60}"
check 1 "\"$id\"" 'envelope 2 (octet 37):' decode uuid_t --framing concatenated
stream "0025${hex}0025"
check 1 "\"$id\"" 'standard input:39: a length of 37 octets, more than there are: 2 octets not read' decode uuid_t
stream "$hex${hex}00${hex}"
check 1 "\"$id\"" 'standard input:74: no envelope begins here: 38 octets not read' decode uuid_t
stream "$hex"
echo $hex > ./uuid
check 0 "\"$id\"" '' decode uuid_t in ./uuid -
[ "$(grep -c $id out)" -eq 3 ] || fail "several files: $(cat out)"
check 0 "\"$id\"" '' decode uuid uuid
check 0 "\"$id\"" './uuid: taken for uuid_t' decode ./uuid
check 0 "\"$id\"" '' decode --record uuid uuid
check 0 'node OCTET' '' dump uuid uuid
check 3 "\"$id\"" 'none: No such file' decode uuid_t ./none in
check 0 'uuid: fits uuid_t, as' '' check uuid_t uuid in
grep -q '^all: 2 records, 2 fit' out || fail "check of two files: $(cat out)"
echo 0402acdc30040c003000 > in
check 1 '' 'fits several records, of which one has to be named: attr_s_t, yvprincipal_chain_s_t' decode
printf '%s\n' "$hex" "uuid_t ${hex:8}" 'value_s_t 308108020200050c000400' zz "${hex:0:60}" > in
check 1 'all: 5 records, 2 fit, 1 with deviations, 2 do not fit' 'standard input: line 4: not a hexadecimal digit' check --lines
grep -q '^standard input: line 3:5: type: the octets 0005, read as 5' out || fail "check --lines: $(cat out)"
grep -q '^standard input: line 5:' err || fail "check --lines: $(cat err)"
head -3 in > some
check 4 'all: 3 records, 2 fit, 1 with deviations, 0 do not fit' '' check --lines --quiet some

# What differs, by member; as octets, JSON and both. The exit codes are those of diff.
"$program" encode acl_ext "$root/examples/acl.json" -o a.ber
sed 's/"payroll-clerks"/"clerks"/; s/\[1, 2, 4\]/[1, 3]/; s/"str": "B.*"/"str": {"hex": "ff"}/' "$root/examples/acl.json" > b.json
for sides in 'a.ber b.json' "$root/examples/acl.json b.json" 'acl_ext a.ber b.json' 'acl_ext b.json a.ber' ; do
    set -- $sides
    [ $1 != acl_ext ] && [ $1 != a.ber ] && set -- acl_ext "$@"
    check 1 'perms[1]: 2' "$([ $1 = a.ber ] && echo 'a.ber: taken for acl_ext_s_t')" diff "$@"
    for line in 'entries[0].permset.perms[1]: 3' 'entries[0].permset.perms[2]: 4' 'entries[0].id.name: "clerks"' \
        'ext.attrs[0].values[0].str: an object'; do grep -q "^[<>] ${line//[/\\[}$" out || fail "diff $*: lacks $line: $(cat out)"; done
    [ "$(wc -l < out)" -eq 7 ] || fail "diff $*: $(cat out)"
done
check 0 '' '' diff acl_ext a.ber "$root/examples/acl.json"
for number in 1 2; do
    printf '{"perms":[%s%d]}' "$(for i in $(seq 1001); do echo $number,; done)" $number > $number.json
done
check 1 '2 differences more' '' diff acl_permset_s_t 1.json 2.json
[ "$(wc -l < out)" -eq 2001 ] || fail "diff shows $(wc -l < out) lines"
check 2 '' 'JSON does not tell its record' diff b.json b.json
check 2 '' 'a.ber: No such' diff uuid none/a.ber b.json
check 2 '' 'b.json:1:1: uuid_t: found' diff uuid b.json b.json
check 2 '' 'diff compares two files' diff uuid b.json
echo "$whole" > c.hex
echo '{"str_a": "user", "str_b": "Sesame"}' > in
check 1 '> str_b: "***"' '' diff $password c.hex -
grep -qi sesame out && fail "diff shows a secret: $(cat out)"
check 1 '< str_b: "sesame"' '' diff $password c.hex - --show-secrets
echo 308108020200050c000400 > in
echo 0402acdc30070201050c000400 > c.hex
check 0 '' 'the values are the same, the octets are not' diff value_s_t in c.hex

# Chosen members, and records that have certain values.
# chosen OUT ARGUMENT...: what decode acl_ext prints of the list on one line.
chosen() {
    local out=$1
    shift
    check 0 "$out" '' decode acl_ext a.ber --compact "$@"
    [ "$(cat out)" = "$out" ] || fail "decode $*: $(cat out)"
}
chosen '{"name":"payroll-documents"}' --select name
chosen '{"entries":[{"id":{"name":"payroll-clerks"}},{"id":{"name":"auditors"}}]}' --select entries.id.name
chosen '{"entries":[{"permset":{"perms":[1,4]}},{"int_a":1}]}' --select 'entries[0].permset.perms[0],entries[1].int_a' \
    --select 'entries[0].permset.perms[2]'
chosen '{"entries":[{"id":{"uuid":{"time_mid":23159}}}]}' --select 'entries[0].id.uuid.time_mid'
chosen '{"name":"payroll-documents","entries":[]}' --select 'entries[9],name'
chosen '{"name":"payroll-documents"}' --select name --where entries.id.name=auditors --where entries.permset.perms=4
for condition in 'entries[0].id.name=auditors' name=payroll name= entries.permset.perms=3 'entries[2].int_a=1'; do
    chosen '' --select name --where "$condition"
done
for condition in entries.int_a=1 'entries[1].id.uuid=B81D40A6-12c9-4f6e-8e3d-7a90c4e5f612' 'ext.attrs.values.str=Büro Zürich' \
    ext.attrs.values.data= 'entries[1].id.uuid.time_low=3088924838'; do
    chosen "$("$program" decode acl_ext a.ber --compact)" --where "$condition"
done
usage '--where: "name" is not PATH=VALUE' decode acl_ext --where name
usage '--where: "ext" is an object: a condition is on one of its members' decode acl_ext --where ext=
usage '--where: "entries[0].int_a": found 1.0, which is written with a fraction, expected a whole number from -2147483648 to 2147483647' \
    decode acl_ext --where 'entries[0].int_a=1.0'
usage '--where: "entries.id.uuid": found "1", expected a UUID: 8-4-4-4-12 hexadecimal digits' decode acl_ext --where entries.id.uuid=1
usage '--select: sec_id_t has no member "nme"; did you mean "name"?' decode acl_ext --select name,entries.id.nme
usage '--select: "name" is no list: it takes no index' decode acl_ext --select 'name[0]'
usage '--select: "name" is no record: it has no members' decode acl_ext --select name.x
usage '--select: "entries[x]" is not NAME or NAME[INDEX]' decode acl_ext --select 'entries[x].id'
usage '--select needs a RECORD' decode --select name
usage '--where: "str_b" is a secret: a condition on it would tell its value (--show-secrets permits it)' \
    decode $password --where str_b=sesame
echo "$whole" > c.hex
check 0 '{"str_b":"***"}' '' decode $password c.hex --compact --select str_b
check 0 '{"str_a":"user"}' '' decode $password c.hex --compact --select str_a --where str_b=sesame --show-secrets
# Forms that the library does not write; what is not looked at is not judged, what does not fit is refused as ever.
echo 30 80 02 03 000005 2c80 0401 61 0000 04 00 0000 > in
check 0 '{"str":"a"}' '' decode value_s_t --compact --select str --where type=5
echo 30 80 02 03 000005 2c80 0401 61 0000 04 00 0000 05 > in
check 1 '{"str":"a"}' '18: 1 octet behind the record' decode value_s_t --compact --select str --from hex
check 0 '' '' decode value_s_t --compact --where type=4 --from hex
echo 30 0b 02 01 05 0c 04 61006262 04 00 > in
check 1 '{"str":"a"}' '8: str: a zero octet in a text' decode value_s_t --compact --select str --where str=a
echo 30 07 02 01 05 0c 00 05 00 > in
check 0 '{"type":5}' '' decode value_s_t --compact --select type --where str=
check 1 '' 'data: found a NULL (05), expected an OCTET STRING (04) (zr_err_no_match' decode value_s_t --select data
echo 30 05 30 00 02 01 05 > in
check 1 '' 'found 3 octets more: an INTEGER (02), expected the end of the SEQUENCE' decode acl_permset --select perms
echo 30 81 87 02 01 05 0c 80 "$(printf '61%.0s' $(seq 128))" 04 00 > in
check 1 '' 'str: found a UTF8String (0c) with contents of a wrong form' decode value_s_t --select str
echo 30 04 30 02 05 00 > in
check 1 '' 'attrs[0]: found a NULL (05), expected a SEQUENCE (30)' decode attrlist --select attrs.name
# An identifier that wraps around to a text's: its octets are missing at the end, where others stand.
echo 30 31 3080 3080 1f808080808c5f18 "$(printf '61%.0s' $(seq 24))" 3000 0000 0000 02050000000007 > in
check 1 '"values":[]' '44: 7 octets behind the record: not decoded' decode attrlist --compact --select attrs
printf '%s\n' 0402acdc30070201050c000400 0402acdc30070201060c000400 0402acdc30070201050c020400 zz > in
check 1 '{"type":6}' '' decode value_s_t --lines --select type --where type=6
[ "$(wc -l < out)" -eq 2 ] && grep -qF '"message":"line 4: not a hex' out || fail "decode --where of lines: $(cat out)"
check 1 '"reason":"data_ends_early","line":3,"offset":13,"path":"data"' '' decode value_s_t --lines --where str=x

# The records against those of another version.
"$program" records --json > now.json
# against CODE VERDICT SED: the records as they were before are those of today with a change.
against() {
    sed -E "$3" now.json > before.json
    [ -z "$3" ] || ! cmp -s now.json before.json || fail "nothing changed: $3"
    check "$1" "$2" '' schema --against before.json
}
against 0 'compatible both ways' ''
against 0 'value_s_t: compatible both ways: member 2 was "text", is "str": only JSON' '/value_s_t", "mod/,/]/s/"str"/"text"/'
against 4 'acl_entry_s_t: new reads old: member 2 "int_a": type was "int16_t", is "int32_t"' '/"acl_entry_s_t", "mod/,/]/s/"int32_t"/"int16_t"/'
against 1 'acl_entry_s_t: breaking: member 2 "int_a": type was "uint32_t", is "int32_t"' '/"acl_entry_s_t", "mod/,/]/s/"int32_t"/"uint32_t"/'
against 1 'attrlist_s_t: breaking: member 1 "attrs": kind was "nested", is "list_of_records"' '/"attrlist_s_t", "mod/,/]/s/list_of_records/nested/'
against 1 'sec_id_t: breaking: member 1 was "name", is "uuid": another order' '/"sec_id_t", "mod/,/]/{s/"uuid"/"x"/; s/"name", "k/"uuid", "k/; s/"x"/"name"/}'
against 1 'breaking: member 3 is gone: "more"' '/"sec_id_t", "mod/,/]/s/\]\}/,{"name": "more", "kind": "text"}]}/'
against 1 '"other_t": breaking: the record is gone' 's/"name": "uuid_t"/"name": "other_t"/'
check 0 'compatible both ways' '' schema --against before.json sec_id
check 3 '' 'not what "zrasn records --json" writes' schema --against a.ber
check 3 '' 'not what "zrasn records --json" writes' schema --against b.json
usage '--json and --against exclude each other' schema --json --against b.json

# Envelopes in any file, as they are and as text; what only begins as one is counted.
stream "0402acdc${hex}00$(printf "log: $hex, " > in; xxd in)0402acdc30800404${value}0402acdc3100"
{ base64 -w20 raw; echo; echo "$hex" | tr a-f A-F; printf '\4\2\254\334\060\204'; } >> in
check 0 'octets' 'standard input: 2 headers of an envelope with no whole envelope behind' find
diff - out << 'END' || fail 'find'
standard input:4: 37 octets: uuid_t
standard input:47: 37 octets as hex: uuid_t
standard input:131: 15 octets: value_s_t
standard input:152: 37 octets as base64: uuid_t
standard input:208: 37 octets as hex: uuid_t
END
check 0 '"offset": 131, "length": 15, "form": "raw", "records": ["value_s_t"]' '2 headers' find --json --extract found in
python3 -m json.tool out > /dev/null 2>&1 || [ $? -eq 127 ] || fail "find --json: $(cat out)"
for at in 4 47 152 208; do cmp -s raw found/$at.ber || fail "find --extract: $at"; done
[ "$(ls found | wc -l)" -eq 5 ] || fail "find --extract: $(ls found)"
stream 0402acdc30020500
check 0 'no record' '' find
: > in
check 1 '' '' find
# Cost: octets that begin envelopes without end, one inside the other.
printf '0402acdc3080%.0s' {1..50000} > in
check 1 '' '50000 headers' find

# The library's own form of whatever is accepted; samples of every record, as JSON that the schema's records take.
stream 308108020200050c000400
check 0 0402acdc30070201050c000400 '' canon value_s_t --hex
stream "0402acdc308108020200050c000400$value"
check 0 "$value" 'taken for value_s_t' canon --hex
[ "$(cat out)" = "$(printf '0402acdc30070201050c000400\n%s' $value)" ] || fail "canon of a stream: $(cat out)"
check 0 '' '' canon value_s_t in -o out.raw
check 0 'all: 2 records, 2 fit, 0 with' '' check out.raw
stream "${hex}00"
check 1 "$hex" 'standard input:37: 1 octet behind the record' canon uuid --hex --framing one
check 1 '' 'zr_err_no_match' canon value_s_t
usage '--hex and --base64 exclude each other' canon --hex --base64
all=
for record in $("$program" records | cut -d' ' -f1); do
    members=$("$program" records $record | awk 'NR > 1 && !/no member/ { print $1 }' | paste -sd,)
    for seed in 0 7; do
        for filled in '' --filled; do
            "$program" sample $record --seed $seed $filled | "$program" encode $record > in &&
                "$program" sample $record --seed $seed $filled --octets | cmp - in &&
                "$program" canon $record in | cmp - in || fail "sample $record $seed $filled"
            [ $record = uuid_t ] || "$program" decode $record in $all --select "$members" --show-secrets |
                cmp - <("$program" decode $record in $all --show-secrets) || fail "all members of $record"
            all=$([ -n "$all" ] || echo --compact)
        done
    done
done
usage 'RECORD is missing' sample
usage '--seed is a number of up to 18 digits, not "x"' sample uuid --seed x
check 0 '"$schema"' '' schema --json uuid
grep -qF '"title"' out || grep -qF 'uuid_t' out || fail "schema --json: $(cat out)"

# So is a text that a zero octet ends.
for form in '0c 0a 61646d696e002d626f62' '2c 0c 04 06 61646d696e00 0402 2d62' '2c 80 04 06 61646d696e00 0402 2d62 0000'; do
    set -- $form
    printf '30 %02x 020105 %s 0400' $((($(echo "$form" | tr -d ' ' | wc -c) - 1) / 2 + 5)) "$form" > in
    for lines in '' --lines; do
        check 1 '"admin"' 'str: a zero octet in a text' decode value_s_t $lines
    done
done
echo 30820011 020105 0c 0a 61646d696e002d626f62 0400 > in
check 1 '"admin"' 'str: a zero octet in a text' decode value_s_t
echo 300a 020105 0c 03 616263 0400 > in
check 0 '"abc"' '' decode value_s_t --compact
echo 300b 020100 0c 00 0404 00000000 > in
check 0 '"00000000"' '' decode value_s_t --compact

# Input that can be no record, or no JSON, and input that is too large, is not read to its end.
for command in 'decode uuid_t' check 'encode uuid_t'; do
    for endless in 'cat /dev/zero' 'yes'; do
        timeout 20 bash -c "$endless | '$program' $command" > out 2> err
        [ $? -eq 1 ] || fail "$endless | zrasn $command: $(head -c 300 err)"
    done
done
{ echo '{'; cat /dev/zero; } | timeout 20 "$program" encode uuid_t > out 2> err
[ $? -eq 1 ] || fail "JSON and endless zeros: $(head -c 300 err)"
truncate -s 5G in
check 1 '' 'in: more than 4294967295 octets, which no encoding of a record has' decode uuid_t in
check 1 '' 'in: more than 4294967295 octets, which no encoding of a record has' check in
rm in

# A file that is shortened while it is mapped.
mkfifo pipe
yes $'\1\1\377' | tr -d '\n' | head -c 3000000 > in
{
    "$program" dump in > pipe 2> err
    echo $? > code
} &
exec 3< pipe
read -r _ <&3
: > in
cat <&3 > out
exec 3<&-
wait
[ "$emulated" ] || [ "$(cat code)" -eq 3 ] || fail "a shortened file: exit code $(cat code)"
[ "$emulated" ] || grep -qx 'in: shortened, or not readable, while it was read' err || fail "a shortened file: $(cat err)"

echo 'BAKs3DA=g' > in
check 1 '' 'in:8: a base64 digit behind the padding' decode uuid_t in
echo "${hex}0" > in
check 1 '' 'an odd number of hexadecimal digits' decode uuid_t in
echo "$hex zz" > in
check 1 '' 'in:75: not a hexadecimal digit' decode uuid_t in --from hex

# Large input from a pipe and from a file, each with the form recognised: 3 MB of octets.
data=$(head -c 3000000 /dev/zero | tr '\0' 'Z' | od -An -v -tx1 | tr -d ' \n')
printf '{"type":1,"str":"","data":"%s"}\n' "$data" > large.json
"$program" encode value_s_t large.json -o large.raw && "$program" encode value_s_t large.json --hex -o large.hex &&
    "$program" encode value_s_t large.json --base64 -o large.base64 || fail 'large record'
for form in raw hex base64; do
    "$program" decode value_s_t --compact large.$form | cmp -s - large.json || fail "large input, $form"
    cat large.$form | "$program" decode value_s_t --compact | cmp -s - large.json || fail "large input from a pipe, $form"
done

# Lines.
printf '"%s"\n{"time_low":1}\n\n"%s"\n' $id $id > in
check 1 "$hex" '' encode uuid_t --lines
[ "$(wc -l < out)" -eq 3 ] || fail "encode --lines wrote $(wc -l < out) lines"
grep -qF '{"error":{"status":null,"name":null,"reason":"bad_json","line":2,"offset":0,"path":"","message":"line 2, column 1: found an object, expected' \
    out || fail "encode --lines: $(sed -n 2p out)"
printf '%s\n%s\nzz\n%s\n' $hex ${hex:0:60} $hex > in
check 1 "\"$id\"" '' decode uuid_t --lines
[ "$(grep -cxF "\"$id\"" out)" -eq 2 ] && [ "$(wc -l < out)" -eq 4 ] || fail "decode --lines: $(cat out)"
sed -n 2p out | grep -q '^{"error":{"status":275063192,"name":"zr_err_data_ends_early","reason":"truncated","line":2,"offset":[0-9]*,"path":"' ||
    fail "decode --lines: $(sed -n 2p out)"
sed -n 3p out | grep -qF '"offset":0,"path":"","message":"line 3: not a hexadecimal digit"}}' ||
    fail "decode --lines: $(sed -n 3p out)"
# Comparing: octets and JSON, with the record's name and without.
printf 'uuid_t %s\n%s\n\n asn_uuid_t\t"%s"\r\nuuid_t {"node": "00"}\nvalue_s_t 308108020200050c000400\nzz\n' $hex $hex $id > in
check 1 'uuid_t: 5 records, 3 the same, 0 deviating, 2 refused' '' roundtrip --lines --record uuid_t
grep -qx '    refused bad_json                       1' out && grep -qx '    refused bad_text                       1' out &&
    grep -qx '    deviation longer_integer               1  type' out || fail "roundtrip: $(cat out)"
check 1 'no record: 2 records' '' roundtrip --lines
check 1 '"kind": "deviation", "key": "longer_length", "member": "", "count": 1}' '' roundtrip --lines --json
python3 -m json.tool out > /dev/null 2>&1 || [ $? -eq 127 ] || fail "roundtrip --json: $(cat out)"
usage '--lines reads text: it excludes --from raw' roundtrip --lines --from raw
printf 'uuid_t %s\n' $hex $hex > in
check 0 'all: 2 records, 2 the same, 0 deviating, 0 refused' '' roundtrip --lines
echo $hex > in
check 0 'all: 1 record, 1 the same' '' roundtrip --record uuid_t
echo ${hex}00 > in
check 1 'octets_behind' '' roundtrip --record uuid_t
printf '\n\n \t\r\n%s\r\nzz' $hex > in
check 1 '"line":5,' '' decode uuid_t --lines
[ "$(wc -l < out)" -eq 2 ] || fail "blank lines: $(cat out)"
printf '"%s"\n' $id > in
check 0 "$hex" '' encode uuid_t --lines
# Whoever writes a line and waits gets its answer.
for verb in encode decode; do
    coproc "$program" $verb uuid_t --lines 2> err
    for i in 1 2 3; do
        echo "\"$id\"" > in
        [ $verb = encode ] || echo $hex > in
        { cat in; printf ' '; } >&"${COPROC[1]}"
        answer=
        read -r -t 60 answer <&"${COPROC[0]}"
        [ "$answer" = "$([ $verb = encode ] && echo $hex || echo "\"$id\"")" ] || fail "$verb --lines answers \"$answer\""
    done
    eval "exec ${COPROC[1]}>&-"
    wait "$COPROC_PID" || fail "$verb --lines: $(cat err)"
done
for i in $(seq 2000); do echo "\"$id\""; done | "$program" encode uuid_t --lines | "$program" decode uuid_t --lines |
    sort | uniq -c | grep -qF "2000 \"$id\"" || fail 'lines there and back'

# A reader that goes away.
for i in $(seq 20000); do echo $hex; done > many
"$program" decode uuid_t --lines many 2> err | head -1 > out
[ -s err ] && fail "a closed pipe is reported: $(cat err)"

# A million levels, on a small stack.
awk 'BEGIN { n = 1000000
    for (i = 0; i < n; i++) printf "{\"name\":\"n\",\"values\":[],\"children\":["
    printf "{\"name\":\"\",\"values\":[\"x\"],\"children\":[]}"
    for (i = 0; i < n; i++) printf "]}"
    print "" }' > deep.json
(
    ulimit -s 512
    "$program" encode namevalue_s_t deep.json -o deep.raw && "$program" decode namevalue_s_t --compact deep.raw |
        cmp - deep.json && "$program" decode namevalue_s_t deep.raw | "$program" encode namevalue_s_t | cmp - deep.raw
) || fail 'a million levels'
printf '%s' "$(head -c 30000000 deep.json)" > in
check 1 '' 'not JSON' encode namevalue_s_t
[ "$(wc -c < err)" -lt 2000 ] || fail 'a long path is written whole'

check 0 ', size = 6' '' wireshark
# Completion and manual.
for shell in bash zsh fish; do
    check 0 'version-byte' '' completion $shell
    if command -v $shell > /dev/null; then $shell -n out || fail "$shell does not read its completion"; fi
done
"$program" completion bash > completion
(
    . ./completion
    complete_words() {
        COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
        _zrasn
        echo "${COMPREPLY[*]}"
    }
    [ "$(complete_words zrasn de)" = decode ] && [ "$(complete_words zrasn decode --fro)" = --from ] &&
        [ "$(complete_words zrasn decode --from he)" = hex ] && [ "$(complete_words zrasn decode acl_ex)" = acl_ext_s_t ] &&
        [ "$(complete_words zrasn decode --from = he)" = hex ] && [ "$(complete_words zrasn completion z)" = zsh ] &&
        [ "$(complete_words zrasn find --extract fou)" = found ] && [ "$(complete_words zrasn check --framing =)" = \
            'auto one concatenated 2 4 2le 4le' ] && [ "$(complete_words zrasn decode acl_ext --where e)" = 'entries ext' ] &&
        [ "$(complete_words zrasn decode in --record sec_id --select name,u)" = name,uuid ] &&
        [ "$(complete_words zrasn encode acl_ex)" = acl_ext_s_t ]
) || fail 'completion of bash'
if command -v fish > /dev/null; then
    "$program" completion fish > completion
    # The home directory is fish's to write to.
    words=$(HOME=$PWD fish -c "source completion; complete -C 'zrasn decode acl_ext --select '" 2> err | cut -f1 | sort | paste -sd' ')
    [ "$words" = 'entries ext name' ] || fail "completion of fish: $words $(cat err)"
fi
check 0 '.TH ZRASN 1' '' manual
grep -qxF '[options] [RECORD] [FILE ...]' out || fail 'the manual lacks what an operand is called'
sed -n '/^.SS zrasn records/,/^.SS zrasn schema/p' out | grep -q 'seed' && fail 'the manual gives a verb the option of another'
statuses=$(sed -nE 's/^ +(zr_err_[a-z_0-9]+) = ([0-9]+),.*/\2 \1/p' "$root/src/asn1/status.h")
[ "$(echo "$statuses" | wc -l)" -ge 20 ] || fail 'no status constants found'
while read -r status; do
    grep -qx "$status" out || fail "the manual lacks $status"
done <<< "$statuses"
for option in $("$program" decode --help | grep -oE -- '--[a-z0-9-]+' | sort -u); do
    [ $option = --help ] || sed 's/\\//g' out | grep -qF -- "$option" || fail "the manual lacks $option"
done
if command -v man > /dev/null && [ -n "$(man --warnings -l out 2>&1 > /dev/null)" ]; then fail 'man warns'; fi
rm -f large.* deep.* many
exit $result
