#!/usr/bin/env escript
%% encode.escript SCHEMA DIRECTORY TERMS: compiles the ASN.1 module with asn1ct into DIRECTORY and prints, a line each,
%% the BER octets of the terms {Type, Value}. in the file TERMS.

main([Schema, Directory, Terms]) ->
    ok = asn1ct:compile(Schema, [ber, maps, {outdir, Directory}]),
    true = code:add_patha(Directory),
    Module = 'Zrasn',
    {ok, Values} = file:consult(Terms),
    lists:foreach(
        fun({Type, Value}) ->
            {ok, Octets} = Module:encode(Type, Value),
            io:format("~s~n", [[io_lib:format("~2.16.0b", [O]) || <<O>> <= Octets]])
        end,
        Values).
