#!/usr/bin/env python3
"""filter.py FILE: a header as Doxygen wants it, on standard output and line by line.

Comments stay `//` in the sources. One that stands above a declaration documents it, and of what follows up to the next
blank line or comment what has the same name or is named in it, or all if it says so ("both", "these", "each", ...). One
behind a member documents that member, and the one at the top of the file the file.
"""
import re
import sys

COMMENT = re.compile(r"(\s*)//(?!/)\s?(.*)")
BEHIND = re.compile(r"(.*\S\s+)// (.*)")
NOT_DOCUMENTED = re.compile(r"\s*($|#(?!define)|}|public:|protected:|private:|using namespace|namespace|extern \"C\"|friend )")
ENTRY_POINTS = (
    ("[[nodiscard]] int zrAsnEncodeObj(zr_asn_buffer_t& out, {0}& in);", "Gives the encoding of a {0} in a new block."),
    ("[[nodiscard]] int zrAsnEncodeObjLCS(zr_asn_buffer_t& out, {0}& in);", "The same from texts in the local code set."),
    ("[[nodiscard]] int zrAsnDecodeObj(zr_asn_buffer_t& in, {0}& out);", "Fills a {0}, with blocks of its own."),
    ("[[nodiscard]] int zrAsnDecodeObjLCS(zr_asn_buffer_t& in, {0}& out);", "The same with texts in the local code set."),
    ("void zrAsnFreeObj({0}& s);", "Releases what a decode allocated inside a {0}."))
MEMBERS = {
    "integer": "A number (INTEGER).", "text": "A text (UTF8String).", "stored_text": "A text (OCTET STRING).",
    "octets": "Octets (OCTET STRING).", "optional_octets": "Octets (OCTET STRING), absent when there are none.",
    "fixed_octets": "Octets (OCTET STRING).", "nested": "A record (SEQUENCE).",
    "optional_nested": "A record (SEQUENCE), or null where there is none.", "list": "The elements of a list (SEQUENCE OF).",
    "slots": "Slots (SEQUENCE OF): records, or null where one is empty."}


def text_of(comment):
    """A comment's words as Doxygen's: what it would take for a command or a tag is none here."""
    return re.sub(r"`[^`#]*`|[\\@<>#%]|(?<=>)::", lambda found: found[0] if found[0][0] == "`" else "\\" + found[0], comment)


# Data that derived classes see is no part of the reference.
PROTECTED = re.compile(r" +(?!return|using)[\w:<>*& ,]+ \*?\w+_(\[\d+\])?( = [^;()]*|\{[^;]*\})?;")

# What needs no comment in the sources.
EVIDENT = (
    (re.compile(r"(explicit )?(\w+)\(security_t \w+\)"), "Makes one in the mode."),
    (re.compile(r"(\w+)\(\1&& \w+\)|\S+ operator=\(\S+&& \w+\)"), "Takes over what the other has, which is empty then."),
    (re.compile(r"\S+& operator=\(.*= delete;"), "Cannot be assigned."),
    (re.compile(r"(\w+)\(.*= delete;"), "Cannot be copied."),
    (re.compile(r"(virtual )?~"), "Releases what it owns."),
    (re.compile(r".* (begin|end)\(\) const "), "For loops over all."),
    (re.compile(r"using (iterator_category|value_type|difference_type|reference|pointer) ="), "As std::iterator_traits has it."),
    (re.compile(r"(iterator& |iterator )operator\+\+"), "Goes to the next one."))
# What a declaration declares: the word before its parameters, without set_ and get_.
NAME = re.compile(r"(?!.*(?: override| = default| = delete|// |~\w+\())[^;(]*?(?:operator\W+|\b(?:set_|get_)?(\w+))[* ]{0,2}\(\*?(\w*)")


# A comment that is about all that follows.
FOR_ALL = re.compile(r"\b([Tt]hese|[Bb]oth|[Ee]ach|[Tt]he same|[Aa]ll|getters|[Ii]n place|Appended|forms|entry points)\b")


def name_of(declaration):
    found = NAME.match(declaration)
    return found and (found[2] if declaration.lstrip(" ").count("(*") else found[1] or "operator")


class Header:
    def __init__(self, lines):
        self.lines, self.out = lines, []
        self.about, self.indent, self.done = "", "", True
        self.members, self.structure = {}, None

    def describe(self, text):
        """What the members of the records are that `text` describes."""
        for record in re.finditer(r"^ZR_RECORD(?:_OF_CLASS)?\(\w+, (\w+),(.*?)\);", text, re.M | re.S):
            about = self.members.setdefault(record[1], {})
            for kind, first, second in re.findall(r"zr::(\w+)\(ZR_M\((\w+)\)(?:, ZR_M\((\w+)\))?\)", record[2]):
                about[second or first] = MEMBERS[kind]
                if second:
                    about[first] = f"How many there are in `{second}`."

    def comment_block(self, first):
        """The lines of comment from here on, and what stands behind them."""
        end = first
        while end < len(self.lines) and COMMENT.fullmatch(self.lines[end]):
            end += 1
        return self.lines[first:end], self.lines[end] if end < len(self.lines) else ""

    def run(self):
        at = 0
        while at < len(self.lines):
            line = self.lines[at]
            if COMMENT.fullmatch(line):
                block, behind = self.comment_block(at)
                self.block(block, behind, at == 0)
                at += len(block)
                continue
            if line.startswith("ZR_RECORD"):
                at = self.record(at)
                continue
            self.declaration(line, self.lines[at + 1] if at + 1 < len(self.lines) else "")
            at += 1
        return "\n".join(self.out) + "\n"

    def block(self, block, behind, is_top):
        """Comment lines of their own."""
        column = len(block[0]) - len(block[0].lstrip())
        if self.out and "///<" in self.out[-1] and self.out[-1].index("///<") == column:
            self.out += [line.replace("//", "///<", 1) for line in block]  # the comment behind a member goes on
            return
        self.about = ""
        if is_top:
            block[0] = block[0].replace("//", "// \\file\n//", 1)
        elif NOT_DOCUMENTED.match(behind):
            self.out += block
            return
        words, in_code = [], False
        for line in "\n".join(block).split("\n"):
            indent, text = COMMENT.fullmatch(line).groups()
            code = text.startswith("    ")
            if code and not in_code:
                self.out[-1] += " \\code{.cpp}"
            elif in_code and not code:
                self.out[-1] += f"\n{indent}/// \\endcode"
            in_code = code
            words.append(text if code or text == "\\file" else text_of(text))
            self.out.append(f"{indent}/// {words[-1]}")
        if in_code:
            self.out.append(f"{indent}/// \\endcode")
        if not is_top:
            self.about, self.indent, self.done = " ".join(words), indent, False

    def declaration(self, line, behind):
        if not line.strip():
            self.about = ""
        if PROTECTED.match(line):
            self.out.append("")
            return
        if found := re.fullmatch(r"struct (\w+) \{", line):
            self.structure = found[1] if found[1] in self.members else None
            if self.structure:
                self.out[-1] += f" See \\ref record_{found[1]} \"its page\"."
        elif line.startswith("}"):
            self.structure = None
        elif self.structure and "//" not in line and (found := re.search(r"(\w+)(\[\w+\])?;", line)):
            line = f"{line}  // {self.members[self.structure][found[1]]}"
        indent = line[:len(line) - len(line.lstrip())]
        starts = self.about and indent == self.indent and not NOT_DOCUMENTED.match(line) and not line.strip().startswith(")")
        was_done, is_template = self.done, line.lstrip().startswith("template <")
        is_behind_template = bool(self.out) and self.out[-1].lstrip().startswith("template <")
        name = name_of(behind if is_template else line)
        if starts and not self.done:
            self.done, self.names = True, {name}
        elif starts and name and "&& other" not in line and not is_behind_template and (
                FOR_ALL.search(self.about) or name in {"operator", *self.names} or
                name and re.search(rf"\b(set_|get_)?{name}\b", self.about)):
            line = f"{indent}/** {self.about} */ {line.lstrip()}"
        if "/**" not in line and not (starts and not was_done):
            for declared, words in EVIDENT:
                if declared.match(line.strip()):
                    line = f"{indent}/** {words} */ {line.lstrip()}"
        found = BEHIND.fullmatch(line)
        if found and not found[1].lstrip().startswith(("//", "/*")) and not found[1].endswith("\\"):
            line = f"{found[1]}///< {text_of(found[2])}"
        self.out.append(line)

    def record(self, at):
        """The entry points that a description of a record declares, in its first line; it has no others."""
        end = at
        while ");" not in self.lines[end]:
            end += 1
        words = re.split(r"[(,)\s]+", " ".join(self.lines[at:end + 1]))
        points = ENTRY_POINTS if words[0] == "ZR_RECORD" else ()
        self.out.append(" ".join(f"/** {about} */ {declared}".format(words[2]) for declared, about in points))
        self.out += [""] * (end - at)
        return end + 1


text = open(sys.argv[1], encoding="utf-8").read()
header = Header(text.splitlines())
header.describe(text)
if sys.argv[1].endswith("asn1/asn_yvobjs.h"):
    header.describe(open("base_idls/asn_yvobjs.h", encoding="utf-8").read())
sys.stdout.write(header.run())
