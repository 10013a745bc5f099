"""Finds the possible changes of a source. Clang's syntax tree gives their places, so the "<" of a template is not taken
for a comparison."""

import collections
import pathlib
from typing import NamedTuple

from clang import cindex
from clang.cindex import Cursor, CursorKind as Kind, TokenKind, TypeKind

OPERATORS = {
    "<": ("<=", ">="), "<=": ("<", ">"), ">": (">=", "<="), ">=": (">", "<"), "==": ("!=",), "!=": ("==",),
    "&&": ("||",), "||": ("&&",), "+": ("-",), "-": ("+",), "*": ("/",), "/": ("*",), "%": ("/",),
    "&": ("|",), "|": ("&",), "+=": ("-=",), "-=": ("+=",), "++": ("--",), "--": ("++",),
}
NAMES = {"min": "max", "max": "min", "begin": "end", "end": "begin", "front": "back",
         "starts_with": "ends_with", "ends_with": "starts_with"}

INTEGERS = {TypeKind.INT, TypeKind.UINT, TypeKind.LONG, TypeKind.ULONG, TypeKind.LONGLONG, TypeKind.ULONGLONG}
DEFAULTS = {TypeKind.BOOL: ("true", "false"), TypeKind.DOUBLE: ("0.0",), TypeKind.POINTER: ("nullptr",),
            TypeKind.RECORD: ("{}",)} | dict.fromkeys(INTEGERS, ("0",))

FUNCTIONS = {Kind.FUNCTION_DECL, Kind.CXX_METHOD, Kind.CONSTRUCTOR, Kind.DESTRUCTOR, Kind.FUNCTION_TEMPLATE,
             Kind.CONVERSION_FUNCTION}
BLOCKS = {Kind.COMPOUND_STMT, Kind.CASE_STMT, Kind.DEFAULT_STMT}
LEFT_OUT = {Kind.STATIC_ASSERT, Kind.USING_DECLARATION, Kind.TYPE_ALIAS_DECL}

# File, function, the lines before and after the mutation, and the number, from 1, among equal mutations of the file.
Key = tuple[str, str, str, str, int]


class Mutant(NamedTuple):
    key: Key
    line: int
    begin: int  # the offsets of the replaced text
    end: int
    replacement: str

    def __str__(self) -> str:
        file, function, before, after, _ = self.key
        return f"{file}:{self.line} {function}\n  - {before}\n  + {after}"


class Finder:
    """Walks over the syntax tree of one file of the project and finds its mutants, in their order in the file."""

    def __init__(self, project: pathlib.Path, path: pathlib.Path) -> None:
        self.source = path.read_text("ascii")
        self.functions = [(0, len(self.source), "")]  # begin, end, name
        self.left_out: list[range] = []
        self.changes: set[tuple[int, int, str]] = set()
        arguments = ["-xc++", "-std=c++20", f"-I{project}/include", f"-I{project}/src"]
        unit = cindex.Index.create().parse(str(path), arguments)
        if errors := [str(note) for note in unit.diagnostics if note.severity >= cindex.Diagnostic.Error]:
            raise ValueError("\n".join([f"{path} cannot be read:", *errors]))
        for cursor in unit.cursor.get_children():
            if cursor.location.file is not None and cursor.location.file.name == str(path):
                self.visit(cursor, None)
        # Comparisons that the language rewrites have no operator in the tree.
        tokens = [token for token in unit.get_tokens(extent=unit.cursor.extent) if token.kind != TokenKind.COMMENT]
        for before, token in zip(tokens, tokens[1:]):
            at = token.extent.start.offset
            if token.spelling in ("==", "!=") and before.spelling != "operator" and not any(
                    at in left_out for left_out in self.left_out):
                self.change(at, at + 2, *OPERATORS[token.spelling])
        self.mutants: list[Mutant] = []
        alike: collections.Counter[tuple[str, ...]] = collections.Counter()
        for begin, end, text in sorted(self.changes):
            first, last = self.source.rfind("\n", 0, begin) + 1, self.source.find("\n", end)
            lines = (self.source[first:last], self.source[first:begin] + text + self.source[end:last])
            function = max((at, name) for at, behind, name in self.functions if at <= begin < behind)[1]
            key = (str(path.relative_to(project)), function, *(" ".join(line.split()) for line in lines))
            alike[key] += 1
            self.mutants.append(Mutant((*key, alike[key]), self.source.count("\n", 0, begin) + 1, begin, end, text))

    def text(self, cursor: Cursor) -> str:
        return self.source[cursor.extent.start.offset:cursor.extent.end.offset]

    def change(self, begin: int, end: int, *replacements: str) -> None:
        self.changes |= {(begin, end, text) for text in replacements if text != self.source[begin:end]}

    def replace(self, cursor: Cursor, *replacements: str) -> None:
        self.change(cursor.extent.start.offset, cursor.extent.end.offset, *replacements)

    def visit(self, cursor: Cursor, function: Cursor | None) -> None:
        kind, begin, end = cursor.kind, cursor.extent.start.offset, cursor.extent.end.offset
        if kind in LEFT_OUT or kind.is_attribute() or cursor.is_default_method():
            self.left_out.append(range(begin, end))
            return
        if kind in FUNCTIONS:
            self.functions.append((begin, end, qualified_name(cursor)))
        function = cursor if kind in FUNCTIONS else None if kind == Kind.LAMBDA_EXPR else function
        children = list(cursor.get_children())
        self.change_here(cursor, children, function)
        for child in children:
            if kind in BLOCKS and (child.kind.is_expression() or child.kind in (Kind.BREAK_STMT, Kind.CONTINUE_STMT)):
                self.replace(child, "")
            self.visit(child, function)

    def change_here(self, cursor: Cursor, children: list[Cursor], function: Cursor | None) -> None:
        begin, end, text = cursor.extent.start.offset, cursor.extent.end.offset, self.text(cursor)
        match cursor.kind:
            case Kind.BINARY_OPERATOR | Kind.COMPOUND_ASSIGNMENT_OPERATOR:
                self.change_binary(cursor, children)
            case Kind.CALL_EXPR if cursor.spelling.startswith("operator"):
                self.change_binary(cursor, [operand for operand in cursor.get_arguments() if operand is not None])
            case Kind.UNARY_OPERATOR if text[:2] in ("++", "--"):
                self.change(begin, begin + 2, *OPERATORS[text[:2]])
            case Kind.UNARY_OPERATOR if text[-2:] in ("++", "--"):
                self.change(end - 2, end, *OPERATORS[text[-2:]])
            case Kind.UNARY_OPERATOR if text.startswith(("!", "-")):  # not a "!" that the compiler made of "!="
                self.change(begin, begin + 1, "")
            case Kind.IF_STMT | Kind.CONDITIONAL_OPERATOR if children[0].kind.is_expression():
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
            case _ if text == "SQLITE_TRANSIENT":  # not changed like a number, because it is a pointer
                self.replace(cursor, "SQLITE_STATIC")
            case Kind.INTEGER_LITERAL if text[:1].isdigit():
                number = int(text.rstrip("uUlL"), 0)
                self.replace(cursor, *(str(other) for other in (number - 1, number + 1) if other >= 0))
            case Kind.INTEGER_LITERAL if text:  # without text, the compiler added it
                self.replace(cursor, f"({text} + 1)")
            case Kind.FLOATING_LITERAL if text:
                self.replace(cursor, *(("1.0",) if float(text) == 0 else (f"({text} * 2)", f"({text} / 2)")))
            case Kind.STRING_LITERAL if text.endswith('"'):
                self.replace(cursor, text[:-1] + '~"')
            case Kind.CHARACTER_LITERAL if text:
                self.replace(cursor, "'~'")
            case Kind.CXX_BOOL_LITERAL_EXPR if text:
                self.replace(cursor, "false" if text == "true" else "true")

    def change_binary(self, cursor: Cursor, operands: list[Cursor]) -> None:
        for token in cursor.get_tokens() if len(operands) == 2 else ():
            at, operator = token.extent.start.offset, token.spelling
            if operands[0].extent.end.offset <= at < operands[1].extent.start.offset and operator in OPERATORS:
                self.change(at, at + len(operator), *OPERATORS[operator])
                for operand in operands if operator in ("&&", "||") else ():
                    self.replace(operand, "true" if operator == "&&" else "false")

    def change_name(self, cursor: Cursor) -> None:
        name, end, named = cursor.spelling, cursor.extent.end.offset, cursor.referenced
        if self.source[end - len(name):end] != name:
            return  # the text is a macro or ends with template arguments
        if name in NAMES:
            self.change(end - len(name), end, NAMES[name])
        if named is not None and named.kind == Kind.ENUM_CONSTANT_DECL:
            names = [constant.spelling for constant in named.semantic_parent.get_children()]
            self.change(end - len(name), end, names[(names.index(name) + 1) % len(names)])
        elif (named is not None and named.kind == Kind.VAR_DECL and named.semantic_parent.kind not in FUNCTIONS and
              named.type.is_const_qualified() and named.type.get_canonical().kind in INTEGERS):
            self.replace(cursor, f"({self.text(cursor)} + 1)")


def qualified_name(function: Cursor) -> str:
    name, parent = function.displayname.split("(")[0].split("<")[0], function.semantic_parent
    while parent is not None and parent.kind in (Kind.CLASS_DECL, Kind.STRUCT_DECL):
        name, parent = f"{parent.spelling}::{name}", parent.semantic_parent
    return name
