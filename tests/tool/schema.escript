#!/usr/bin/env escript
%% schema.escript MODULE FILE: compiles the ASN.1 module in the file MODULE.asn1 with asn1ct. The lines of FILE are "Type
%% digits": a type and the BER octets of a value; for each, the octets that the compiled module gives for that value are
%% printed as digits.

main([Name, File]) ->
    ok = asn1ct:compile(Name ++ ".asn1", [ber]),
    true = code:add_patha("."),
    Module = list_to_atom(Name),
    {ok, Lines} = file:read_file(File),
    lists:foreach(
        fun(Line) ->
            [TypeName, Digits] = string:split(Line, " "),
            Type = list_to_atom(TypeName),
            {ok, Value} = Module:decode(Type, octets(Digits)),
            {ok, Octets} = Module:encode(Type, Value),
            io:format("~s~n", [[io_lib:format("~2.16.0b", [O]) || <<O>> <= Octets]])
        end,
        string:lexemes(binary_to_list(Lines), "\n")).

octets(Digits) -> <<<<(list_to_integer([A, B], 16))>> || [A, B] <- pairs(Digits)>>.

pairs([A, B | Rest]) -> [[A, B] | pairs(Rest)];
pairs([]) -> [].
