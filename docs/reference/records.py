"""One page for each record, and an index of them, from what the program says of the records and from their headers."""
import json
import re
import subprocess
from pathlib import Path

WIRE = {"integer": "INTEGER", "version": "INTEGER", "text": "UTF8String", "stored_text": "OCTET STRING", "octets": "OCTET STRING",
        "fixed_octets": "OCTET STRING", "optional_octets": "OCTET STRING OPTIONAL", "nested": "SEQUENCE",
        "optional_nested": "SEQUENCE OPTIONAL"}
ALSO = {"cert_request_in": "Code 259 of the type-code interface; it has no entry points of its own.",
        "yvobj_update_list_s_t": "Code 260 of the type-code interface; it has no entry points of its own.",
        "yvobj_update_s_t": "It goes out and in inside its list; it has no entry points of its own."}


class Records:
    def __init__(self, program):
        self.program = program
        self.all = json.loads(self.run("records", "--json"))
        self.words = dict(self.words_of(record["name"]) for record in self.all)
        schema = self.run("schema")
        self.types = {found[1]: found[0] for found in re.finditer(r"^(\S+) ::= (?:[^{\n]*$|.*?^\})", schema, re.M | re.S)}
        self.headers = {}

    def run(self, *arguments, text=None):
        return subprocess.run([self.program, *arguments], input=text, capture_output=True, text=True, check=True).stdout

    def words_of(self, name):
        """What `records` prints: the words for each member."""
        head, *members = self.run("records", name).rstrip().split("\n")
        return name, {each.split()[0]: re.split(r"\s{2,}", each.strip(), maxsplit=2)[1] for each in members}

    def structure(self, record):
        """The header of the record's structure, the first sentence of the comment above it, and its text."""
        for header in (f"base_idls/{record['module']}.h", f"src/asn1/{record['module']}.h"):
            text = Path(header).read_text()
            if found := re.search(r"((?:^//[^\n]*\n)*)^(struct %s \{\n.*?^\};)" % record["name"], text, re.M | re.S):
                about = re.sub(r"^// ?", "", found[1], flags=re.M).replace("\n", " ").strip()
                about = re.match(r".*?\.(?= [A-Z]|$)", about)[0]
                return header.removeprefix("src/"), about, found[2]
        raise SystemExit(f"no structure {record['name']} in its module's header")

    def asn1(self, record):
        name = re.sub(r"_+", "-", record["name"]).strip("-")
        name = name[0].upper() + name[1:]
        own = self.types[name]
        lists = [each for each in self.types if re.search(r"-list$|-slots-\d+$|-slot$", each)]
        used = [each for each in lists if re.search(rf"\b{each}\b(?!-)", own)]
        inside = [each for each in lists if any(re.search(rf"\b{each}\b(?!-)", self.types[one]) for one in used)]
        used = [each for each in lists if each in used + inside]
        return "\n\n".join([self.types[each] for each in used] + [own])

    def link(self, name):
        return f"[{name}](@ref record_{name})"

    def page(self, record):
        name = record["name"]
        header, about, structure = self.structure(record)
        rows = []
        for field in record["fields"]:
            words = self.words[name][field["name"]]
            if "record" in field:
                words = words.replace(field["record"], self.link(field["record"]))
            member = "none" if field["kind"] == "version" else f"`{field['name']}`"
            counted = f"`{field['count']}` ({field['count_type']})" if "count" in field else ""
            rows.append(f"| {member} | {words} | {counted} | {WIRE.get(field['kind'], 'SEQUENCE OF')} |")
        around = [self.link(other["name"]) for other in self.all if any(f.get("record") == name for f in other["fields"])]
        secrets = [f"`{field['name']}`" for field in record["fields"] if field.get("secret")]
        example = self.run("records", "--example", name)
        digits = self.run("encode", name, "--hex", text=example).strip()
        octets = "\n".join(" ".join(re.findall("..", digits[i:i + 48])) for i in range(0, len(digits), 48))
        return f"""# {name} {{#record_{name}}}

{about}

Module `{record['module']}`, header `{header}`, binding class `{record['binding']}`. {ALSO.get(name, 'It has the five entry points.')}

## Members {{#record_{name}_members}}

| Member | What it is | Counted by | In the encoding |
|---|---|---|---|
{chr(10).join(rows)}

{'Secret: ' + ', '.join(secrets) + '. They are overwritten before they are released.' if secrets else 'None of them is secret.'}

Contained in: {', '.join(around) or 'no other record'}.

## The C structure {{#record_{name}_structure}}

```cpp
{structure}
```

## ASN.1 {{#record_{name}_asn1}}

```
{self.asn1(record)}
```

## An example {{#record_{name}_example}}

`zrasn records --example {name}` prints it:

```
{example.rstrip()}
```

`zrasn encode {name} --hex` makes these octets of it, which begin with the envelope's four:

```
{octets}
```

`zrasn dump --record {name}` shows where each member lies:

```
{self.run('dump', '--record', name, text=digits).rstrip()}
```
"""

    def index(self):
        lines = ["# The records {#records}", "", f"All {len(self.all)} records, by schema module. Each page has the members, "
                 "the C structure, the ASN.1 and an example."]
        module = None
        for record in self.all:
            if record["module"] != module:
                module = record["module"]
                lines += ["", f"## {module} {{#records_{module}}}", ""]
            about = self.structure(record)[1].removeprefix(record["name"])
            lines.append(f"- \\subpage record_{record['name']} \"{record['name']}\"{about}")
        return "\n".join(lines) + "\n"

    def write(self, directory):
        (directory / "records.md").write_text(self.index())
        for record in self.all:
            (directory / f"record_{record['name']}.md").write_text(self.page(record))
