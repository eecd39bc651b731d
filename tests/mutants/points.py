"""The places of C++ sources where one small change can be put in, and sources with all of them, chosen at run time.

Found in clang's syntax tree. A point's name is file:function:kind:number, the number counting the points of that kind in
that function, so that a name survives edits elsewhere.
"""
import re
from collections import defaultdict
from pathlib import Path

from clang.cindex import CursorKind as K, Index, TypeKind

OTHER = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==", "&&": "||", "||": "&&", "+": "-", "-": "+",
         "*": "/", "/": "*", "%": "*", "&": "|", "|": "&", "^": "|", "<<": ">>", ">>": "<<"}
KINDS = {**dict.fromkeys(["<", "<=", ">", ">=", "==", "!="], "relation"), **dict.fromkeys(["&&", "||"], "logic"),
         **dict.fromkeys(["+", "-", "*", "/", "%"], "arithmetic")}
FUNCTIONS = {K.FUNCTION_DECL, K.CXX_METHOD, K.CONSTRUCTOR, K.DESTRUCTOR, K.FUNCTION_TEMPLATE, K.CONVERSION_FUNCTION}
INTEGERS = {TypeKind.CHAR_U, TypeKind.UCHAR, TypeKind.USHORT, TypeKind.UINT, TypeKind.ULONG, TypeKind.ULONGLONG,
            TypeKind.CHAR_S, TypeKind.SCHAR, TypeKind.SHORT, TypeKind.INT, TypeKind.LONG, TypeKind.LONGLONG}
POINTERS = {TypeKind.POINTER, TypeKind.CONSTANTARRAY}
BODIES = {K.IF_STMT, K.FOR_STMT, K.WHILE_STMT, K.CXX_FOR_RANGE_STMT}
# What only the compiler evaluates, or does not evaluate at all.
FOR_THE_COMPILER = {K.STATIC_ASSERT, K.ENUM_CONSTANT_DECL, K.CXX_UNARY_EXPR, K.TYPE_ALIAS_DECL, K.TYPEDEF_DECL,
                    K.TEMPLATE_NON_TYPE_PARAMETER, K.TEMPLATE_TYPE_PARAMETER, K.TYPE_REF, K.TEMPLATE_REF}


class Point:
    """`change` makes the source text of a point from its number and from its text with the points inside it put in."""

    def __init__(self, file, start, end, function, kind, change):
        self.file, self.start, self.end, self.function, self.kind, self.change = file, start, end, function, kind, change


def choice(other):
    other = " ".join(re.sub(r"//[^\n]*", "", other).split())  # on one line
    return lambda number, inside: f"(::zr_mutant::on<{number}>() ? ({other}) : ({inside}))"


def negated(number, inside):
    return f"(static_cast<bool>({inside}) != ::zr_mutant::on<{number}>())"


def one_more(number, inside):
    return f"(({inside}) + ::zr_mutant::on<{number}>())"


def left_out(number, inside):
    return f"{{ if (!::zr_mutant::on<{number}>()) {inside} }}"


class Finder:
    def __init__(self, file, text):
        self.file, self.text, self.found = file, text, {}

    def add(self, start, end, function, kind, change):
        self.found.setdefault((start, end, kind), Point(self.file, start, end, function, kind, change))

    def before(self, offset):
        return self.text[:offset].rstrip()[-5:]

    def between(self, left, right):
        gap = self.text[left.extent.end.offset:right.extent.start.offset]
        return re.sub(r"//[^\n]*", "", gap).strip()

    def condition(self, cursor, children):
        """The child that is tested; None where a declaration is."""
        if cursor.kind == K.CONDITIONAL_OPERATOR:
            return children[0]
        for child in children if cursor.kind in BODIES - {K.CXX_FOR_RANGE_STMT} or cursor.kind == K.DO_STMT else []:
            if not child.kind.is_expression():
                continue
            mark, behind = self.before(child.extent.start.offset)[-1:], self.text[child.extent.end.offset:].lstrip()[:1]
            if mark == ";" and behind == ";" if cursor.kind == K.FOR_STMT else mark in "(;" and behind == ")":
                return child
        return None

    def visit(self, cursor, parent, function, result):
        kind = cursor.kind
        start, end = cursor.extent.start.offset, cursor.extent.end.offset
        text = self.text[start:end]
        if kind in FOR_THE_COMPILER or text.startswith(("sizeof", "alignof", "noexcept", "decltype")):
            return
        if kind in (K.VAR_DECL, K.FIELD_DECL) and re.search(r"\bconstexpr\b", self.text[start:cursor.location.offset]):
            return
        children = list(cursor.get_children())
        if kind in FUNCTIONS:
            scope = cursor.semantic_parent
            is_member = scope is not None and scope.kind in (K.CLASS_DECL, K.STRUCT_DECL, K.CLASS_TEMPLATE)
            function = (scope.spelling + "::" if is_member else "") + cursor.spelling.replace(" ", "_")
            result = cursor.result_type
        elif kind == K.LAMBDA_EXPR:
            result = None
        if kind.is_expression():
            self.expression(cursor, parent, children, function, text)
        if (kind.is_expression() and parent.kind in BODIES | {K.COMPOUND_STMT, K.CASE_STMT, K.DEFAULT_STMT}
                and not text.startswith("static_cast<void>")):
            semicolon = self.text.find(";", end)
            mark = self.before(start)
            is_body = mark.endswith((")", "else")) if parent.kind in BODIES else mark.endswith(("{", "}", ";", ":", ")"))
            if is_body and self.text[end:semicolon].strip() == "":
                self.add(start, semicolon + 1, function, "deletion", left_out)
        if kind == K.RETURN_STMT and children:
            self.returned(children[0], function, result)
        tested = self.condition(cursor, children)
        if tested is not None and not text.startswith("if constexpr"):
            self.add(tested.extent.start.offset, tested.extent.end.offset, function, "condition", negated)
        for index, child in enumerate(children):
            at = child.extent.start.offset
            if text.startswith("if constexpr") and child.kind.is_expression() and index == 0:
                continue
            if kind == K.CASE_STMT and index == 0:
                continue
            if child.kind.is_expression() and kind != K.BINARY_OPERATOR and self.before(at).endswith(("<", "[")) and \
                    kind not in (K.ARRAY_SUBSCRIPT_EXPR, K.LAMBDA_EXPR, K.CALL_EXPR):
                continue  # a template's argument, the bound of an array
            if kind.is_declaration() and kind not in FUNCTIONS and child.kind.is_expression() and \
                    at < cursor.location.offset:
                continue
            self.visit(child, cursor, function, result)

    def expression(self, cursor, parent, children, function, text):
        start, end = cursor.extent.start.offset, cursor.extent.end.offset
        if cursor.kind in (K.BINARY_OPERATOR, K.COMPOUND_ASSIGNMENT_OPERATOR) and len(children) == 2:
            left, right = children
            operator = self.between(left, right)
            plain = operator[:-1] if cursor.kind == K.COMPOUND_ASSIGNMENT_OPERATOR else operator
            if plain not in OTHER or (cursor.kind == K.BINARY_OPERATOR and operator not in OTHER):
                return
            if all(side.type.get_canonical().kind in POINTERS for side in children):
                if plain == "-":
                    return self.add(start, end, function, "arithmetic", one_more)
            other = text[:left.extent.end.offset - start] + f" {OTHER[plain]}{'=' * (plain != operator)} " + \
                text[right.extent.start.offset - start:]
            self.add(start, end, function, KINDS.get(plain, "bits"), choice(other))
        elif (cursor.kind == K.INTEGER_LITERAL and re.fullmatch(r"[0-9][0-9A-Fa-fxXuUlL']*", text)
              and parent.kind != K.INIT_LIST_EXPR and not self.before(start).endswith("{")):  # none is narrowed
            self.add(start, end, function, "constant", one_more)
        elif cursor.kind == K.CXX_BOOL_LITERAL_EXPR and text in ("true", "false"):
            self.add(start, end, function, "constant", negated)

    def returned(self, value, function, result):
        start, end = value.extent.start.offset, value.extent.end.offset
        text = self.text[start:end]
        kind = (result or value.type).get_canonical().kind
        if re.fullmatch(r"true|false|nullptr|[0-9]\w*", text) or start == end:
            return
        change = negated if kind == TypeKind.BOOL else one_more if kind in INTEGERS else \
            choice("nullptr") if kind == TypeKind.POINTER else None
        if change:
            self.add(start, end, function, "return", change)


def find_points(root, folders, commands):
    """The points of all sources in the folders of `root`; commands: the compiler's arguments for files, as (file, [..])."""
    files = sorted(str(path.relative_to(root)) for folder in folders for path in (root / folder).rglob("*")
                   if path.suffix in (".h", ".cpp"))
    waiting, finders, index = set(files), {}, Index.create()
    for file, arguments in commands:
        if not any(name in waiting for name in files if name.endswith(".h")) and file not in waiting:
            continue
        unit = index.parse(str(root / file), args=arguments)
        seen = {str(Path(i.include.name).resolve().relative_to(root)) for i in unit.get_includes()
                if Path(i.include.name).resolve().is_relative_to(root)} | {file}
        new = seen & waiting
        waiting -= new
        for cursor in unit.cursor.get_children() if new else []:
            place = cursor.location.file and Path(cursor.location.file.name).resolve()
            name = str(place.relative_to(root)) if place and place.is_relative_to(root) else ""
            if name in new:
                if name not in finders:
                    finders[name] = Finder(name, (root / name).read_bytes().decode("latin-1"))
                finders[name].visit(cursor, unit.cursor, "-", None)
    points = []
    for name in sorted(finders):
        finder, counted = finders[name], defaultdict(int)
        for point in sorted(finder.found.values(), key=lambda p: (p.start, -p.end, p.kind)):
            counted[point.function, point.kind] += 1
            point.number = len(points)
            point.name = f"{name}:{point.function}:{point.kind}:{counted[point.function, point.kind]}"
            point.line = finder.text.count("\n", 0, point.start) + 1
            point.last_line = finder.text.count("\n", 0, point.end) + 1
            point.text = finder.text.splitlines()[point.line - 1].strip()
            points.append(point)
    return points, sorted(waiting)


def with_points(text, points):
    """The text of a file with its points put in. Lines keep their numbers."""
    def render(start, end, inside):
        made, at = "", start
        while inside:
            outer, rest = inside[0], inside[1:]
            count = next((i for i, p in enumerate(rest) if p.start >= outer.end), len(rest))
            within = render(outer.start, outer.end, rest[:count])
            made += text[at:outer.start] + outer.change(outer.number, within)
            at, inside = outer.end, rest[count:]
        return made + text[at:end]

    return render(0, len(text), sorted(points, key=lambda p: (p.start, -p.end, p.kind)))
