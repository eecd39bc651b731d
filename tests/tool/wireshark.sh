#!/bin/bash
# wireshark.sh PROGRAM DIRECTORY: what tshark shows of captures that are made here, with the dissector of the program.
# DIRECTORY is made anew. Exit code 77 without tshark.
set -u
program=$(realpath "$1")
command -v tshark text2pcap > /dev/null || { echo "tshark is missing" >&2; exit 77; }
rm -rf "$2" && mkdir -p "$2" && cd "$2" || exit 1
export HOME=$PWD
result=0
fail() {
    echo "FAILED: $1" >&2
    result=1
}

"$program" wireshark > zrasn.lua || fail 'zrasn wireshark'
names=$("$program" records --json | grep -oE '"name": "[A-Za-z_0-9]+", "module"' | cut -d'"' -f4)
[ "$(wc -w <<< "$names")" -eq 65 ] || fail "$(wc -w <<< "$names") records"

# octets HEX, capture < segments, a line each: in.pcap.
octets() { tr -d ' \n' <<< "$1" | sed 's/../\\x&/g' | xargs -0 printf '%b'; }
capture() {
    while read -r segment; do
        octets "$segment" | od -Ax -tx1 -v
    done | text2pcap -q -T 40000,40001 - in.pcap 2> err || fail "text2pcap: $(cat err)"
}
# shows ARGUMENT...: tshark's answer for in.pcap in `out`; no script may fail.
shows() {
    tshark -X lua_script:zrasn.lua -r in.pcap "$@" > out 2> err || fail "tshark $*: $(cat err)"
    grep -E 'Lua|bug' out err >&2 && fail "tshark $*"
}

# Every record: a packet with its example, which is shown as it (others may fit too), with all that it holds.
for name in $names; do
    "$program" records --example $name | "$program" encode $name --hex
done > envelopes
capture < envelopes
shows -T fields -e zrasn.record -e zrasn.fitting -e zrasn.misfit -e zrasn.deviation -e zrasn.hidden
paste <(printf '%s\n' $names) out > records
while IFS=$'\t' read -r name record fitting rest; do
    case " $record ${fitting:-} " in *" $name "*) ;; *) fail "$name is shown as $record" ;; esac
    [ -z "$(tr -d '\t' <<< "$rest")" ] || fail "$name: $rest"
done < records

# Values, redaction, segments that the stream is cut into, and what is not the library's form. Each row: options, what is
# seen, what is not.
row() {
    local what=$1 seen=$2 unseen=$3
    shift 3
    shows -O zrasn "$@"
    grep -qF -- "$seen" out || fail "$what: no $seen in $(cat out)"
    [ -z "$unseen" ] || ! grep -qF -- "$unseen" out || fail "$what: $unseen"
}
acl=$("$program" records --example acl_ext_s_t | "$program" encode acl_ext_s_t --hex)
secret=$(echo '{"str_a": "anna", "str_b": "sesame"}' | "$program" encode azn_util_password_in_s_t --hex)
capture <<< "$acl$secret"
row 'a number' 'int_a: -129' '***'  -Y 'zrasn.acl_entry_s_t.int_a == -129' -o zrasn.record:acl_ext_s_t
row 'a secret' 'str_b: ***' sesame
row 'a secret that is to be seen' 'str_b: sesame' '***' -o zrasn.show_secrets:TRUE
printf '%s\n' "${acl:0:12}" "${acl:12:80}" "${acl:92}${secret:0:12}" "${secret:12}" | capture
row 'two envelopes in four segments' 'str_b: ***' 'no record fits'
uuid='02 04 6b a7 b8 10 02 03 00 9d ad 02 02 11 d1 02 02 00 80 02 02 00 b4 04 06 00 c0 4f d4 30 c8'
node='24 80 04 02 00 c0 04 04 4f d4 30 c8 00 00'
while IFS='|' read -r seen hex; do
    capture <<< "04 02 ac dc $hex"
    row "$hex" "$seen" ''
done << END
time_hi_and_version: 4561|30 1f $uuid
indefinite length|30 80 $uuid 00 00
a longer length than needed|30 81 1f $uuid
a longer INTEGER than needed|30 20 02 05 00 ${uuid:6}
a string in segments|30 25 ${uuid:0:69} $node
node: 00c04fd430c8|30 25 ${uuid:0:69} $node
no record fits|30 21 $uuid 05 00
no record fits|30 03 05 01 05
END
capture <<< "04 02 ac dc 30 1f $uuid"
row 'another record' 'found INTEGER (02), expected UTF8String (0c)' '' -o zrasn.record:acl_ext_s_t
# Deep, and never whole: nothing is refused but the tree is cut.
capture <<< "04 02 ac dc $(for ((i = 0; i < 400; ++i)); do printf '30 80 0c 01 61 30 00 30 80'; done) $(printf '00%.0s' {1..1600})"
row 'a deep record' 'More than is shown' ''
for other in '04 02 ac dc 02 01 05' '04 02 ac dd 30 03 02 01 05' 'ff ff ff ff ff ff'; do
    capture <<< "$other"
    shows -T fields -e zrasn.version
    [ -z "$(tr -d '\n' < out)" ] || fail "$other is taken for an envelope"
done
exit $result
