#!/bin/bash
# schema.sh PROGRAM DIRECTORY ROOT: what `zrasn schema` prints compiles with asn1c and with Erlang's compiler, and the
# octets that the code of both writes are the library's own and decode. The values are those of the golden vectors.
# DIRECTORY is made anew. 77: none of the compilers is installed.
set -u
program=$(realpath "$1")
root=$(realpath "$3")
rm -rf "$2" && mkdir -p "$2" && cd "$2" || exit 1
result=0
ran=77
fail() {
    echo "FAILED: $1" >&2
    result=1
}

"$program" schema > Zrasn.asn1 || exit 1
# The example that --help and the manual page show.
example=$("$program" schema --help | sed -n 's/^ *\(zrasn schema .*\)/\1/p')
[ -n "$example" ] && "$program" manual | sed 's/\\//g' | grep -qxF "$example" || fail "the manual lacks the example $example"
zrasn() { "$program" "$@"; }
eval "$example"
example=${example##*> }
example=${example%.asn1}
"$program" schema acl_entry_s_t yvaction_groups > Two.asn1
# Type and octets of each value of a record that the program knows.
awk '/^(#|$)/ { next } { n++ } n % 3 == 1 { record = $1 } n % 3 == 0 { print record, $1 }' \
    "$root"/tests/vectors/*.txt > values
"$program" records | sed -n 's/^\([a-zA-Z]\S*\) .*/\1/p' > records
while read -r record octets; do
    grep -qx "$record" records || continue
    type=$(echo "${record^}" | tr _ -)
    echo "$type $octets" >> typed
    echo "$record" >> names
done < values
[ "$(sort -u names | wc -l)" -eq "$(wc -l < records)" ] || fail 'not every record has a value'
cut -d' ' -f2 typed > expected

# The octets of the file are the library's, and decode.
compare() {
    diff expected "$1" > difference || fail "$1: $(head -c 600 difference)"
    paste -d' ' names "$1" | sort -u -k1,1 | while read -r record octets; do
        "$program" decode "$record" <<< "$octets" > /dev/null || echo "$record"
    done > refused
    [ -s refused ] && fail "$1: not decoded: $(cat refused)"
}

if command -v escript > /dev/null && erl -noshell -eval 'ok = application:load(asn1), halt(0).' > erl.log 2>&1; then
    ran=0
    escript "$root/tests/tool/schema.escript" Zrasn typed > erlang 2> erlang.log || fail "Erlang: $(cat erlang.log erlang)"
    compare erlang
    erlc $example.asn1 > erlc.log 2>&1 || fail "Erlang, one module: $(cat erlc.log)"
else
    echo "Erlang's ASN.1 compiler is not installed: not tried" >&2
fi

if command -v asn1c > /dev/null && command -v cc > /dev/null; then
    ran=0
    for schema in $example Two Zrasn; do
        mkdir -p asn1c-$schema
        (cd asn1c-$schema && asn1c -pdu=all ../$schema.asn1 > ../asn1c.log 2>&1) || fail "asn1c $schema: $(tail asn1c.log)"
    done
    cd asn1c-Zrasn || exit 1
    # Its converter, with all types: reads the octets of each value and writes them anew.
    cat > Makefile << 'END'
OBJECTS := $(patsubst %.c,%.o,$(filter-out converter-sample.c,$(wildcard *.c))) converter-sample.o
convert: $(OBJECTS)
	$(CC) -o $@ $(OBJECTS)
%.o: %.c
	$(CC) -O0 -w -DASN_PDU_COLLECTION -DPDU=Uuid_t -I. -c -o $@ $<
END
    if make -s -j2 > ../make.log 2>&1; then
        while read -r type octets; do
            printf "$(echo "$octets" | sed 's/../\\x&/g')" > value.ber
            ./convert -p "$type" -iber -oder value.ber 2> /dev/null | od -An -v -tx1 | tr -d ' \n'
            echo
        done < ../typed > ../asn1c-octets
        cd ..
        compare asn1c-octets
    else
        cd ..
        fail "asn1c's code does not compile: $(tail -5 make.log)"
    fi
    rm -rf asn1c-*/
else
    echo 'asn1c is not installed: not tried' >&2
fi
[ $result -ne 0 ] && exit $result
exit $ran
