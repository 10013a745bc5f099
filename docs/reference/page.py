#!/usr/bin/env python3
"""Prints a page or a public header of the project for Doxygen, which reads them through this filter.

Doxygen 1.9 does not know a hosting site's Markdown in full. So each page and heading gets a name, links lead to these
names, a link to a header leads to its class, the name of an operation becomes a link, shell and CMake code is
highlighted, and the pages of the guide get links to the pages before and after them. Their order is that of the table
in docs/guide/README.md.
"""

import html
import pathlib
import re
import sys
from urllib.parse import unquote

from pygments import lex
from pygments.lexers import get_lexer_by_name
from pygments.token import Comment, Keyword, Literal, Name

PROJECT = pathlib.Path(__file__).resolve().parents[2]
GUIDE = PROJECT / "docs/guide"
# Doxygen's CSS classes, which set the colours of code.
COLOURS = {Comment: "comment", Keyword: "keyword", Name.Builtin: "keywordtype", Name.Variable: "preprocessor",
           Literal.String: "stringliteral"}
OTHER_LANGUAGES = ["sh", "cmake", "yaml"]


def page_name(path):
    if path.parent == PROJECT and path.stem == "README":
        return "index"
    return path.parent.name if path.stem == "README" else path.stem.lower()


def slug(heading):
    """The anchor that hosting sites give a heading."""
    text = re.sub(r"\[([^]]*)\]\([^)]*\)", r"\1", heading).replace("`", "").lower()
    return re.sub(r"[^\w\- ]", "", text).replace(" ", "-")


def guide_order():
    links = re.findall(r"^\| \[[^]]+\]\(([^)#/]+\.md)\)", (GUIDE / "README.md").read_text(encoding="utf-8"), re.M)
    return [GUIDE / target for target in links]


def title(page):
    with page.open(encoding="utf-8") as lines:
        return next(lines)[2:].strip()


def link(page, mark, text, target):
    text = " ".join(text.split())
    if mark:
        return f'<div class="picture"><img src="{pathlib.Path(target).name}" alt="{html.escape(text)}"/></div>'
    if re.match(r"\w+:|@ref", target):
        return f"[{text}]({target})"
    path, _, anchor = unquote(target).partition("#")
    path = (page.parent / path).resolve() if path else page
    if path.suffix == ".md":
        if page == GUIDE / "README.md" and path in guide_order() and not anchor:
            return f'@subpage {page_name(path)} "{text}"'
        return reference(page_name(path) + ("-" + anchor if anchor else ""), text)
    if path.parent == PROJECT / "include/sql":
        return reference(f"Morvik::sql::{path.stem}", text)
    where = path.relative_to(PROJECT)  # a file of the sources, which the site does not have
    if str(where) in text or text.strip("`") == path.name:
        return text
    # Marks where a line may end. scripts/reference.sh replaces the zero-width space by <wbr>.
    return f"{text} (`{where}`)".replace("/", "/\u200b")


def reference(name, text):
    text = text.replace('"', "&quot;")
    if re.fullmatch("`[^`]*`", text):
        return f'<code>@ref {name} "{text[1:-1]}"</code>'
    return f'@ref {name} "{text.replace("`", "")}"'


def operations():
    """The classes that declare each operation. Overrides are left out: IDatabaseApi describes them."""
    classes = {}
    headers = list((PROJECT / "include/sql").glob("*.h"))
    constructors = {path.stem for path in headers}
    for path in headers:
        declared = re.findall(r"(?m)^    [\w:<>&* ]*\b([A-Z]\w+)(\([^;{]*)", path.read_text(encoding="utf-8"))
        for name, rest in declared:
            if " override" not in rest and name not in constructors:
                classes.setdefault(name, set()).add(path.stem)
    return classes


def operation_link(code, section):
    """`Open` in the section SqlTable leads to SqlTable::Open; elsewhere, a name leads to the only class that has it."""
    if (PROJECT / f"include/sql/{code}.h").is_file():
        return reference(f"Morvik::sql::{code}", f"`{code}`")
    named = re.fullmatch(r"(?:(\w+)::)?(\w+)(?:<[\w:<>]*>)?(?:\(\))?", code)
    if not named:
        return None
    owner, name = named.groups()
    owners = OPERATIONS.get(name, set())
    if owner is None:
        owner = next(iter(owners)) if len(owners) == 1 else section
    if owner == "DatabaseApi" and owner not in owners:
        owner = "IDatabaseApi"
    return reference(f"Morvik::sql::{owner}::{name}", f"`{code}`") if owner in owners else None


def prose(lines, page, section):
    """Translates the links, and makes links of the code that names an operation."""
    parts = re.split(r"(`+[^`]*`+)", "\n".join(lines))
    parts[1::2] = [re.sub(r"%(?=\w)", "%%", part) for part in parts[1::2]]  # Doxygen removes a single percent sign
    for number, part in enumerate(parts):
        if number % 2 == 1 and not parts[number - 1].endswith("["):
            code = part.strip("`")  # an apostrophe would end the code between single backticks
            parts[number] = operation_link(code, section) or (f"``{code}``" if "'" in code else part)
    text = re.sub(r"(!?)\[([^]]*)\]\(([^)\s]*)\)", lambda match: link(page, *match.groups()), "".join(parts))
    return re.sub(r"</?details>.*", r"\n\\htmlonly[block]\n\g<0>\n\\endhtmlonly\n", text)  # Doxygen would split this element


def fragment(code, language):
    """A block of code, with colours also for languages that Doxygen does not colour."""
    if language not in OTHER_LANGUAGES:
        return "\n".join(["```" + (language or "text"), *code, "```", ""])
    lines = [""]
    for token, text in lex("\n".join(code), get_lexer_by_name(language)):
        colour = next((name for kind, name in COLOURS.items() if token in kind), None)
        for number, part in enumerate(text.split("\n")):
            if number:
                lines.append("")
            if part:
                part = html.escape(part)
                lines[-1] += f'<span class="{colour}">{part}</span>' if colour else part
    rows = "".join(f'<div class="line">{line}</div>\n' for line in lines[:-1])
    return f'\\htmlonly[block]\n<div class="fragment">{rows}</div>\n\\endhtmlonly\n'


def convert(page):
    text = page.read_text(encoding="utf-8")
    name = page_name(page)
    output, lines, language, section = [], [], None, ""
    for line in [*text.splitlines(), ""]:
        fence = re.match(r"\s*```(\w*)", line)
        head = re.match(r"(#+) (.*)", line)
        if language is not None and not fence:
            lines.append(line)
        elif language is not None:
            output.append(fragment(lines, language))
            lines, language = [], None
        elif fence or head or not line:
            if lines:
                output.append(prose(lines, page, section) + "\n")
            lines, language = [], fence.group(1) if fence else None
            if head:
                section = head.group(2)
                output.append(heading(name, *head.groups()))
        else:
            lines.append(line)
    if name not in ("index", "guide") and text.count("\n## ") > 1:
        output.insert(1, "[TOC]\n")
    if page in guide_order():
        output.append(neighbours(page))
    return "\n".join(output)


def heading(name, marks, text):
    if marks == "#":
        return f"# {text} {{#{'mainpage' if name == 'index' else name}}}\n"
    label = f"{name}-{slug(text)}"
    if name in ("index", "guide"):  # keeps these headings out of the navigation tree
        return f"<h{len(marks)}>@anchor {label} {text}</h{len(marks)}>\n"
    return f"{marks} {text} {{#{label}}}\n"


def neighbours(page):
    order = [None, *guide_order(), None]
    place = order.index(page)
    before, after = [f"{word}: [{title(path)}](@ref {page_name(path)})" if path else ""
                     for word, path in (("Previous", order[place - 1]), ("Next", order[place + 1]))]
    return f'<div class="neighbours"><div>{before}</div><div>{after}</div></div>\n'


def convert_header(page):
    """Makes indented code in comments a block with colours. Removes "= delete" from a template that has only
    specialisations, and removes overrides, which Doxygen lists as inherited."""
    text = re.sub(r"(template <[^\n]*\n[^\n]*) = delete;", r"\1;", page.read_text(encoding="utf-8"))
    text = re.sub(r"(?m)^    [^~;/]* override;\n", "", text)
    return re.sub(r"(?m)^(( *///)     .*\n)+", lambda match: "\n".join([
        match.group(2) + " ```cpp", match.group().rstrip().replace("///     ", "/// "), match.group(2) + " ```", ""]), text)


OPERATIONS = operations()

if __name__ == "__main__":
    path = pathlib.Path(sys.argv[1]).resolve()
    sys.stdout.write(convert_header(path) if path.suffix == ".h" else convert(path))
