"""Finds what can be changed in a source, one operator, constant, condition or call at a time.

Positions come from clang's syntax tree, so that a "<" of a template is not mistaken for a comparison.
"""

import collections
import dataclasses
import pathlib
from collections.abc import Iterator

from clang import cindex
from clang.cindex import Cursor, CursorKind, TokenKind, TypeKind

OPERATORS = {
    "<": ("<=", ">="), "<=": ("<", ">"), ">": (">=", "<="), ">=": (">", "<"), "==": ("!=",), "!=": ("==",),
    "&&": ("||",), "||": ("&&",), "+": ("-",), "-": ("+",), "*": ("/",), "/": ("*",), "%": ("/",),
    "&": ("|",), "|": ("&",), "+=": ("-=",), "-=": ("+=",), "++": ("--",), "--": ("++",),
}
FUNCTIONS = {
    "min": "max", "max": "min", "begin": "end", "end": "begin", "front": "back", "starts_with": "ends_with",
    "ends_with": "starts_with",
}
# A sum would not be a pointer.
MACROS = {"SQLITE_TRANSIENT": "SQLITE_STATIC"}

INTEGERS = {TypeKind.INT, TypeKind.UINT, TypeKind.LONG, TypeKind.ULONG, TypeKind.LONGLONG, TypeKind.ULONGLONG}
DEFAULTS = {TypeKind.BOOL: ("true", "false"), TypeKind.DOUBLE: ("0.0",), TypeKind.POINTER: ("nullptr",),
            TypeKind.RECORD: ("{}",)} | {kind: ("0",) for kind in INTEGERS}

FUNCTION_KINDS = {CursorKind.FUNCTION_DECL, CursorKind.CXX_METHOD, CursorKind.CONSTRUCTOR, CursorKind.DESTRUCTOR,
                  CursorKind.FUNCTION_TEMPLATE, CursorKind.CONVERSION_FUNCTION}
BLOCKS = {CursorKind.COMPOUND_STMT, CursorKind.CASE_STMT, CursorKind.DEFAULT_STMT}
JUMPS = {CursorKind.BREAK_STMT, CursorKind.CONTINUE_STMT}
LEFT_OUT = {CursorKind.STATIC_ASSERT, CursorKind.USING_DECLARATION, CursorKind.TYPE_ALIAS_DECL}


@dataclasses.dataclass(frozen=True)
class Mutant:
    """One change of one file. It is identified by its function and the text of its lines, which do not change when
    lines move."""
    file: str
    function: str
    before: str
    after: str
    ordinal: int  # among the mutations of the file with equal other fields, counted from 1
    line: int = dataclasses.field(compare=False)
    begin: int = dataclasses.field(compare=False)
    end: int = dataclasses.field(compare=False)
    replacement: str = dataclasses.field(compare=False)

    def applied_to(self, source: str) -> str:
        return source[:self.begin] + self.replacement + source[self.end:]


@dataclasses.dataclass(frozen=True, order=True)
class Change:
    begin: int
    end: int
    replacement: str


class Finder:
    """Walks over the syntax tree of one file."""

    def __init__(self, path: pathlib.Path, arguments: list[str]) -> None:
        self.path = path
        self.source = path.read_text(encoding="ascii")
        self.unit = cindex.Index.create().parse(str(path), ["-x", "c++", *arguments])
        errors = [str(d) for d in self.unit.diagnostics if d.severity >= cindex.Diagnostic.Error]
        if errors:
            raise ValueError("\n".join([f"{path} cannot be read:", *errors]))
        self.functions: list[tuple[int, int, str]] = []
        self.left_out: list[range] = []
        self.changes: set[Change] = set()

    def find(self) -> list[Change]:
        for cursor in self.unit.cursor.get_children():
            if self.is_here(cursor):
                self.visit(cursor, None)
        self.change_remaining_comparisons()
        return sorted(self.changes)

    def function_at(self, offset: int) -> str:
        around = [(begin, name) for begin, end, name in self.functions if begin <= offset < end]
        return max(around)[1] if around else ""

    def is_here(self, cursor: Cursor) -> bool:
        return cursor.location.file is not None and cursor.location.file.name == str(self.path)

    def text(self, cursor: Cursor) -> str:
        return self.source[cursor.extent.start.offset:cursor.extent.end.offset]

    def change(self, begin: int, end: int, *replacements: str) -> None:
        self.changes |= {Change(begin, end, text) for text in replacements if text != self.source[begin:end]}

    def replace(self, cursor: Cursor, *replacements: str) -> None:
        self.change(cursor.extent.start.offset, cursor.extent.end.offset, *replacements)

    def visit(self, cursor: Cursor, function: Cursor | None) -> None:
        kind = cursor.kind
        if kind in LEFT_OUT or kind.is_attribute() or cursor.is_default_method():
            self.left_out.append(range(cursor.extent.start.offset, cursor.extent.end.offset))
            return
        if kind in FUNCTION_KINDS:
            function = cursor
            self.functions.append((cursor.extent.start.offset, cursor.extent.end.offset, qualified_name(cursor)))
        elif kind == CursorKind.LAMBDA_EXPR:
            function = None
        self.change_here(cursor, function)
        for child in cursor.get_children():
            self.visit(child, function)

    def change_here(self, cursor: Cursor, function: Cursor | None) -> None:
        kind = cursor.kind
        children = list(cursor.get_children())
        if kind in (CursorKind.BINARY_OPERATOR, CursorKind.COMPOUND_ASSIGNMENT_OPERATOR):
            self.change_binary(cursor, children)
        elif kind == CursorKind.CALL_EXPR and cursor.spelling.startswith("operator"):
            self.change_binary(cursor, [c for c in cursor.get_arguments() if c is not None])
        elif kind == CursorKind.UNARY_OPERATOR:
            self.change_unary(cursor)
        elif kind == CursorKind.IF_STMT or kind == CursorKind.CONDITIONAL_OPERATOR:
            if children[0].kind.is_expression():
                self.replace(children[0], "true", "false")
        elif kind in (CursorKind.WHILE_STMT, CursorKind.FOR_STMT):
            self.change_loop(kind, children)
        elif kind == CursorKind.RETURN_STMT and children and function is not None:
            self.change_result(children[0], function)
        elif kind in (CursorKind.DECL_REF_EXPR, CursorKind.MEMBER_REF_EXPR):
            self.change_name(cursor)
        else:
            self.change_literal(cursor)
        if kind in BLOCKS:
            for child in children:
                self.remove_statement(child)

    def change_binary(self, cursor: Cursor, operands: list[Cursor]) -> None:
        if len(operands) != 2:
            return
        left, right = operands
        for token in cursor.get_tokens():
            at = token.extent.start.offset
            if left.extent.end.offset <= at < right.extent.start.offset and token.spelling in OPERATORS:
                self.change(at, at + len(token.spelling), *OPERATORS[token.spelling])
                if token.spelling in ("&&", "||"):
                    for operand in operands:
                        self.replace(operand, "true" if token.spelling == "&&" else "false")

    def change_unary(self, cursor: Cursor) -> None:
        start, end = cursor.extent.start.offset, cursor.extent.end.offset
        text = self.text(cursor)
        if text[:2] in ("++", "--"):
            self.change(start, start + 2, *OPERATORS[text[:2]])
        elif text[-2:] in ("++", "--"):
            self.change(end - 2, end, *OPERATORS[text[-2:]])
        elif text.startswith(("!", "-")):  # not an operator that the compiler made of "!="
            self.change(start, start + 1, "")

    def change_loop(self, kind: CursorKind, children: list[Cursor]) -> None:
        # A loop that never ends tells nothing more than a loop that never runs.
        condition = children[0] if kind == CursorKind.WHILE_STMT else children[1]
        self.replace(condition, "false")

    def change_result(self, value: Cursor, function: Cursor) -> None:
        if self.text(value) not in ("true", "false", "0", "{}", "nullptr"):
            self.replace(value, *DEFAULTS.get(function.result_type.get_canonical().kind, ()))

    def change_name(self, cursor: Cursor) -> None:
        name, end = cursor.spelling, cursor.extent.end.offset
        begin = end - len(name)
        if self.source[begin:end] != name:
            return  # is after a macro or before template arguments
        if name in FUNCTIONS:
            self.change(begin, end, FUNCTIONS[name])
        named = cursor.referenced
        if named is None:
            return
        if named.kind == CursorKind.ENUM_CONSTANT_DECL:
            names = [c.spelling for c in named.semantic_parent.get_children()]
            self.change(begin, end, names[(names.index(name) + 1) % len(names)])
        elif named.kind == CursorKind.VAR_DECL and is_integer_constant(named):
            self.replace(cursor, f"({self.text(cursor)} + 1)")

    def change_literal(self, cursor: Cursor) -> None:
        kind, text = cursor.kind, self.text(cursor)
        if not text:
            return  # written by the compiler
        if text in MACROS:
            self.replace(cursor, MACROS[text])
        elif kind == CursorKind.INTEGER_LITERAL:
            if text[0].isdigit():
                number = int(text.rstrip("uUlL"), 0)
                self.replace(cursor, *(str(n) for n in (number - 1, number + 1) if n >= 0))
            else:
                self.replace(cursor, f"({text} + 1)")
        elif kind == CursorKind.FLOATING_LITERAL:
            self.replace(cursor, *(("1.0",) if float(text) == 0 else (f"({text} * 2)", f"({text} / 2)")))
        elif kind == CursorKind.STRING_LITERAL and text.endswith('"'):
            self.replace(cursor, text[:-1] + '~"')
        elif kind == CursorKind.CHARACTER_LITERAL:
            self.replace(cursor, "'~'")
        elif kind == CursorKind.CXX_BOOL_LITERAL_EXPR:
            self.replace(cursor, "false" if text == "true" else "true")

    def remove_statement(self, statement: Cursor) -> None:
        if statement.kind.is_expression() or statement.kind in JUMPS:
            self.replace(statement, "")

    def change_remaining_comparisons(self) -> None:
        """Comparisons that the language rewrites have no operator in the tree."""
        tokens = [t for t in self.unit.get_tokens(extent=self.unit.cursor.extent) if t.kind != TokenKind.COMMENT]
        for before, token in zip(tokens, tokens[1:]):
            at = token.extent.start.offset
            if token.spelling in ("==", "!=") and before.spelling != "operator" and not any(
                    at in left_out for left_out in self.left_out):
                self.change(at, token.extent.end.offset, *OPERATORS[token.spelling])


def is_integer_constant(variable: Cursor) -> bool:
    at_function = variable.semantic_parent.kind in FUNCTION_KINDS
    return (not at_function and variable.type.is_const_qualified() and
            variable.type.get_canonical().kind in INTEGERS)


def qualified_name(function: Cursor) -> str:
    names = [function.displayname.split("(")[0].split("<")[0]]
    parent = function.semantic_parent
    while parent is not None and parent.kind in (CursorKind.CLASS_DECL, CursorKind.STRUCT_DECL):
        names.insert(0, parent.spelling)
        parent = parent.semantic_parent
    return "::".join(names)


def mutants_of(path: pathlib.Path, name: str, arguments: list[str]) -> Iterator[Mutant]:
    """The mutants of one file, which the project calls `name`, in the order of the file."""
    finder = Finder(path, arguments)
    alike: collections.Counter[tuple[str, str, str]] = collections.Counter()
    for change in finder.find():
        source = finder.source
        first = source.rfind("\n", 0, change.begin) + 1
        last = source.find("\n", change.end)
        before = " ".join(source[first:last].split())
        after = " ".join((source[first:change.begin] + change.replacement + source[change.end:last]).split())
        function = finder.function_at(change.begin)
        alike[function, before, after] += 1
        yield Mutant(name, function, before, after, alike[function, before, after],
                     source.count("\n", 0, change.begin) + 1, change.begin, change.end, change.replacement)
