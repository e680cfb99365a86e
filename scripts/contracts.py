"""The public headers as data: functions with the contracts of their comments, records, callbacks, constants.

A function's comment says what it does; names its arguments, each list of names set off from its text by two
spaces; and says the result, the errors and what a success does to the last error. "as X" stands for the text
of X. One comment may serve the declarations that follow it without a blank line.
"""
import dataclasses
import pathlib
import re

ROOT = pathlib.Path(__file__).resolve().parent.parent
HEADERS = sorted((ROOT / "include/tiff").glob("*.h"))


@dataclasses.dataclass
class Parameter:
    type: str  # such as "const char*"
    name: str
    count: str = ""  # of an array


@dataclasses.dataclass
class Function:
    name: str
    result: str
    parameters: list
    header: str
    before: list  # lines of the comment in front of the arguments
    arguments: dict  # name: text
    after: list  # lines behind them

    @property
    def text(self):
        return "\n".join([*self.before, *self.arguments.values(), *self.after])


def words(comment):
    """The lines of a comment without its marks."""
    lines = re.sub(r"^/\*|\*/$", "", comment.strip()).split("\n")
    lines = [re.sub(r"^ \* ?", "", line).rstrip() for line in lines]
    lines[0] = lines[0].strip()
    while lines and not lines[-1]:
        lines.pop()
    return lines


def parameter(text):
    match = re.fullmatch(r"(.*?[\w*]) *?(?<=[ *])(\w+)(?:\[(\w*)\])?", " ".join(text.split()))
    return Parameter(match[1].strip(), match[2], match[3] or "")


def parameters(text):
    return [] if text.strip() in ("void", "") else [parameter(part) for part in text.split(",")]


def split_comment(lines, names):
    before, arguments, after = [], {}, []
    current = None
    for line in lines:
        match = re.fullmatch(r"(\w+(?:, \w+)*)  +(\S.*)", line)
        if match and all(name in names for name in match[1].split(", ")):
            current = match[1].split(", ")
            arguments.update(dict.fromkeys(current, match[2]))
        elif current and re.match(r"\s{2,}\S", line):
            arguments.update({name: arguments[name] + " " + line.strip() for name in current})
        else:
            current = None
            (after if arguments else before).append(line)
    return before, arguments, after


DECLARATION = re.compile(r"((?:const )?\w+\*?) TIFF_CALL (\w+)\(([^;{}]*?)\) TIFF_NOEXCEPT;\n?", re.S)
COMMENTED = re.compile(r"(/\*(?:(?!\*/).)*?\*/)\n((?:" + DECLARATION.pattern.replace("((?:", "(?:(?:").replace(
    "(\\w+)\\(([^;{}]*?)\\)", "\\w+\\([^;{}]*?\\)") + ")+)", re.S)


def functions():
    for header in HEADERS:
        text = header.read_text()
        for comment, declarations in COMMENTED.findall(text):
            for result, name, arguments in DECLARATION.findall(declarations):
                listed = parameters(arguments)
                parts = split_comment(words(comment), {one.name for one in listed})
                yield Function(name, result, listed, header.name, *parts)


def exports():
    text = (ROOT / "exports/tiff.def").read_text()
    names = (re.sub(r";.*", "", line).split() for line in text.splitlines())
    return [line[0] for line in names if line and line[0] not in ("LIBRARY", "EXPORTS")]


def code():
    """All headers without comments and directives."""
    text = "\n".join(path.read_text() for path in HEADERS)
    text = re.sub(r"/\*.*?\*/", "", text, flags=re.S)
    return re.sub(r"^#.*?(?<!\\)$", "", text, flags=re.M | re.S)


def callbacks():
    """Name, result and parameters of the routines that programs pass."""
    for result, name, arguments in re.findall(r"typedef (\w+\*?) ?\(TIFF_CALL ?\* ?(\w+)\)\((.*?)\);", code(), re.S):
        yield name, result, parameters(arguments)


def records():
    """Name, fields and packing of the records. The compiler's sizes are in exports/abi.txt."""
    packing = 8
    for path in HEADERS:
        text = re.sub(r"/\*.*?\*/", "", path.read_text(), flags=re.S)
        for pack, body, name in re.findall(r"#pragma pack\((push, \d|pop)\)|typedef struct \w+ \{(.*?)\} (\w+);",
                                           text, re.S):
            if pack:
                packing = 8 if pack == "pop" else int(pack[-1])
                continue
            fields = []
            for declaration in filter(None, (part.strip() for part in body.split(";"))):
                first, *others = declaration.split(",")
                fields.append(parameter(first))
                fields += [parameter(f"{fields[-1].type} {other}") for other in others]
            yield name, fields, packing


def constants():
    """Name and value of enumerators and of macros that are numbers."""
    known = {}
    for path in HEADERS:
        text = re.sub(r"/\*.*?\*/", "", path.read_text(), flags=re.S)
        for name, value in re.findall(r"^#define (\w+) (0x[0-9A-Fa-f]+|\d+)[uU]? *$", text, re.M):
            known[name] = int(value, 0)
        for body in re.findall(r"enum \w+ \{(.*?)\};", text, re.S):
            for name, value in re.findall(r"(\w+) = ('.'|\w+)", body):
                known[name] = ord(value[1]) if value[0] == "'" else int(value, 0)
    known["TIFF_VERSION_NUMBER"] = (known["TIFF_VERSION_MAJOR"] * 10000 + known["TIFF_VERSION_MINOR"] * 100 +
                                    known["TIFF_VERSION_PATCH"])
    return known


PAGES = ROOT / "docs/reference"


def topics():
    """The functions of each page: those of the headers and the single ones that its line "Functions:" names."""
    in_header = {}
    for function in functions():
        in_header.setdefault(function.header, []).append(function.name)
    found = {}
    for page in sorted(PAGES.glob("*.md")):
        line = re.search(r"^Functions: (.*)$", page.read_text(), re.M)
        if line:
            found[page.stem] = [name for word in line[1].replace(",", "").split() for name in in_header.get(word, [word])]
    return found
