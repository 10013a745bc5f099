"""Finds what can be changed in a source, one operator, constant, condition or call at a time.

Positions come from clang's syntax tree, so that a "<" of a template is not mistaken for a comparison.
"""

import collections
import dataclasses
import pathlib

from clang import cindex
from clang.cindex import Cursor, CursorKind as Kind, TokenKind, TypeKind

OPERATORS = {
    "<": ("<=", ">="), "<=": ("<", ">"), ">": (">=", "<="), ">=": (">", "<"), "==": ("!=",), "!=": ("==",),
    "&&": ("||",), "||": ("&&",), "+": ("-",), "-": ("+",), "*": ("/",), "/": ("*",), "%": ("/",),
    "&": ("|",), "|": ("&",), "+=": ("-=",), "-=": ("+=",), "++": ("--",), "--": ("++",),
}
FUNCTIONS = {"min": "max", "max": "min", "begin": "end", "end": "begin", "front": "back",
             "starts_with": "ends_with", "ends_with": "starts_with"}
MACROS = {"SQLITE_TRANSIENT": "SQLITE_STATIC"}  # a sum would not be a pointer

INTEGERS = {TypeKind.INT, TypeKind.UINT, TypeKind.LONG, TypeKind.ULONG, TypeKind.LONGLONG, TypeKind.ULONGLONG}
DEFAULTS = {TypeKind.BOOL: ("true", "false"), TypeKind.DOUBLE: ("0.0",), TypeKind.POINTER: ("nullptr",),
            TypeKind.RECORD: ("{}",)} | {kind: ("0",) for kind in INTEGERS}

FUNCTION_KINDS = {Kind.FUNCTION_DECL, Kind.CXX_METHOD, Kind.CONSTRUCTOR, Kind.DESTRUCTOR, Kind.FUNCTION_TEMPLATE,
                  Kind.CONVERSION_FUNCTION}
BLOCKS = {Kind.COMPOUND_STMT, Kind.CASE_STMT, Kind.DEFAULT_STMT}
JUMPS = {Kind.BREAK_STMT, Kind.CONTINUE_STMT}
LEFT_OUT = {Kind.STATIC_ASSERT, Kind.USING_DECLARATION, Kind.TYPE_ALIAS_DECL}

# File, function, the lines before and after the mutation, and the number, from 1, among equal mutations of the file.
# The key stays the same when lines move.
Key = tuple[str, str, str, str, int]
Change = tuple[int, int, str]  # the offsets of the replaced text, and its replacement


@dataclasses.dataclass(frozen=True)
class Mutant:
    key: Key
    line: int
    change: Change

    def applied_to(self, source: str) -> str:
        begin, end, replacement = self.change
        return source[:begin] + replacement + source[end:]


class Finder:
    """Walks over the syntax tree of one file."""

    def __init__(self, path: pathlib.Path, arguments: list[str]) -> None:
        self.source = path.read_text(encoding="ascii")
        self.functions: list[tuple[int, int, str]] = []
        self.left_out: list[range] = []
        self.changes: set[Change] = set()

        unit = cindex.Index.create().parse(str(path), ["-x", "c++", *arguments])
        errors = [str(d) for d in unit.diagnostics if d.severity >= cindex.Diagnostic.Error]
        if errors:
            raise ValueError("\n".join([f"{path} cannot be read:", *errors]))
        for cursor in unit.cursor.get_children():
            if cursor.location.file is not None and cursor.location.file.name == str(path):
                self.visit(cursor, None)
        self.change_remaining_comparisons(unit)

    def function_at(self, offset: int) -> str:
        return max(((begin, name) for begin, end, name in self.functions if begin <= offset < end), default=(0, ""))[1]

    def text(self, cursor: Cursor) -> str:
        return self.source[cursor.extent.start.offset:cursor.extent.end.offset]

    def change(self, begin: int, end: int, *replacements: str) -> None:
        self.changes |= {(begin, end, text) for text in replacements if text != self.source[begin:end]}

    def replace(self, cursor: Cursor, *replacements: str) -> None:
        self.change(cursor.extent.start.offset, cursor.extent.end.offset, *replacements)

    def visit(self, cursor: Cursor, function: Cursor | None) -> None:
        kind, extent = cursor.kind, cursor.extent
        if kind in LEFT_OUT or kind.is_attribute() or cursor.is_default_method():
            self.left_out.append(range(extent.start.offset, extent.end.offset))
            return
        if kind in FUNCTION_KINDS:
            function = cursor
            self.functions.append((extent.start.offset, extent.end.offset, qualified_name(cursor)))
        elif kind == Kind.LAMBDA_EXPR:
            function = None
        children = list(cursor.get_children())
        self.change_here(cursor, children, function)
        for child in children:
            if kind in BLOCKS and (child.kind.is_expression() or child.kind in JUMPS):
                self.replace(child, "")
            self.visit(child, function)

    def change_here(self, cursor: Cursor, children: list[Cursor], function: Cursor | None) -> None:
        match cursor.kind:
            case Kind.BINARY_OPERATOR | Kind.COMPOUND_ASSIGNMENT_OPERATOR:
                self.change_binary(cursor, children)
            case Kind.CALL_EXPR if cursor.spelling.startswith("operator"):
                self.change_binary(cursor, [c for c in cursor.get_arguments() if c is not None])
            case Kind.UNARY_OPERATOR:
                self.change_unary(cursor)
            case Kind.IF_STMT | Kind.CONDITIONAL_OPERATOR:
                if children[0].kind.is_expression():
                    self.replace(children[0], "true", "false")
            case Kind.WHILE_STMT:  # a loop that never ends tells nothing more than one that never runs
                self.replace(children[0], "false")
            case Kind.FOR_STMT:
                self.replace(children[1], "false")
            case Kind.RETURN_STMT if children and function is not None:
                if self.text(children[0]) not in ("true", "false", "0", "{}", "nullptr"):
                    self.replace(children[0], *DEFAULTS.get(function.result_type.get_canonical().kind, ()))
            case Kind.DECL_REF_EXPR | Kind.MEMBER_REF_EXPR:
                self.change_name(cursor)
            case _:
                self.change_literal(cursor.kind, cursor)

    def change_binary(self, cursor: Cursor, operands: list[Cursor]) -> None:
        if len(operands) != 2:
            return
        left, right = operands
        for token in cursor.get_tokens():
            at, operator = token.extent.start.offset, token.spelling
            if left.extent.end.offset <= at < right.extent.start.offset and operator in OPERATORS:
                self.change(at, at + len(operator), *OPERATORS[operator])
                for operand in operands if operator in ("&&", "||") else ():
                    self.replace(operand, "true" if operator == "&&" else "false")

    def change_unary(self, cursor: Cursor) -> None:
        start, end, text = cursor.extent.start.offset, cursor.extent.end.offset, self.text(cursor)
        if text[:2] in ("++", "--"):
            self.change(start, start + 2, *OPERATORS[text[:2]])
        elif text[-2:] in ("++", "--"):
            self.change(end - 2, end, *OPERATORS[text[-2:]])
        elif text.startswith(("!", "-")):  # not an operator that the compiler made of "!="
            self.change(start, start + 1, "")

    def change_name(self, cursor: Cursor) -> None:
        name, end, named = cursor.spelling, cursor.extent.end.offset, cursor.referenced
        begin = end - len(name)
        if self.source[begin:end] != name:
            return  # is after a macro or before template arguments
        if name in FUNCTIONS:
            self.change(begin, end, FUNCTIONS[name])
        if named is not None and named.kind == Kind.ENUM_CONSTANT_DECL:
            names = [c.spelling for c in named.semantic_parent.get_children()]
            self.change(begin, end, names[(names.index(name) + 1) % len(names)])
        elif named is not None and named.kind == Kind.VAR_DECL and is_integer_constant(named):
            self.replace(cursor, f"({self.text(cursor)} + 1)")

    def change_literal(self, kind: Kind, cursor: Cursor) -> None:
        text = self.text(cursor)
        if not text:
            return  # written by the compiler
        if text in MACROS:
            self.replace(cursor, MACROS[text])
        elif kind == Kind.INTEGER_LITERAL and text[0].isdigit():
            number = int(text.rstrip("uUlL"), 0)
            self.replace(cursor, *(str(n) for n in (number - 1, number + 1) if n >= 0))
        elif kind == Kind.INTEGER_LITERAL:
            self.replace(cursor, f"({text} + 1)")
        elif kind == Kind.FLOATING_LITERAL:
            self.replace(cursor, *(("1.0",) if float(text) == 0 else (f"({text} * 2)", f"({text} / 2)")))
        elif kind == Kind.STRING_LITERAL and text.endswith('"'):
            self.replace(cursor, text[:-1] + '~"')
        elif kind == Kind.CHARACTER_LITERAL:
            self.replace(cursor, "'~'")
        elif kind == Kind.CXX_BOOL_LITERAL_EXPR:
            self.replace(cursor, "false" if text == "true" else "true")

    def change_remaining_comparisons(self, unit: cindex.TranslationUnit) -> None:
        """Comparisons that the language rewrites have no operator in the tree."""
        tokens = [t for t in unit.get_tokens(extent=unit.cursor.extent) if t.kind != TokenKind.COMMENT]
        for before, token in zip(tokens, tokens[1:]):
            at = token.extent.start.offset
            if token.spelling in ("==", "!=") and before.spelling != "operator" and not any(
                    at in left_out for left_out in self.left_out):
                self.change(at, token.extent.end.offset, *OPERATORS[token.spelling])


def is_integer_constant(variable: Cursor) -> bool:
    return (variable.semantic_parent.kind not in FUNCTION_KINDS and variable.type.is_const_qualified() and
            variable.type.get_canonical().kind in INTEGERS)


def qualified_name(function: Cursor) -> str:
    names = [function.displayname.split("(")[0].split("<")[0]]
    parent = function.semantic_parent
    while parent is not None and parent.kind in (Kind.CLASS_DECL, Kind.STRUCT_DECL):
        names.insert(0, parent.spelling)
        parent = parent.semantic_parent
    return "::".join(names)


def mutants_of(path: pathlib.Path, name: str, arguments: list[str]) -> list[Mutant]:
    """The mutants of one file, in their order in the file. `name` is its path in the project."""
    finder = Finder(path, arguments)
    source, mutants = finder.source, []
    alike: collections.Counter[tuple[str, str, str]] = collections.Counter()
    for begin, end, replacement in sorted(finder.changes):
        first, last = source.rfind("\n", 0, begin) + 1, source.find("\n", end)
        change = (finder.function_at(begin), " ".join(source[first:last].split()),
                  " ".join((source[first:begin] + replacement + source[end:last]).split()))
        alike[change] += 1
        mutants.append(Mutant((name, *change, alike[change]), source.count("\n", 0, begin) + 1,
                              (begin, end, replacement)))
    return mutants
